// morvanectl: calls the preset service, and says what the daemon makes of definition files and
// preset data files. This is its command line.

#include "argument_files.h"
#include "commands.h"
#include "completion.h"
#include "help.h"
#include "output.h"
#include "suggestion.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <new>
#include <span>
#include <string_view>

namespace morvane::ctl {

namespace {

constexpr const char* description =
    "Calls the preset service of a device, and says what the daemon makes of definition files and "
    "preset data files.\n\nExit status: 0 yes or same, 1 no or different, 2 error.";

std::string checkSystemArgument(const std::string& text) {
    SystemArguments unused;
    return addSystemArgument(unused, text) ? "" : "a system argument is NAME=VALUE";
}

// In milliseconds, of which there is at least one; nothing if the text is no time limit.
TimeLimit timeLimitOf(const std::string& text) {
    constexpr double most = 1e6; // which GLib's timers can count
    double seconds = 0;
    const auto* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || rest != end || !(seconds > 0 && seconds <= most))
        return std::nullopt;
    return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

std::string checkTimeLimit(const std::string& text) {
    return timeLimitOf(text) ? "" : "a time limit is a number of seconds, above 0, at most 1000000";
}

// A comma behind a backslash belongs to a value.
VariantAxis axisOf(const std::string& text) {
    const auto equals = text.find('=');
    VariantAxis axis{text.substr(0, equals), {""}};
    for (auto i = equals + 1; i < text.size(); ++i) {
        if (text[i] == ',')
            axis.values.emplace_back();
        else if (text.compare(i, 2, "\\,") == 0)
            axis.values.back() += text[++i];
        else
            axis.values.back() += text[i];
    }
    return axis;
}

/// Builds the command line around the settings that it fills.
class CommandLine {
public:
    CommandLine() : app_(description) {
        settings_.standardOutput = &output_;
        app_.formatter(help_);
        app_.set_version_flag("--version", MORVANE_VERSION);
        app_.require_subcommand(1);
        app_.fallthrough(); // options may follow the subcommand
        addOptions();
        addOnline();
        addOffline();
        addCompletion();
        leaveOutOfHelp();
    }

    ExitStatus run(int argc, char** argv) {
        arguments_ = std::span(argv, static_cast<std::size_t>(argc));
        try {
            app_.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return explain(error);
        }
        settings_.messages = Messages(settings_.json);
        try {
            return finish();
        } catch (const std::bad_alloc&) { // definitions may stand for more keys than memory holds
            return settings_.messages.fail("there is not enough memory");
        }
    }

    /// Whether all of the answer could be written; else, with a message.
    bool isWritten() const {
        std::cout.flush();
        if (std::cout.good())
            return true;
        settings_.messages.fail(std::string("cannot write: ") + std::strerror(output_.error()));
        return false;
    }

private:
    using Command = std::function<ExitStatus()>;

    // Which option is wrong may be one before --json.
    ExitStatus explain(const CLI::ParseError& error) {
        const auto status = static_cast<CLI::ExitCodes>(error.get_exit_code());
        const bool asJson = std::find(arguments_.begin(), arguments_.end(),
                                      std::string_view("--json")) != arguments_.end();
        settings_.messages = Messages(asJson);
        const auto unknown = unknownCommand();
        const auto problem = unknown.empty() ? error : CLI::ParseError(unknown, status);
        if (asJson && status != CLI::ExitCodes::Success)
            return settings_.messages.fail(problem.what());
        return app_.exit(problem) == 0 ? ExitStatus::yes : ExitStatus::error;
    }

    // To CLI11, a mistyped subcommand is a missing one.
    std::string unknownCommand() const {
        const auto words = app_.remaining();
        if (!app_.get_subcommands().empty() || words.empty() || words.front().starts_with('-'))
            return {};
        const auto names = subcommandsOf(app_);
        const auto meant =
            suggestion(words.front(), std::vector<std::string_view>(names.begin(), names.end()));
        return "there is no command " + words.front() + (meant.empty() ? "" : "; " + meant);
    }

