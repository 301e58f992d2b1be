#include "definition_errors.h"

#include "paramdef/param_def_file.h"
#include "presetdef/preset_def_file.h"
#include "presetdef/validation.h"
#include "suggestion.h"
#include "text/cursor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <utility>

namespace morvane::ctl {

using enum PresetParseResult;

namespace {

constexpr const char* openBlock = "open-block";
constexpr const char* emptyFile = "empty-file";

// Null, with a message, if the file cannot be opened.
OwnedStream openFile(const std::string& path, const Messages& messages) {
    OwnedStream stream(std::fopen(path.c_str(), "r"));
    if (!stream)
        messages.fail("cannot read " + path + ": " + std::strerror(errno) +
                      "; name the definition files with --parameters and --presets");
    return stream;
}

// Whether all of an open file was read; else, with a message.
bool wasRead(const std::string& path, std::FILE* stream, const Messages& messages) {
    if (std::ferror(stream) == 0)
        return true;
    messages.fail("cannot read " + path + ": " + std::strerror(errno));
    return false;
}

constexpr std::array<std::string_view, 5> accessTypes{"index", "ro", "rostrict", "rw", "wo"};
constexpr std::array<std::string_view, 7> attributes{
    "ctrlRO", "ctrlValid", "default", "index", "rangeDoc", "rangeValid", "valueChange"};

constexpr const char* conditionHint =
    R"(a condition is numbers, names, "TEXT", operators and parentheses)";

const char* hintFor(const ParamDefError& error) {
    switch (error.state) {
    case ParamDefParseState::expectName:
        return "a parameter is NAME ACCESS { ... }; its name has neither [ nor ]";
    case ParamDefParseState::expectAccess:
        return "the access type is index, ro, rostrict, rw or wo";
    case ParamDefParseState::expectOpenBrace:
        return "a { opens the attributes of the parameter";
    case ParamDefParseState::expectAttribute:
        return "an attribute is index, rangeValid, rangeDoc, default, valueChange, ctrlValid or "
               "ctrlRO, the last two with their ( on the same line; a } ends the parameter";
    case ParamDefParseState::inRangeValid:
    case ParamDefParseState::inRangeDoc:
        return R"(a range is ( CONDITION ) { VALUE, LOW..HIGH, "TEXT", (EXPRESSION) }, )"
               "and its condition may be left out";
    case ParamDefParseState::inCtrlRO:
        return error.result == ParamDefResult::invalidAccess
                   ? "nobody reads a wo parameter, so it cannot have ctrlRO"
                   : conditionHint;
    case ParamDefParseState::inCtrlValid:
        return conditionHint;
    case ParamDefParseState::inDefault:
        return R"(a default is ( CONDITION ) { VALUE }, in which VALUE is a number, "TEXT" )"
               "or (EXPRESSION), and its condition may be left out";
    case ParamDefParseState::inValueChange:
        return R"(a value change is { OLD -> NEW }, in which each is a number or "TEXT")";
    case ParamDefParseState::inIndex:
        return "an index is { NAME }";
    }
    return "";
}

const char* hintFor(PresetParseResult result) {
    switch (result) {
    case PARSE_PRESET_ACCESS_ERR:
        return "the parameter definition file has no parameter of this name";
    case PARSE_PRESET_SYNTAX:
        return "another character or keyword is expected here: a { or } too many or too few, a "
               "missing comma, an item behind \"all\", or a } with something right behind it";
    case PARSE_PRESET_DUPLICATE_ENTRY:
        return "it may stand here once";
    case PARSE_PRESET_INVALID_INDEX:
        return R"("none" says that there is no index, so no index can stand beside it)";
    case PARSE_PRESET_INVALID_RANGE:
        return "the range ends below its beginning";
    case PARSE_PRESET_INC_EXC_ACCESS_ERR:
        return R"(presets have "include ro" and "exclude rw" lists, and no others)";
    case PARSE_PRESET_MISSING_IDENTIFIER:
        return "a name is missing here";
    case PARSE_PRESET_INVALID_IDENTIFIER:
        return "a preset begins with NAME preset {, the words on one line; a mapping has from and "
               "index; a clause has the names of indices";
    case PARSE_PRESET_INVALID_INTEGER:
        return "an index mapping begins with the number of old indices: index 2 { ... }";
    case PARSE_PRESET_EMPTY_DEFINITION:
        return "there is nothing in it";
    case PARSE_PRESET_CONTINUE:
    case PARSE_PRESET_INTERNAL_ERR:
    case PARSE_PRESET_OK:
    case PARSE_PRESET_IO_ERROR:
        break;
    }
    return "";
}

const char* codeOf(ParamDefResult result) {
    switch (result) {
    case ParamDefResult::incomplete:
        return openBlock;
    case ParamDefResult::invalidAccess:
        return "invalid-access";
    case ParamDefResult::syntaxError:
        return "syntax-error";
    case ParamDefResult::internalError:
    case ParamDefResult::ok:
        break;
    }
    return "internal-error";
}

/// Reads the files of one run.
class Reading {
public:
    explicit Reading(const Settings& settings) : settings_(settings) {}

