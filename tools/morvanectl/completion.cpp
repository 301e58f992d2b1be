#include "completion.h"

#include "variant.h"
#include "variant_choice.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <set>
#include <utility>

namespace morvane::ctl {

namespace {

using Texts = std::vector<std::string>;

// Stands for the word that is being typed. What takes it in a parse says what the word means.
constexpr const char* marker = "\x01";

std::vector<CLI::App*> parsedApps(CLI::App& app) {
    auto apps = app.get_subcommands(); // those on the command line
    apps.push_back(&app);
    return apps;
}

// Parses as far as possible: what is missing may be typed later.
void parse(CLI::App& app, Texts words) {
    std::reverse(words.begin(), words.end()); // as CLI11 wants them
    try {
        app.parse(words);
    } catch (const CLI::Error&) {
        return;
    }
}

// Behind a wrong word, a parse has not handed on what the options say.
void handOn(CLI::App& app) {
    for (auto* const parsed : parsedApps(app)) {
        for (auto* const option : parsed->get_options()) {
            try {
                if (option->count() > 0)
                    option->run_callback();
            } catch (const CLI::Error&) {
                continue; // a value that is none
            }
        }
    }
}

Texts namesOf(const std::vector<const CLI::Option*>& options) {
    Texts names;
    for (const auto* const option : options) {
        for (const auto& name : option->get_snames())
            names.push_back("-" + name);
        for (const auto& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

// What its last word stands for; of pairs, one after the other.
std::string meaningOfLast(const CLI::Option& option) {
    auto meaning = option.get_type_name();
    if (meaning == "KEY VALUE")
        meaning = option.count() % 2 == 1 ? "KEY" : "VALUE";
    return meaning;
}

// A shell does not replace a tilde in a word that it completes.
std::string withHome(const std::string& path) {
    const char* const home = std::getenv("HOME");
    return home != nullptr && path.starts_with("~/") ? home + path.substr(1) : path;
}

// Keys of the preset that was typed, or of any.
std::optional<Texts> keysOf(const Settings& settings) {
    const auto variant = readVariant(settings);
    if (!variant)
        return std::nullopt;
    std::set<std::string> all;
    for (const auto& [name, preset] : variant->manager.presets()) {
        if (!settings.preset.empty() && settings.preset != name)
            continue;
        const auto keys = preset.strings();
        all.insert(keys.begin(), keys.end());
    }
    return Texts(all.begin(), all.end());
}

std::optional<Texts> presetsOf(const Settings& settings) {
    const auto variant = readVariant(settings);
    if (!variant)
        return std::nullopt;
    Texts names;
    for (const auto& [name, keys] : variant->manager.presets())
        names.push_back(name);
    return names;
}

std::optional<Texts> variantsOf(const Settings& settings) {
    const auto variants = readNamedVariants(settings);
    if (!variants)
        return std::nullopt;
    Texts names;
    for (const auto& variant : *variants)
        names.push_back(variant.name);
    return names;
}

std::optional<Texts> choicesFor(const TypedWord& word, const Settings& settings) {
    if (word.meaning == "PRESET")
        return presetsOf(settings);
    if (word.meaning == "KEY")
        return keysOf(settings);
    if (word.meaning == "VARIANT")
        return variantsOf(settings);
    return word.choices;
}

// A line feed would make two words of one, and an escape sequence would reach the terminal.
bool isPrintable(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char c) { return std::iscntrl(c) != 0; });
}

// Whether nothing but the typed word can be a subcommand.
bool isFirstArgument(const CLI::App& app) {
    auto words = app.remaining();
    std::erase_if(words, [](const std::string& word) { return word.starts_with('-'); });
    return app.get_subcommands().empty() && words == Texts{marker};
}

} // namespace

TypedWord readTypedLine(CLI::App& app, const Help& help, Texts words) {
    TypedWord typed{"", "", words.empty() ? "" : words.back()};
    if (!words.empty())
        words.pop_back();
    const bool isOption =
        typed.begun.starts_with('-') && std::find(words.begin(), words.end(), "--") == words.end();
    const auto equals = typed.begun.find('=');
    if (isOption && equals != std::string::npos) {
        typed.fixed = typed.begun.substr(0, equals + 1);
        typed.begun.erase(0, equals + 1);
    }
    const bool isName = isOption && typed.fixed.empty();
    if (!isName)
        words.push_back(typed.fixed + marker);
    parse(app, std::move(words));
    handOn(app);
    if (isName) {
        typed.choices = namesOf(help.optionsOf(*parsedApps(app).front()));
        return typed;
    }
    for (auto* const parsed : parsedApps(app)) {
        for (const auto* const option : parsed->get_options()) {
            if (option->count() > 0 && option->results().back() == marker) {
                typed.meaning = meaningOfLast(*option);
                return typed;
            }
        }
    }
    if (isFirstArgument(app))
        typed.choices = subcommandsOf(app);
    return typed;
}

ExitStatus showChoices(const TypedWord& word, Settings settings) {
    if (word.meaning == "FILE" || word.meaning == "FOLDER")
        return ExitStatus::no;
    for (auto* const path :
         {&settings.paramDefFile, &settings.presetDefFile, &settings.variantsFile})
        *path = withHome(*path);
    // Whoever types is not to be told what is wrong in the files.
    if (std::freopen("/dev/null", "w", stderr) == nullptr)
        return ExitStatus::error;
    const auto choices = choicesFor(word, settings);
    if (!choices)
        return ExitStatus::error;
    for (const auto& choice : *choices) {
        if (choice.starts_with(word.begun) && isPrintable(choice))
            std::cout << word.fixed << choice << '\n';
    }
    return ExitStatus::yes;
}

} // namespace morvane::ctl
