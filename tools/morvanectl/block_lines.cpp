#include "block_lines.h"

#include "paramdef/param_def_parser.h"

namespace morvane::ctl {

BlockLines blockLines(const SourceText& text) {
    BlockLines lines;
    ParamDefParser parser;
    SystemParameterTable ofLine; // has those that the line defines, or a part of them
    for (std::uint32_t number = 1; const auto line = text.line(number); ++number) {
        ofLine.clear();
        if (parser.state() != ParamDefParseState::expectName)
            ofLine.insert(parser.blockName(), number);
        std::uint32_t column = 0;
        if (parser.parseParamDefLine(ofLine, column, *line, number) != ParamDefResult::ok)
            break;
        for (const auto& [name, parameter] : ofLine)
            lines[name].push_back(number);
    }
    return lines;
}

std::vector<Excerpt> excerpts(const SourceText& text, const std::vector<std::uint32_t>& lines) {
    std::vector<Excerpt> found;
    std::uint32_t next = 0;
    for (const auto number : lines) {
        if (found.empty() || number != next)
            found.push_back({number, {}});
        found.back().text += text.line(number).value_or("");
        next = number + 1;
    }
    for (auto& [line, part] : found)
        part.resize(part.find_last_not_of("\r\n") + 1);
    return found;
}

} // namespace morvane::ctl
