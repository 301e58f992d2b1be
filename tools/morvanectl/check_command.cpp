// morvanectl check: the errors that the daemon reports, and what else may be a mistake, on one
// variant of the device or on many.

#include "commands.h"
#include "output.h"
#include "text/diagnostic.h"
#include "variant.h"
#include "variant_choice.h"
#include "warnings.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <tuple>

namespace morvane::ctl {

namespace {

/// Warnings with the variants on which they occur.
using Findings = std::map<Warning, std::vector<std::string>>;

/// A definition file, where warnings point.
class SourceFile {
public:
    SourceFile(std::string path, const SourceText& source)
        : path_(std::move(path)),
          source_(source) {}

    struct Place {
        std::uint32_t line;
        std::uint32_t column;
        std::string text; ///< of the line
    };

    const std::string& path() const { return path_; }

    /// Where the caret of a warning goes: its column, or its word, which is on its line or a later
    /// one; else the beginning of its line.
    Place find(const Warning& warning) const {
        const auto& [file, line, word, text, column] = warning;
        return column ? Place{line, *column, textOf(line)} : findWord(line, word);
    }

private:
    std::string textOf(std::uint32_t line) const {
        return std::string(source_.line(line).value_or(""));
    }

    Place findWord(std::uint32_t line, const std::string& word) const {
        for (auto number = line; const auto text = source_.line(number); ++number) {
            const auto column = columnOf(*text, word);
            if (column != std::string_view::npos)
                return {number, static_cast<std::uint32_t>(column), std::string(*text)};
        }
        return {line, 0, textOf(line)};
    }

    static bool isWordCharacter(char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
    }

    // The column at which the text is a whole word.
    static std::size_t columnOf(std::string_view line, const std::string& word) {
        for (auto at = line.find(word); at != std::string_view::npos;
             at = line.find(word, at + 1)) {
            const auto end = at + word.size();
            if ((at == 0 || !isWordCharacter(line[at - 1])) &&
                (end == line.size() || !isWordCharacter(line[end])))
                return at;
        }
        return std::string_view::npos;
    }

    std::string path_;
    const SourceText& source_;
};

/// Every combination of the values of the axes, as system arguments, first name first.
std::vector<std::vector<std::string>> combinations(const std::vector<VariantAxis>& axes) {
    std::vector<std::vector<std::string>> all{{}};
    for (const auto& [name, values] : axes) {
        std::vector<std::vector<std::string>> longer;
        for (const auto& shorter : all) {
            for (const auto& value : values) {
                longer.push_back(shorter);
                longer.back().push_back(std::string(name).append("=").append(value));
            }
        }
        all = std::move(longer);
    }
    return all;
}

/// One of the variants that are checked.
struct CheckedVariant {
    std::string name; ///< empty if it is the only one
    SystemArguments arguments;
};

std::vector<CheckedVariant> combinedVariants(const Settings& settings) {
    std::vector<CheckedVariant> variants;
    for (const auto& combination : combinations(settings.axes)) {
        variants.push_back({joined(combination, " "), {}});
        for (const auto& argument : combination)
            addSystemArgument(variants.back().arguments, argument);
        variants.back().arguments.insert(settings.systemArguments.begin(),
                                         settings.systemArguments.end());
    }
    return variants;
}

// Nothing, with a message, if the settings ask for what there is not.
std::optional<std::vector<CheckedVariant>>
checkedVariants(const Settings& settings, const std::vector<NamedVariant>& namedVariants) {
    if (!settings.axes.empty())
        return combinedVariants(settings);
    std::vector<CheckedVariant> variants;
    if (settings.allVariants) {
        for (const auto& named : namedVariants)
            variants.push_back({named.name, argumentsOf(named, settings)});
        if (!variants.empty())
            return variants;
        fail("there are no named variants; see --variants, or give --all-variants system arguments "
             "with all their values");
        return std::nullopt;
    }
    auto arguments = chosenArguments(settings, namedVariants);
    if (!arguments)
        return std::nullopt;
    variants.push_back({"", *std::move(arguments)});
    return variants;
}

void addFindings(const Definitions& definitions, const CheckedVariant& variant,
                 Findings& findings) {
    const auto& [parameters, presets] = definitions;
    const PresetManager manager(definitions, variant.arguments);
    for (const auto& warnings :
         {parameterWarnings(parameters, variant.arguments), presetWarnings(presets, manager),
          translateWarnings(presets, manager)}) {
        for (const auto& warning : warnings) {
            auto& names = findings[warning];
            if (names.empty() || names.back() != variant.name)
                names.push_back(variant.name);
        }
    }
}

/// A warning, with its place in the file.
struct Finding {
    Warning::File file;
    SourceFile::Place place;
    std::string text;
    std::vector<std::string> variants;
};

/// Writes what was found, in the order of the places.
class FindingsWriter {
public:
    /// @param definitions borrowed for the writer's life.
    FindingsWriter(const Settings& settings, const Definitions& definitions,
                   const Findings& findings, std::size_t variantCount)
        : parameters_(settings.paramDefFile, definitions.parameters.text()),
          presets_(settings.presetDefFile, *definitions.presets.text),
          variantCount_(variantCount) {
        for (const auto& [warning, variants] : findings)
            findings_.push_back(
                {warning.file, fileOf(warning.file).find(warning), warning.text, variants});
        std::stable_sort(findings_.begin(), findings_.end(), [](const auto& a, const auto& b) {
            return std::tie(a.file, a.place.line, a.place.column) <
                   std::tie(b.file, b.place.line, b.place.column);
        });
    }

    void write() const {
        for (const auto& [file, place, text, variants] : findings_)
            printWithCaret(fileOf(file).path() + ":" + std::to_string(place.line) +
                               ": warning: " + text + whereText(variants) + "\n",
                           place.text, place.column);
    }

    void writeAsJson() const {
        auto list = Json::array();
        for (const auto& [file, place, text, variants] : findings_) {
            Json entry{{"file", fileOf(file).path()},
                       {"line", place.line},
                       {"column", place.column + 1},
                       {"text", text}};
            if (variantCount_ > 1)
                entry["variants"] = variants;
            list.push_back(std::move(entry));
        }
        writeJson(list);
    }

private:
    const SourceFile& fileOf(Warning::File file) const {
        return file == Warning::File::parameters ? parameters_ : presets_;
    }

    std::string whereText(const std::vector<std::string>& variants) const {
        if (variantCount_ == 1)
            return {};
        return variants.size() == variantCount_ ? " [every variant]"
                                                : " [" + joined(variants, "; ") + "]";
    }

    SourceFile parameters_;
    SourceFile presets_;
    std::size_t variantCount_;
    std::vector<Finding> findings_;
};

} // namespace

ExitStatus checkDefinitions(const Settings& settings) {
    const auto definitions = readBothFiles(settings);
    if (!definitions)
        return ExitStatus::error;
    const auto namedVariants = readNamedVariants(settings);
    const auto variants = namedVariants ? checkedVariants(settings, *namedVariants) : std::nullopt;
    if (!variants)
        return ExitStatus::error;
    Findings findings;
    for (const auto& variant : *variants)
        addFindings(*definitions, variant, findings);
    const FindingsWriter writer(settings, *definitions, findings, variants->size());
    settings.json ? writer.writeAsJson() : writer.write();
    return findings.empty() ? ExitStatus::yes : ExitStatus::no;
}

} // namespace morvane::ctl
