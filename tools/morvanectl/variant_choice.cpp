#include "variant_choice.h"

#include "findings.h"
#include "paramdef/system_parameter.h"
#include "text/line_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>

namespace morvane::ctl {

namespace {

constexpr const char* deviceArgumentsFile =
    "/etc/default/morvane"; // the EnvironmentFile of the units
constexpr const char* deviceArgumentsVariable = "MORVANE_SYSTEM_ARGUMENTS";

// Nothing if the file cannot be read, for the reason in errno.
std::optional<std::string> readFile(const std::string& path) {
    const OwnedStream stream(std::fopen(path.c_str(), "r"));
    if (!stream)
        return std::nullopt;
    std::string text;
    std::array<char, 4096> block{};
    while (const auto count = std::fread(block.data(), 1, block.size(), stream.get()))
        text.append(block.data(), count);
    return std::ferror(stream.get()) == 0 ? std::optional(std::move(text)) : std::nullopt;
}

std::string lineOf(std::string_view text, std::uint32_t number) {
    for (; number > 1; --number)
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    return std::string(text.substr(0, text.find('\n')));
}

std::string variantsFileOf(const Settings& settings) {
    if (!settings.variantsFile.empty())
        return settings.variantsFile;
    return std::filesystem::path(settings.paramDefFile).replace_filename("variants").string();
}

// Without a description of the device, its own is meant where its own files are read.
bool asksForTheDevice(const Settings& settings) {
    return settings.systemArguments.empty() && settings.paramDefFile == installedParamDefFile &&
           settings.presetDefFile == installedPresetDefFile;
}

std::optional<SystemArguments> deviceArguments(const Settings& settings) {
    const auto text = readFile(deviceArgumentsFile);
    const auto value = environmentValue(text.value_or(""), deviceArgumentsVariable);
    SystemArguments arguments;
    if (!value)
        return arguments;
    for (const auto& word : commandLineWords(*value)) {
        if (!addSystemArgument(arguments, word)) {
            settings.messages.fail(std::string(deviceArgumentsFile) + ": " + word +
                                   " is no argument, with which the daemon does not start");
            return std::nullopt;
        }
    }
    settings.messages.note("the device's own arguments, from " + std::string(deviceArgumentsFile) +
                           ": " + *value);
    return arguments;
}

/// Collects names of expressions, with the places of their first uses.
class NameCollector {
public:
    void add(const TokenList& tokens) {
        for (const auto& token : tokens) {
            if (token.type == TokenType::TOKEN_NAME)
                note(std::string(token.text), {token.line, token.column});
        }
    }

    void add(const SystemParameter& parameter) {
        for (const auto* const conditions : {&parameter.ctrlRO, &parameter.ctrlValid}) {
            for (const auto& condition : *conditions)
                add(condition.tokens);
        }
        for (const auto& range : parameter.rangeValid) {
            add(range.condition.tokens);
            for (const auto& item : range.items) {
                add(item.low);
                add(item.high);
            }
        }
        for (const auto& chosen : parameter.defaults) {
            add(chosen.condition.tokens);
            add(chosen.value.tokens);
        }
    }

    const std::map<std::string, SourceText::Place>& names() const { return names_; }

private:
    void note(const std::string& name, SourceText::Place place) {
        auto& first = names_.try_emplace(name, place).first->second;
        first = std::min(first, place);
    }

    std::map<std::string, SourceText::Place> names_;
};

bool anyGives(const std::vector<NamedVariant>& variants, const std::string& name) {
    return std::any_of(variants.begin(), variants.end(), [&](const NamedVariant& variant) {
        return std::any_of(
            variant.arguments.begin(), variant.arguments.end(),
            [&](const std::string& argument) { return argument.starts_with(name + "="); });
    });
}

} // namespace

std::optional<std::vector<NamedVariant>> readNamedVariants(const Settings& settings) {
    std::vector<NamedVariant> variants;
    const auto path = variantsFileOf(settings);
    const auto text = readFile(path);
    if (!text) {
        if (settings.variantsFile.empty())
            return variants;
        settings.messages.fail("cannot read " + path + ": " + std::strerror(errno));
        return std::nullopt;
    }
    if (const auto problem = parseVariants(*text, variants)) {
        const auto& [line, column, what] = *problem;
        report({.file = path,
                .line = line,
                .column = column + 1,
                .severity = Severity::error,
                .code = "variants",
                .text = what,
                .sourceLine = lineOf(*text, line),
                .caret = column},
               settings.messages);
        return std::nullopt;
    }
    return variants;
}

SystemArguments argumentsOf(const NamedVariant& variant, const Settings& settings) {
    auto arguments = settings.systemArguments;
    for (const auto& argument : variant.arguments)
        addSystemArgument(arguments, argument); // a name that is there keeps its value
    return arguments;
}

std::optional<SystemArguments> chosenArguments(const Settings& settings,
                                               const std::vector<NamedVariant>& variants) {
    if (settings.variant.empty())
        return asksForTheDevice(settings) ? deviceArguments(settings) : settings.systemArguments;
    const auto variant = std::find_if(variants.begin(), variants.end(), [&](const NamedVariant& v) {
        return v.name == settings.variant;
    });
    if (variant != variants.end())
        return argumentsOf(*variant, settings);
    std::vector<std::string> names;
    std::transform(variants.begin(), variants.end(), std::back_inserter(names),
                   [](const NamedVariant& v) { return v.name; });
    settings.messages.fail("no variant " + settings.variant + " in " + variantsFileOf(settings) +
                           (names.empty() ? "" : ", which has: " + joined(names, ", ")));
    return std::nullopt;
}

std::vector<UndescribedName> undescribedNames(const SystemParameterTable& parameters,
                                              const SystemArguments& arguments,
                                              const std::vector<NamedVariant>& variants) {
    NameCollector collector;
    for (const auto& [name, parameter] : parameters)
        collector.add(parameter);
    std::vector<UndescribedName> undescribed;
    for (const auto& [name, place] : collector.names()) {
        if (!arguments.contains(name) && parameters.find(name) == nullptr &&
            !anyGives(variants, name))
            undescribed.push_back({name, place});
    }
    return undescribed;
}

} // namespace morvane::ctl