    // Runs the command with all that was parsed.
    ExitStatus finish() {
        if (const auto conflict = conflictOf(systemArguments_))
            return settings_.messages.fail(conflict->first + " and " + conflict->second +
                                           " give one system argument two values");
        useSystemArguments();
        settings_.allVariants =
            std::any_of(allVariants_.begin(), allVariants_.end(),
                        [](const CLI::Option* option) { return option->count() > 0; });
        for (const auto& axis : axes_) {
            if (axis.find('=') != std::string::npos) // one without is the option without values
                settings_.axes.push_back(axisOf(axis));
        }
        return command_();
    }

    void useSystemArguments() {
        for (const auto& argument : systemArguments_)
            addSystemArgument(settings_.systemArguments, argument);
    }

    // CLI11 has taken the words, but splits those that look like its lists.
    ExitStatus complete() {
        auto words = std::find(arguments_.begin(), arguments_.end(), std::string_view("--"));
        if (words != arguments_.end())
            ++words;
        CommandLine typed;
        const auto word = readTypedLine(typed.app_, *typed.help_, {words, arguments_.end()});
        typed.useSystemArguments();
        return showChoices(word, typed.settings_);
    }

    void addOptions() {
        app_.add_option("-p,--parameters", settings_.paramDefFile, "Parameter definition file")
            ->default_val(installedParamDefFile)
            ->type_name("FILE");
        app_.add_option("-d,--presets", settings_.presetDefFile, "Preset definition file")
            ->default_val(installedPresetDefFile)
            ->type_name("FILE");
        app_.add_option("-s,--system", systemArguments_,
                        "A system argument that describes the device; may be repeated")
            ->type_name("NAME=VALUE")
            ->take_all()
            ->allow_extra_args(false)
            ->check(checkSystemArgument);
        app_.add_option("--variant", settings_.variant,
                        "Describe the device by a named variant; -s replaces its arguments")
            ->type_name("VARIANT");
        app_.add_option("--variants", settings_.variantsFile,
                        "List of named variants; without it, the file variants beside the "
                        "parameter definition file, if it is there")
            ->type_name("FILE")
            ->envname("MORVANE_VARIANTS");
        app_.add_option("--address", settings_.address, "Bus to use instead of the session bus");
        app_.add_option_function<std::string>(
                "--timeout",
                [this](const std::string& text) { settings_.timeLimit = timeLimitOf(text); },
                "Give up what the bus or a service does not answer within this time")
            ->type_name("SECONDS")
            ->check(checkTimeLimit);
        app_.add_flag("--json", settings_.json, "Write lists as JSON");
    }

    CLI::App* add(const char* name, const char* text, Command command) {
        auto* const subcommand = app_.add_subcommand(name, text);
        subcommand->callback([this, command = std::move(command)] { command_ = command; });
        return subcommand;
    }

    CLI::App* addCall(const char* name, const char* method, const char* text) {
        return add(name, text, [this, method] {
            return settings_.dryRun ? showLoad(settings_, method) : callService(settings_, method);
        });
    }

    void takePreset(CLI::App* subcommand) {
        subcommand->add_option("preset", settings_.preset, "Name of a preset")
            ->required()
            ->type_name("PRESET");
    }

    void takeFile(CLI::App* subcommand, const char* text) {
        subcommand->add_option("file", settings_.file, text)->required()->type_name("FILE");
    }

    void takeKeys(CLI::App* subcommand) {
        subcommand->add_option("keys", settings_.keys, "Keys, such as gain[1][2]")
            ->required()
            ->type_name("KEY");
    }

    CLI::Option* takeVariants(CLI::App* subcommand, const char* text) {
        allVariants_.push_back(subcommand->add_option("--all-variants", axes_, text)
                                   ->type_name("NAME=VALUE,VALUE...")
                                   ->expected(0, CLI::detail::expected_max_vector_size)
                                   ->check(checkSystemArgument));
        return allVariants_.back();
    }

    void takePresetOption(CLI::App* subcommand, const char* text) {
        subcommand->add_option("--for", settings_.preset, text)->type_name("PRESET");
    }

    void takeDryRun(CLI::App* subcommand) {
        subcommand->add_flag("--dry-run", settings_.dryRun,
                             "Show the calls that the Parameter Handler would get; call nothing");
    }

