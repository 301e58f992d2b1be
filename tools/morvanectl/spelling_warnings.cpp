// Warnings about how both files are written, which are the same on every variant.

#include "engine/preset_entry.h"
#include "engine/preset_translate.h"
#include "text/cursor.h"
#include "text/utf8.h"
#include "warnings.h"

#include <cstdint>
#include <limits>
#include <set>

namespace morvane::ctl {

namespace {

std::string quoted(std::string_view text) {
    return "\"" + printableText(text) + "\"";
}

// About the text of a file itself.
void checkText(const SourceText& text, WarningList& warnings) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.line(1).value_or("").starts_with(byteOrderMark))
        warnings.add(
            SourceText::Place{1, 0}, "byte-order-mark",
            "the file begins with a byte order mark, which becomes part of its first word");
    for (std::uint32_t number = 1; number <= text.lineCount(); ++number) {
        if (text.isContinued(number) && (number == 1 || !text.isContinued(number - 1)))
            warnings.add(SourceText::Place{number, 0}, "long-line",
                         "a line of more than " + std::to_string(SourceText::longestLine - 1) +
                             " bytes is read as several: a word is cut there, and a comment ends");
    }
}

// Whether a line of a preset data file can have this name, or an instance with this index.
bool readsBack(std::string_view key) {
    PresetEntry entry;
    const auto line = std::string(key) + "=1";
    parsePresetLine(line, entry);
    return presetKey(entry) == key;
}

// About the name of a parameter of today or of before.
void checkName(std::string_view name, WarningList& warnings) {
    if (!isUtf8(name))
        warnings.add(name, "not-utf8",
                     "the name " + quoted(name) + " is not UTF-8, which D-Bus cannot carry");
    else if (name.find_first_of("[]") != std::string_view::npos)
        warnings.add(name, "odd-name",
                     "the name " + quoted(name) + " has a bracket, which no parameter can have");
    else if (!readsBack(name))
        warnings.add(name, "odd-name",
                     "the name " + quoted(name) + " cannot stand in a preset data file");
}

/// Collects the warnings about the parameter definition file.
class ParameterSpelling {
public:
    explicit ParameterSpelling(WarningList& warnings) : warnings_(warnings) {}

    void check(const SystemParameter& parameter) {
        checkName(parameter.name, warnings_);
        for (const auto& dimension : parameter.indices) {
            if (dimension.names.size() > 1)
                warnings_.add(dimension.names[1].name, "further-index",
                              "an index attribute has one name: only " +
                                  std::string(dimension.indexName()) + " counts");
        }
        if (parameter.access != AccessType::ACCESS_INDEX)
            return;
        for (const auto& range : parameter.rangeValid) {
            for (const auto& item : range.items)
                checkIndexValue(item.low);
        }
    }

private:
    void checkIndexValue(const TokenList& value) {
        if (value.size() != 1 || value.front().type != TokenType::TOKEN_STRING)
            return;
        const auto& token = value.front();
        const SourceText::Place place{token.line, token.column};
        if (!isUtf8(token.text))
            warnings_.add(place, "not-utf8",
                          "the index value " + quoted(token.text) +
                              " is not UTF-8, which D-Bus cannot carry");
        else if (!readsBack("x[" + std::string(token.text) + "]"))
            warnings_.add(place, "odd-value",
                          "a key with the index value " + quoted(token.text) +
                              " cannot stand in a preset data file");
    }

    WarningList& warnings_;
};

/// Collects the warnings about the preset definition file.
class PresetSpelling {
public:
    PresetSpelling(const SystemParameterTable& parameters, WarningList& warnings)
        : parameters_(parameters),
          warnings_(warnings) {}

    void check(const TranslateSection& section) {
        for (const auto& list : section.removedLists) {
            for (const auto& name : list.names)
                checkName(name, warnings_);
        }
        for (const auto& mapping : section.mappings) {
            for (const auto& from : mapping.fromMappings)
                checkFrom(from, mapping.newName);
            for (const auto& indexMapping : mapping.indexMappings) {
                for (const auto& [indexName, element] : indexMapping.pairs)
                    checkElement(element);
            }
        }
    }

