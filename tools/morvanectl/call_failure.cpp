#include "call_failure.h"

#include "daemon_log.h"
#include "data_check.h"
#include "data_file.h"
#include "engine/preset_backup.h"
#include "service_facts.h"
#include "suggestion.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <optional>

namespace morvane::ctl {

namespace {

using Outcome = Answer::Outcome;

constexpr TimeLimit questionLimit = std::chrono::seconds(2);

bool isOneOf(std::string_view method, std::initializer_list<std::string_view> methods) {
    return std::ranges::find(methods, method) != methods.end();
}

// A store makes a backup beside the file, in its folder, and replaces regular files only.
std::vector<std::string> obstaclesToStore(const std::string& file) {
    std::vector<std::string> obstacles;
    struct stat status {};
    const auto folder = std::filesystem::path(file).parent_path().string();
    if (stat(folder.c_str(), &status) != 0)
        obstacles.push_back("cannot reach the folder " + folder + ": " + std::strerror(errno));
    else if (!S_ISDIR(status.st_mode))
        obstacles.push_back(folder + " is no folder");
    else if (access(folder.c_str(), W_OK | X_OK) != 0)
        obstacles.push_back("cannot write into the folder " + folder + ": " + std::strerror(errno));
    for (const auto& path : {file, backupOf(file)}) {
        if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
            obstacles.push_back(path + " is not a regular file, which a store does not replace");
    }
    return obstacles;
}

/// What is asked, and said, after one call.
class Explanation {
public:
    Explanation(const BusClient& bus, const Settings& settings, const PresetCall& call)
        : bus_(bus),
          settings_(settings),
          call_(call),
          files_(readFilesAtHand(settings)) {}

    void ofSilence() const {
        explainHandler();
        explainLog();
    }

    void ofRefusal() const {
        explainPreset();
        if (call_.method == "store_subpreset")
            explainKeys();
        if (isOneOf(call_.method, {"load", "load_with_default"}))
            explainFileToLoad();
        if (isOneOf(call_.method, {"store", "store_subpreset"}))
            explainFileToStore();
        explainHandler();
        explainLog();
    }

private:
    void say(const std::string& text) const { settings_.messages.note(text); }
    void sayProbably(const std::string& text) const { say("probably: " + text); }

    std::optional<bool> ask(const char* method, GVariant* arguments) const {
        return yesOrNo(bus_.call(presetService, method, arguments, questionLimit));
    }

    bool isPresetHere() const {
        return files_.variant && files_.variant->manager.is_preset(call_.preset);
    }

    void explainPreset() const {
        if (ask("is_preset", g_variant_new("(s)", call_.preset.c_str())) != false)
            return;
        say("the service has no preset " + call_.preset);
        if (!files_.variant)
            return;
        const auto comparison = comparePresets(bus_, *files_.variant, questionLimit);
        if (comparison.hasNone())
            sayProbably("the service could not use its definition files when it started, and "
                        "serves no preset; it has none of " +
                        settings_.presetDefFile);
        else if (isPresetHere())
            sayProbably("the service has other definition files, or other system arguments, than "
                        "were read here: " +
                        settings_.presetDefFile + " gives this variant the preset");
        else
            suggestPreset();
    }

    void suggestPreset() const {
        std::vector<std::string_view> names;
        for (const auto& [name, keys] : files_.variant->manager.presets())
            names.emplace_back(name);
        const auto guess = suggestion(call_.preset, names);
        if (!guess.empty())
            say(guess);
    }

    void explainKeys() const {
        if (ask("in_preset",
                g_variant_new("(s@as)", call_.preset.c_str(), stringArray(call_.keys))) == false)
            say("the service has none of these keys in " + call_.preset);
    }

    void explainFileToLoad() const {
        std::vector<std::string> problems;
        const auto messages = Messages::keptIn(problems);
        const auto file = fileToLoad(call_.file, messages);
        std::vector<std::string> refused;
        if (file) {
            // Without the preset, the file is read to see whether it can be.
            std::optional<DataCheck> check;
            if (isPresetHere())
                check.emplace(*files_.variant, call_.preset, *file, Reports::off);
            readDataLines(*file, messages, [&](const DataLine& line) {
                if (check)
                    addRefused(check->check(line), refused);
            });
        }
        if (file && *file != call_.file)
            problems.push_back("the service did not put " + *file +
                               " back, which an interrupted store has left");
        sayOfFile(problems);
        explainValues(refused);
    }

