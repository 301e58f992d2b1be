#include "findings.h"

#include "text/diagnostic.h"

#include <iostream>
#include <utility>

namespace morvane::ctl {

namespace {

std::string_view withoutLineFeed(std::string_view line) {
    return line.substr(0, line.find_first_of("\r\n"));
}

// What brings a caret under a byte: a tab for each tab, nothing for the further bytes of a
// character.
std::string indentation(std::string_view line, std::uint32_t caret) {
    constexpr unsigned continuationMask = 0xC0;
    constexpr unsigned continuation = 0x80;
    std::string blanks;
    for (const char c : line.substr(0, caret)) {
        if ((static_cast<unsigned char>(c) & continuationMask) != continuation)
            blanks += c == '\t' ? '\t' : ' ';
    }
    blanks.append(caret > line.size() ? caret - line.size() : 0, ' ');
    return blanks;
}

std::string placeText(const Finding& finding) {
    return finding.file + ":" + std::to_string(finding.line) + ":" +
           std::to_string(finding.column) + ": ";
}

Json jsonOf(const Finding& finding, Severity severity, const std::string& text) {
    return {{"file", finding.file},         {"line", finding.line}, {"column", finding.column},
            {"severity", nameOf(severity)}, {"code", finding.code}, {"text", text},
            {"variants", finding.variants}};
}

} // namespace

void writeHead(std::ostream& stream, const Finding& finding, const std::string& where) {
    stream << placeText(finding) << label(finding.severity, stream) << finding.text << where
           << '\n';
}

void write(std::ostream& stream, const Finding& finding, const std::string& where) {
    writeHead(stream, finding, where);
    const auto line = withoutLineFeed(finding.sourceLine);
    stream << line << '\n'
           << indentation(line, finding.caret) << coloured("^", finding.severity, stream) << '\n';
    for (const auto& note : finding.notes)
        stream << placeText(finding) << label(Severity::note, stream) << note << '\n';
}

void appendJson(Json& list, const Finding& finding) {
    list.push_back(jsonOf(finding, finding.severity, finding.text));
    for (const auto& note : finding.notes)
        list.push_back(jsonOf(finding, Severity::note, note));
}

void report(const Finding& finding, const Messages& messages) {
    if (messages.keep(placeText(finding) + finding.text))
        return;
    if (!messages.asJson()) {
        write(std::cerr, finding);
        return;
    }
    auto list = Json::array();
    appendJson(list, finding);
    for (const auto& object : list)
        writeJsonLine(object);
}

SourceFile::SourceFile(std::string path, const SourceText& text)
    : path_(std::move(path)),
      text_(text) {
    SourceText::Place begin{1, 0};
    for (std::uint32_t number = 1; number <= text_.lineCount(); ++number) {
        begins_.push_back(begin);
        if (text_.isContinued(number))
            begin.column += static_cast<std::uint32_t>(SourceText::longestLine);
        else
            begin = {begin.line + 1, 0};
    }
}

Finding SourceFile::at(SourceText::Place place, Severity severity, std::string code,
                       std::string text) const {
    Finding finding{.file = path_,
                    .severity = severity,
                    .code = std::move(code),
                    .text = std::move(text),
                    .caret = place.column};
    if (place.line == 0 || place.line > begins_.size())
        return finding;
    const auto& begin = begins_[place.line - 1];
    finding.line = begin.line;
    finding.column = begin.column + place.column + 1;
    finding.sourceLine = text_.line(place.line).value_or("");
    if (begin.line != place.line)
        finding.notes.push_back("the daemon calls it line " + std::to_string(place.line) +
                                ", because it reads a line of more than " +
                                std::to_string(SourceText::longestLine - 1) +
                                " bytes as several lines");
    return finding;
}

} // namespace morvane::ctl