    void check(const PresetDefinition& preset) {
        if (!isUtf8(preset.name))
            warnings_.add(preset.name, "not-utf8",
                          "the name " + quoted(preset.name) +
                              " is not UTF-8, which D-Bus cannot carry");
        for (const auto* const lists : {&preset.includeLists, &preset.excludeLists}) {
            for (const auto& list : *lists)
                checkList(list);
        }
    }

private:
    void checkFrom(const FromMapping& from, std::string_view newName) {
        checkName(from.oldName, warnings_);
        if (from.oldName != newName && parameters_.find(from.oldName) != nullptr)
            warnings_.add(from.oldName, "current-name",
                          std::string(from.oldName) +
                              " is a parameter still, but what files have of it goes to " +
                              std::string(newName));
        for (const auto& value : from.repeatedValues)
            warnings_.add(value, "repeated-value",
                          "the old value " + quoted(value) +
                              " is mapped already; the first mapping counts");
        for (const auto& [before, after] : from.values) {
            checkQuote(before);
            checkQuote(after);
        }
    }

    void checkQuote(std::string_view text) {
        if (text.ends_with('\n'))
            warnings_.add(text, "open-quote",
                          "the line ends before the quote does, and its end becomes part of the "
                          "text");
    }

    // An element of an index mapping.
    void checkElement(std::string_view element) {
        const auto position = PresetTranslate::referredPosition(element);
        const std::string text(element);
        constexpr std::size_t largest = std::numeric_limits<std::int32_t>::max();
        if (position && *position <= largest && text != "idx::" + std::to_string(*position))
            warnings_.add(element, "odd-reference",
                          text + " counts as idx::" + std::to_string(*position));
        else if (!position && element.starts_with("idx"))
            warnings_.add(element, "odd-reference",
                          text + " is the new index itself; an old one is idx::0, idx::1 ...");
    }

    void checkList(const PresetList& list) {
        for (const auto& clause : list.indexSpecs)
            checkClause(clause);
        for (const auto& item : list.items) {
            for (const auto& clause : item.indexSpecs)
                checkClause(clause);
        }
    }

    void checkClause(const IndexSpec& clause) {
        std::set<std::string_view> named;
        for (const auto& selector : clause.selectors) {
            const auto name = selector.indexName;
            const bool forbids =
                selector.isNot && selector.values.kind == IndexValueSet::Kind::none;
            if (selector.hasSeveralSets)
                warnings_.add(name, "several-values",
                              "of the value sets of one selector only the last counts");
            if (!forbids && !named.insert(name).second)
                warnings_.add(name, "repeated-selector",
                              "index " + std::string(name) +
                                  " is selected already in this clause; the last selector counts");
        }
    }

    const SystemParameterTable& parameters_;
    WarningList& warnings_;
};

} // namespace

std::vector<Warning> spellingWarnings(const SystemParameterTable& parameters,
                                      const PresetDefinitions& presets) {
    WarningList inParameters(Warning::File::parameters, parameters.text());
    checkText(parameters.text(), inParameters);
    ParameterSpelling parameterSpelling(inParameters);
    for (const auto& [name, parameter] : parameters)
        parameterSpelling.check(parameter);
    WarningList inPresets(Warning::File::presets, *presets.text);
    checkText(*presets.text, inPresets);
    PresetSpelling presetSpelling(parameters, inPresets);
    for (const auto& section : presets.translateSections)
        presetSpelling.check(section);
    for (const auto& preset : presets.presets)
        presetSpelling.check(preset);
    auto warnings = inParameters.take();
    const auto further = inPresets.take();
    warnings.insert(warnings.end(), further.begin(), further.end());
    return warnings;
}

} // namespace morvane::ctl
