#include "html_page.h"

#include "text/line_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace morvane::ctl {

namespace {

constexpr std::size_t megabyte = 1'000'000;
constexpr std::size_t mostBytes = 20 * megabyte;

// No tag begins in it, whatever the texts are.
std::string withoutTags(const std::string& json) {
    std::string text;
    for (const char c : json) {
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    }
    return text;
}

bool isWritten(const std::string& file, std::string_view page) {
    OwnedStream stream(std::fopen(file.c_str(), "w"));
    return stream && std::fwrite(page.data(), 1, page.size(), stream.get()) == page.size() &&
           std::fclose(stream.release()) == 0;
}

} // namespace

std::pair<std::size_t, bool> Numbering::add(const std::string& text) {
    const auto [known, isNew] = numbers_.try_emplace(text, numbers_.size());
    return {known->second, isNew};
}

Json blocksOf(std::string_view name, const SourceText& text, const BlockLines& lines) {
    Json blocks = Json::array();
    if (const auto found = lines.find(name); found != lines.end()) {
        for (auto& [line, excerpt] : excerpts(text, found->second))
            blocks.push_back({{"line", line}, {"text", std::move(excerpt)}});
    }
    return blocks;
}

Json jsonOf(const DescribedVariant& variant) {
    Json arguments = Json::array();
    for (const auto& [name, value] : variant.arguments)
        arguments.push_back(std::string(name).append("=").append(value));
    return {{"name", variant.name}, {"arguments", std::move(arguments)}};
}

ExitStatus writePage(const std::string& file, const PageTemplate& page, const Json& data,
                     std::string_view less, const Messages& messages) {
    std::string text = page.begin;
    text += withoutTags(data.dump(-1, ' ', false, Json::error_handler_t::replace));
    text += page.end;
    if (text.size() > mostBytes)
        return messages.fail("the page would have " +
                             std::to_string((text.size() + megabyte - 1) / megabyte) +
                             " MB, and at most 20 are written; " + std::string(less));
    if (!isWritten(file, text))
        return messages.fail("cannot write " + file + ": " + std::strerror(errno));
    return ExitStatus::yes;
}

} // namespace morvane::ctl