    // Of all findings, these alone make a load fail.
    static void addRefused(const LineOutcome& outcome, std::vector<std::string>& refused) {
        for (const auto& finding : outcome.findings()) {
            if (finding.severity == Severity::warning &&
                (finding.code == "bad-value" || finding.code == "not-utf8"))
                refused.push_back("line " + std::to_string(finding.line) + ": " + finding.text);
        }
    }

    void explainValues(const std::vector<std::string>& refused) const {
        constexpr std::size_t most = 3;
        for (std::size_t i = 0; i < std::min(most, refused.size()); ++i)
            sayProbably(refused[i]);
        if (refused.size() > most)
            say("there are " + std::to_string(refused.size() - most) +
                " more like this; see: morvanectl validate " + settings_.file + " --for " +
                call_.preset);
    }

    void explainFileToStore() const { sayOfFile(obstaclesToStore(call_.file)); }

    void sayOfFile(const std::vector<std::string>& problems) const {
        const auto user = userOf(bus_, presetService, questionLimit);
        for (const auto& note : notesOfFile(call_.file, problems, geteuid(), user))
            say(note);
    }

    // Those that a store reads; one of those of a load.
    std::vector<std::string> keysToRead() const {
        std::vector<std::string> keys;
        if (!isPresetHere())
            return keys;
        for (const auto key : *files_.variant->manager.findPreset(call_.preset)) {
            const std::string text(key.view());
            if (call_.method != "store_subpreset" ||
                std::ranges::find(call_.keys, text) != call_.keys.end())
                keys.push_back(text);
        }
        const bool isStore = isOneOf(call_.method, {"store", "store_subpreset"});
        if (!files_.variant->manager.findPreset(call_.preset)->isUtf8())
            keys.clear();
        else if (!isStore && !keys.empty())
            keys.resize(1);
        return keys;
    }

    void explainHandler() const {
        if (bus_.isRunning(parameterHandler, questionLimit) != true) {
            say(std::string("the Parameter Handler, ") + parameterHandler.name +
                ", is not running; loads and stores wait for it");
            return;
        }
        const auto keys = keysToRead();
        const auto answer = readKeys(bus_, keys, questionLimit);
        if (answer.outcome == Outcome::timedOut || answer.outcome == Outcome::lost)
            say("the Parameter Handler: " + answer.error);
        else if (answer.outcome == Outcome::refused && !keys.empty())
            say("the Parameter Handler refuses to read " + shortList(keys) + ": " + answer.error);
    }

    void explainLog() const { say(whereTheLogIs(processOf(bus_, presetService, questionLimit))); }

    const BusClient& bus_;
    const Settings& settings_;
    const PresetCall& call_;
    FilesAtHand files_;
};

} // namespace

std::vector<std::string> notesOfFile(const std::string& file,
                                     const std::vector<std::string>& problems, unsigned ownUser,
                                     std::optional<unsigned> serviceUser) {
    if (serviceUser == ownUser)
        return problems;
    const auto who =
        "the service runs as " +
        (serviceUser ? "the user " + std::to_string(*serviceUser) : std::string("an unknown user"));
    if (problems.empty())
        return {who + ", who may have no access to " + file};
    std::vector<std::string> notes;
    const auto marked = [&who](std::string text) {
        return text.insert(0, "probably: ").append(", as you see it; ").append(who);
    };
    std::ranges::transform(problems, std::back_inserter(notes), marked);
    return notes;
}

void explainFailure(const BusClient& bus, const Settings& settings, const PresetCall& call,
                    Answer::Outcome outcome) {
    switch (outcome) {
    case Outcome::notRunning:
    case Outcome::lost:
        settings.messages.note(whereTheLogIs(std::nullopt));
        break;
    case Outcome::timedOut:
        Explanation(bus, settings, call).ofSilence();
        break;
    case Outcome::answered:
    case Outcome::refused:
        Explanation(bus, settings, call).ofRefusal();
        break;
    }
}

} // namespace morvane::ctl