    void addOnline() {
        auto* const load = addCall("load", "load", "Load the values of a preset data file");
        auto* const withDefault =
            addCall("load-with-default", "load_with_default",
                    "Load a preset data file, and the defaults of what it does not have");
        for (auto* const subcommand : {load, withDefault}) {
            takePreset(subcommand);
            takeFile(subcommand, "Preset data file");
            takeDryRun(subcommand);
        }
        auto* const defaults =
            addCall("load-default", "load_default", "Load the defaults of a preset");
        takePreset(defaults);
        takeDryRun(defaults);
        auto* const store = addCall("store", "store", "Store the values of a preset in a file");
        takePreset(store);
        takeFile(store, "File to be written");
        auto* const subpreset = addCall("store-subpreset", "store_subpreset",
                                        "Store the values of some keys of a preset in a file");
        takePreset(subpreset);
        takeFile(subpreset, "File to be written");
        takeKeys(subpreset);
        auto* const inPreset =
            addCall("in-preset", "in_preset", "Ask whether a preset covers one of some keys");
        takePreset(inPreset);
        takeKeys(inPreset);
        takePreset(addCall("is-preset", "is_preset", "Ask whether there is a preset"));
        addCall("die", "die", "End the preset service");
        add("status", "Show which of the two services are there",
            [this] { return showStatus(settings_); });
        addHandlerCommands();
    }

    void addHandlerCommands() {
        constexpr auto most = CLI::detail::expected_max_vector_size;
        auto* const get = add("get", "Show the live values of some keys",
                              [this] { return getValues(settings_); });
        takeKeys(get);
        auto* const set = add("set", "Set the live values of some keys, all of them or none",
                              [this] { return setValues(settings_); });
        set->add_option("assignments", settings_.assignments, "Keys, each with its value behind it")
            ->required()
            ->type_name("KEY VALUE")
            ->expected(most, most) // which take_all makes no minimum
            ->take_all()
            ->allow_extra_args(false); // else CLI11 makes two words of "[a,b]"
        set->add_flag("--status", settings_.ofStatus, "Set what read-only parameters show");
        add("monitor", "Show which values commits change, and which services come and go",
            [this] { return monitorBus(settings_); });
        add("handler-check", "Check that the Parameter Handler does what the daemon relies on",
            [this] { return checkHandler(settings_); });
    }

    void addOffline() {
        auto* const check =
            add("check", "Check both definition files, and warn of what may be a mistake",
                [this] { return checkDefinitions(settings_); });
        takeVariants(check, "Check all named variants, or every combination of system arguments "
                            "with all their values");
        check->add_flag("--strict", settings_.strict, "Exit with 1 if there is a warning");
        check->add_flag("--verbose", settings_.verbose,
                        "Show what is missing on some of the variants only, too");
        check->add_flag("--as-daemon", settings_.asDaemon,
                        "Print what the daemon prints about the files, and nothing else");
        add("presets", "List the presets", [this] { return listPresets(settings_); });
        takePreset(
            add("keys", "List the keys of a preset", [this] { return listKeys(settings_); }));
        auto* const explain = add("explain", "Say why a key is or is not in a preset",
                                  [this] { return explainKey(settings_); });
        takePreset(explain);
        explain->add_option("key", settings_.key, "Key, such as gain[1][2]")
            ->required()
            ->type_name("KEY");
        addMatrix();
        addDataFileCommands();
        addRelease();
    }

    void addMatrix() {
        auto* const matrix =
            add("matrix", "Show how many keys of each parameter each preset covers",
                [this] { return showMatrix(settings_); });
        takePresetOption(matrix, "Show this preset, instead of all");
        matrix
            ->add_option("--only", settings_.pattern,
                         "Show the parameters whose names match, such as \"input*\"")
            ->type_name("PATTERN");
        auto* const all = takeVariants(
            matrix, "Show all named variants, or every combination of system arguments with all "
                    "their values");
        matrix
            ->add_flag("--only-differences", settings_.onlyDifferences,
                       "Show the parameters that a preset covers differently on some variant")
            ->needs(all);
        matrix->add_flag("--csv", settings_.csv, "Write comma-separated values");
        matrix
            ->add_option("--html", settings_.html,
                         "Write a page for a browser, with the reasons for every key")
            ->type_name("FILE");
    }