    ReadFiles read() {
        const bool isUsable = readParameters() && readPresets() && validate();
        return {isUsable ? std::optional(std::move(definitions_)) : std::nullopt,
                std::move(errors_)};
    }

private:
    void addNote(const std::string& note) {
        if (!note.empty())
            errors_.back().notes.push_back(note);
    }

    void addEmptyFile(const std::string& path) {
        errors_.push_back({.file = path,
                           .severity = Severity::error,
                           .code = emptyFile,
                           .text = "the file is empty, and the daemon cannot use it"});
    }

    bool readParameters() {
        const auto& path = settings_.paramDefFile;
        const auto stream = openFile(path, settings_.messages);
        if (!stream)
            return false;
        const auto error =
            readParamDefinitions(stream.get(), definitions_.parameters, KeptAttributes::all);
        if (!wasRead(path, stream.get(), settings_.messages))
            return false;
        if (error)
            addError(*error);
        else if (definitions_.parameters.text().lineCount() == 0)
            addEmptyFile(path);
        return errors_.empty() || errors_.back().code == openBlock;
    }

    void addError(const ParamDefError& error) {
        const auto& text = definitions_.parameters.text();
        const SourceFile file(settings_.paramDefFile, text);
        if (error.result == ParamDefResult::incomplete) {
            errors_.push_back(file.at(error.place, Severity::error, openBlock,
                                      "the file ends inside this parameter"));
            addNote("the daemon uses what it has read of it");
            return;
        }
        auto message = std::string(morvane::message(error.result));
        message.pop_back(); // its line feed
        errors_.push_back(
            file.at(error.place, Severity::error, codeOf(error.result), std::move(message)));
        addNote(hintFor(error));
        const auto line = text.line(error.place.line).value_or("");
        Cursor cursor({line.substr(std::min<std::size_t>(error.place.column, line.size()))});
        const auto word = cursor.word("({");
        if (error.state == ParamDefParseState::expectAttribute)
            addNote(suggestion(word, attributes));
        if (error.state == ParamDefParseState::expectAccess)
            addNote(suggestion(word, accessTypes));
    }

    bool readPresets() {
        const auto& path = settings_.presetDefFile;
        const auto stream = openFile(path, settings_.messages);
        if (!stream)
            return false;
        PresetDefStop stop;
        const auto result = readPresetDefinitions(stream.get(), definitions_.presets, stop);
        if (!wasRead(path, stream.get(), settings_.messages))
            return false;
        const SourceFile file(path, *definitions_.presets.text);
        if (result == PARSE_PRESET_IO_ERROR) {
            addEmptyFile(path);
        } else if (result == PARSE_PRESET_CONTINUE) {
            errors_.push_back(file.at(stop.begin, Severity::error, openBlock,
                                      "the file ends inside this block, and the daemon cannot use "
                                      "it"));
        } else if (result != PARSE_PRESET_OK) {
            const std::string name(nameOf(result));
            errors_.push_back(file.at(stop.begin, Severity::error, name, name));
            addNote(hintFor(result));
        }
        return result == PARSE_PRESET_OK;
    }

    bool validate() {
        InvalidRecord invalid;
        const auto& [parameters, presets] = definitions_;
        const auto result = validatePresetDefinitions(presets, parameters, invalid);
        if (result == PARSE_PRESET_OK)
            return true;
        const SourceFile file(settings_.presetDefFile, *presets.text);
        errors_.push_back(file.at(
            presets.text->placeOf(invalid.name).value_or(SourceText::Place{invalid.line, 0}),
            Severity::error, std::string(nameOf(result)), std::string(trimSpace(invalid.text))));
        addNote(suggestionFor(result, invalid.name));
        return false;
    }

    // Only a name that is wrong in itself is taken for a mistyped one.
    std::string suggestionFor(PresetParseResult result, std::string_view name) const {
        const bool isIndex = result == PARSE_PRESET_INVALID_INDEX;
        if (!isIndex && result != PARSE_PRESET_ACCESS_ERR)
            return {};
        std::vector<std::string_view> names;
        for (const auto& [candidate, parameter] : definitions_.parameters) {
            if (isIndex == (parameter.access == AccessType::ACCESS_INDEX))
                names.push_back(candidate);
        }
        return suggestion(name, names);
    }

    const Settings& settings_;
    Definitions definitions_;
    std::vector<Finding> errors_;
};

} // namespace

ReadFiles readDefinitionFiles(const Settings& settings) {
    return Reading(settings).read();
}

} // namespace morvane::ctl
