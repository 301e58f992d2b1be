#include "presetdef/value_set_parser.h"

#include "text/character_set.h"
#include "text/cursor.h"
#include "text/number.h"
#include "text/token_loop.h"

namespace morvane {

namespace {

constexpr CharacterSet nameEnd = "},";

} // namespace

using enum PresetParseResult;

PresetParseResult ValueSetParser::parse(Cursor& line) {
    return readTokens<PARSE_PRESET_CONTINUE>(line, [&] { return parseToken(line); });
}

PresetParseResult ValueSetParser::parseToken(Cursor& line) {
    switch (expect_) {
    case Expect::openBrace:
        if (!line.accept('{'))
            return PARSE_PRESET_SYNTAX;
        expect_ = Expect::element;
        return PARSE_PRESET_CONTINUE;
    case Expect::element:
        return parseElement(line);
    case Expect::restOfNumber:
        return parseRestOfNumber(line);
    case Expect::highEnd:
        return parseHighEnd(line);
    case Expect::commaOrClose:
        return parseCommaOrClose(line);
    }
    return PARSE_PRESET_INTERNAL_ERR;
}

PresetParseResult ValueSetParser::parseElement(Cursor& line) {
    if (line.seesDigit()) {
        number_ = readDigits(line);
        expect_ = Expect::restOfNumber;
        return PARSE_PRESET_CONTINUE;
    }
    const auto name = line.word(nameEnd);
    if (name.empty())
        return PARSE_PRESET_MISSING_IDENTIFIER;
    set_.names.emplace_back(name);
    set_.kind = IndexValueSet::Kind::name;
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ValueSetParser::parseRestOfNumber(Cursor& line) {
    if (line.accept("..")) {
        expect_ = Expect::highEnd;
        return PARSE_PRESET_CONTINUE;
    }
    set_.numbers.push_back(number_);
    set_.kind = IndexValueSet::Kind::number;
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ValueSetParser::parseHighEnd(Cursor& line) {
    if (!line.seesDigit())
        return PARSE_PRESET_SYNTAX;
    // Indices are signed: 4294967295 is read as -1.
    const ValueRange range{static_cast<std::int32_t>(number_),
                           static_cast<std::int32_t>(readDigits(line))};
    if (range.low > range.high)
        return PARSE_PRESET_INVALID_RANGE;
    set_.ranges.push_back(range);
    set_.kind = IndexValueSet::Kind::range;
    expect_ = Expect::commaOrClose;
    return PARSE_PRESET_CONTINUE;
}

PresetParseResult ValueSetParser::parseCommaOrClose(Cursor& line) {
    if (line.accept('}')) {
        expect_ = Expect::openBrace;
        return PARSE_PRESET_OK;
    }
    if (!line.accept(','))
        return PARSE_PRESET_SYNTAX;
    expect_ = Expect::element;
    return PARSE_PRESET_CONTINUE;
}

} // namespace morvane