    void addDataFileCommands() {
        auto* const translate =
            add("translate", "Show what a load makes of each line of a preset data file",
                [this] { return translateFile(settings_); });
        translate
            ->add_option("--output", settings_.output,
                         "Write the file that this release would have stored")
            ->type_name("FILE");
        auto* const validate = add("validate", "Check the keys and values of a preset data file",
                                   [this] { return validateFile(settings_); });
        for (auto* const subcommand : {translate, validate}) {
            takeFile(subcommand, "Preset data file");
            takePresetOption(subcommand, "Preset as which it is to be loaded, instead of any");
        }
        auto* const diff =
            add("diff", "Compare two preset data files, or say what a load of one would change",
                [this] { return compare(); });
        takeFile(diff, "Preset data file");
        diff->add_option("other", settings_.otherFile, "Preset data file to compare with")
            ->type_name("FILE");
        auto* const live =
            diff->add_option("--live", settings_.preset, "Preset whose live values to compare with")
                ->type_name("PRESET");
        diff->add_flag("--with-defaults", settings_.withDefaults,
                       "Compare with a load that resets what FILE lacks")
            ->needs(live);
    }

    void addRelease() {
        constexpr auto most = CLI::detail::expected_max_vector_size;
        auto* const release =
            add("release", "Say what becomes of stored presets when a release is installed",
                [this] { return showRelease(settings_); });
        release
            ->add_option("releases", settings_.releases,
                         "Folders with the definition files of older releases, and last those of "
                         "the one to be installed")
            ->required()
            ->type_name("FOLDER")
            ->expected(2, most);
        auto* const suggest =
            release->add_flag("--suggest", settings_.suggest,
                              "Show the lines of a translate section that are missing");
        release
            ->add_option("--files", settings_.file,
                         "Check the preset data files in this folder and in those below it, too")
            ->type_name("FOLDER")
            ->excludes(suggest);
        release
            ->add_option("--html", settings_.html,
                         "Write the report as a page for a browser, with what --suggest shows")
            ->type_name("FILE")
            ->excludes(suggest);
    }

    void addCompletion() {
        add("complete", "Say what a shell may offer for the last word of a command line",
            [this] { return complete(); })
            ->group("") // not in the list of commands
            ->add_option("words", words_, "The command line behind the name of the program");
    }

    // What has no effect on a subcommand is not in its help text.
    void leaveOutOfHelp() {
        const auto leaveOut = [this](std::initializer_list<const char*> commands,
                                     std::initializer_list<const char*> options) {
            for (const auto* const command : commands) {
                for (const auto* const option : options)
                    help_->leaveOut(*app_.get_subcommand(command), *app_.get_option(option));
            }
        };
        leaveOut({"die", "get", "set", "monitor"},
                 {"--parameters", "--presets", "--system", "--variant", "--variants"});
        leaveOut(
            {"check", "presets", "keys", "explain", "matrix", "translate", "validate", "release"},
            {"--address", "--timeout"});
    }

    ExitStatus compare() {
        if (settings_.otherFile.empty() == settings_.preset.empty())
            return settings_.messages.fail("diff needs another FILE, or --live PRESET");
        return settings_.preset.empty() ? diffFiles(settings_) : diffLive(settings_);
    }

    std::span<char*> arguments_;
    CLI::App app_;
    std::shared_ptr<Help> help_ = std::make_shared<Help>();
    StandardOutput output_;
    Settings settings_;
    std::vector<std::string> systemArguments_;
    std::vector<CLI::Option*> allVariants_; ///< of the subcommands that take it
    std::vector<std::string> axes_;
    std::vector<std::string> words_; ///< of `complete`, as CLI11 splits them
    Command command_;
};

} // namespace

} // namespace morvane::ctl

int main(int argc, char** argv) {
    using morvane::ctl::ExitStatus;
    try {
        morvane::ctl::CommandLine line;
        const auto status = line.run(argc, argv);
        return static_cast<int>(line.isWritten() ? status : ExitStatus::error);
    } catch (const std::exception& error) { // which only a defect of this program can cause
        std::fprintf(stderr, "morvanectl: %s\n", error.what());
        return static_cast<int>(ExitStatus::error);
    }
}
