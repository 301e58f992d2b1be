// What the parts of the daemon cost without a bus and a Parameter Handler: the readers of the three
// kinds of files, expressions, key sets, translation, keys, and whole stores and loads. The number
// after a name is that of keys, or of records of a definition file. Items are keys, entries or
// tokens. A store syncs a file in the folder for temporary files: its CPU time is the daemon's own.

#include "core/definitions.h"
#include "core/preset_manager.h"
#include "engine/load_preset.h"
#include "engine/parameter_operations.h"
#include "engine/preset_file.h"
#include "engine/preset_translate.h"
#include "engine/store_preset.h"
#include "paramdef/evaluator.h"
#include "paramdef/expression_tokenizer.h"
#include "paramdef/param_def_file.h"
#include "paramdef/postfix.h"
#include "presetdef/preset_def_file.h"
#include "support/kept_text.h"
#include "support/memory_file.h"
#include "tables/preset_keys.h"
#include "text/cursor.h"
#include "text/line_reader.h"

#include <benchmark/benchmark.h>
#include <syslog.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace morvane;
using test::MemoryFile;

constexpr const char* scene = "scene"; // the preset of all keys

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(100)->Arg(10000)->Arg(1000000);
}

/// Ends the process if a part does not work, since its time would mean nothing.
void require(bool works, const char* what) {
    if (works)
        return;
    std::fprintf(stderr, "parts: %s failed\n", what);
    std::exit(EXIT_FAILURE);
}

/// How entries of an older device become those of a parameter "<name>Level".
std::string translationOf(const std::string& name) {
    return name + "Level { from { " + name +
           "Volume { low = -60 } } index 1 { row = idx::0, column = 1 } }\n";
}

/// Definitions with `size` keys, a multiple of 100, of about 20 characters. All their parameters
/// had other names once, and one index less.
Definitions definitionsOf(std::int64_t size) {
    std::string parameters = "column index { rangeValid { 0..9 } }\n"
                             "row index { rangeValid { 1000.." +
                             std::to_string(999 + size / 100) + " } }\n";
    std::string presets = "scene preset { }\n"
                          "half preset { exclude rw { index { column { 0..4 } } } }\n"
                          "translate {\n";
    for (int i = 0; i < 10; ++i) {
        const auto name = "mixer" + std::to_string(i);
        parameters += name + "Level rw { index { row } index { column } }\n";
        presets += translationOf(name);
    }
    auto definitions =
        readDefinitions(MemoryFile(parameters).path(), MemoryFile(presets + "}\n").path());
    require(definitions.has_value(), "reading the definitions");
    return *std::move(definitions);
}

const PresetManager& managerOf(std::int64_t size) {
    static std::map<std::int64_t, PresetManager> managers;
    if (const auto known = managers.find(size); known != managers.end())
        return known->second;
    const PresetManager manager(definitionsOf(size), {});
    require(manager.findPreset(scene)->size() == static_cast<std::size_t>(size),
            "expanding the preset");
    return managers.emplace(size, manager).first->second;
}

const KeySet& keysOf(std::int64_t size) {
    return *managerOf(size).findPreset(scene);
}

/// How a key is written in a file.
using Spelling = std::string (*)(const std::string& key);

std::string today(const std::string& key) {
    return key + "=-60\n";
}

std::string renamed(const std::string& key) {
    return std::string(key).replace(key.find("Level"), 5, "Volume") + "=low\n";
}

std::string reindexed(const std::string& key) {
    return key.substr(0, key.rfind('[')) + "=-60\n";
}

/// A preset data file of each `step`-th key.
std::string dataOf(const KeySet& keys, Spelling spelling, std::size_t step = 1) {
    std::string data;
    for (std::size_t i = 0; i < keys.size(); i += step)
        data += spelling(std::string(keys[i].view()));
    return data;
}

// Files.

void readParameterDefinitions(benchmark::State& state) {
    std::string text = "input index { rangeValid { 1..8 } }\n";
    for (std::int64_t i = 0; i < state.range(); ++i)
        text += "gain" + std::to_string(i) +
                " rw { index { input } rangeValid { -60..(top / 2) } default { 0 } }\n";
    const MemoryFile file(text);
    while (state.KeepRunning()) {
        SystemParameterTable table;
        const auto result = readParamDefFile(file.path().c_str(), &table);
        require(result == ParamDefResult::ok, "reading parameter definitions");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(readParameterDefinitions)->Arg(100)->Arg(10000);

void readPresetDefinitions(benchmark::State& state) {
    std::string text;
    for (std::int64_t i = 0; i < state.range() / 2; ++i) {
        const auto name = "scene" + std::to_string(i);
        text += name + " preset { include ro { clip } exclude rw { gain, mode } }\n";
        text += "translate { " + translationOf(name) + "}\n";
    }
    const MemoryFile file(text);
    while (state.KeepRunning()) {
        PresetDefinitions definitions;
        const auto result = readPresetDefFile(file.path().c_str(), &definitions);
        require(result == PresetParseResult::PARSE_PRESET_OK, "reading preset definitions");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(readPresetDefinitions)->Arg(100)->Arg(10000);

void readPresetData(benchmark::State& state) {
    const auto text = dataOf(keysOf(state.range()), today);
    const MemoryFile file(text);
    while (state.KeepRunning()) {
        const OwnedStream stream(std::fopen(file.path().c_str(), "r"));
        const int count = readPresetFile(
            stream.get(), [](PresetEntry& entry) { benchmark::DoNotOptimize(entry); });
        require(count == state.range(), "reading preset data");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(readPresetData)->Apply(sizes);

// Expressions.

/// A condition typical of definition files, repeated.
Expression expressionOf(std::int64_t repetitions) {
    std::string text = "0";
    for (; repetitions > 0; --repetitions)
        text += " || (inputs * 2 + 1 > outputs && variant == \"studio\")";
    text += ")";
    Expression expression;
    Cursor line({test::kept(text), 1});
    require(ExpressionTokenizer().parse(line, expression) == ParamDefResult::ok, "an expression");
    return expression;
}

void convertExpression(benchmark::State& state) {
    const auto expression = expressionOf(state.range());
    TokenList postfix;
    while (state.KeepRunning())
        require(convertToPostfix(expression, postfix) == 0, "a conversion");
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(expression.tokens.size()));
}
BENCHMARK(convertExpression)->Arg(1)->Arg(100);

void evaluateExpression(benchmark::State& state) {
    const NameTable names{{"inputs", "4"}, {"outputs", "2"}, {"variant", "studio"}};
    TokenList postfix;
    convertToPostfix(expressionOf(state.range()), postfix);
    while (state.KeepRunning())
        require(evaluatePostfix(postfix, names), "an evaluation");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(postfix.size()));
}
BENCHMARK(evaluateExpression)->Arg(1)->Arg(100);

// Key sets. Items are the keys that are in the set.

void expandKeySet(benchmark::State& state, std::size_t preset) {
    const auto& manager = managerOf(state.range());
    const auto definitions = definitionsOf(state.range());
    const auto& definition = definitions.presets.presets.at(preset);
    std::size_t size = 0;
    while (state.KeepRunning())
        size = PresetGenerate::keySet(manager.indices(), manager.readWrite(), manager.readOnly(),
                                      definition)
                   .size();
    require(size == manager.findPreset(definition.name)->size(), "a key set");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK_CAPTURE(expandKeySet, all, 0)->Apply(sizes);
BENCHMARK_CAPTURE(expandKeySet, half, 1)->Apply(sizes);

void inPreset(benchmark::State& state, const char* suffix, bool expected) {
    const auto& manager = managerOf(state.range());
    std::vector<std::string> keys;
    for (const auto& key : keysOf(state.range()).strings())
        keys.push_back(key + suffix);
    std::shuffle(keys.begin(), keys.end(), std::minstd_rand());
    while (state.KeepRunningBatch(state.range())) {
        for (const auto& key : keys)
            require(manager.in_preset(key, scene) == expected, "in_preset");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(inPreset, hit, "", true)->Apply(sizes);
BENCHMARK_CAPTURE(inPreset, miss, "[1]", false)->Apply(sizes);

// Keys and entries.

void parseKey(benchmark::State& state) {
    const std::string key = "mixer1Level[1000][1]";
    PresetEntry entry;
    while (state.KeepRunning()) {
        parsePresetKey(key, entry);
        benchmark::DoNotOptimize(entry);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(parseKey);

void formatKey(benchmark::State& state) {
    PresetEntry entry;
    parsePresetKey("mixer1Level[1000][1]", entry);
    while (state.KeepRunning())
        benchmark::DoNotOptimize(presetKey(entry));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(formatKey);

// Includes parsing the line, which the entry borrows from.
void translate(benchmark::State& state, Spelling spelling) {
    constexpr std::int64_t size = 100;
    const auto& manager = managerOf(size);
    const auto line = spelling(keysOf(size).strings().back());
    PresetEntry entry;
    while (state.KeepRunning()) {
        parsePresetLine(line, entry);
        benchmark::DoNotOptimize(translateEntry(manager.translation(), entry));
    }
    require(manager.in_preset(presetKey(entry), scene), "a translation");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(translate, nothing, today);
BENCHMARK_CAPTURE(translate, renamed, renamed);
BENCHMARK_CAPTURE(translate, reindexed, reindexed);

// Whole requests.

/// Operations that do nothing; what is read is always the same.
ParameterOperations idleOperations() {
    return {
        .isSendable = [](const RequestTexts&) { return true; },
        .parm_start_trans = [](Transaction&) { return true; },
        .parm_end_trans = [](Transaction) { return true; },
        .parm_get =
            [](Transaction, std::span<const CStringView> keys, ReceivedStrings& values) {
                using Texts = std::vector<const char*>;
                auto* const texts = new Texts(keys.size(), "-60");
                values = {{texts, [](void* owner) { delete static_cast<Texts*>(owner); }}, *texts};
                return true;
            },
        .parm_set = [](Transaction, std::span<const KeyValue>) { return true; },
        .parm_set_status = [](Transaction, std::span<const KeyValue>) { return true; },
        .parm_reset = [](Transaction, std::span<const CStringView>) { return true; },
        .parm_reset_status = [](Transaction, std::span<const CStringView>) { return true; },
        .parm_commit = [](Transaction) { return true; },
    };
}

void store(benchmark::State& state) {
    const auto operations = idleOperations();
    const auto& manager = managerOf(state.range());
    auto folder = (std::filesystem::temp_directory_path() / "morvane-bench-XXXXXX").string();
    require(mkdtemp(folder.data()) != nullptr, "a folder");
    bool stored = true;
    while (state.KeepRunning())
        stored = storePreset(&operations, scene, folder + "/file", manager) && stored;
    std::filesystem::remove_all(folder);
    require(stored, "a store");
    state.SetItemsProcessed(state.iterations() * state.range());
}
BENCHMARK(store)->Apply(sizes);

/// Loads each `step`-th key, with or without the defaults of the others.
void load(benchmark::State& state, std::size_t step, Defaults defaults) {
    const auto operations = idleOperations();
    const auto& manager = managerOf(state.range());
    const MemoryFile file(dataOf(keysOf(state.range()), today, step));
    while (state.KeepRunning())
        require(loadPreset(&operations, scene, file.path(), manager, defaults), "a load");
    state.SetItemsProcessed(state.iterations() * state.range());
}
BENCHMARK_CAPTURE(load, all, 1, Defaults::off)->Apply(sizes);
BENCHMARK_CAPTURE(load, half_with_defaults, 2, Defaults::on)->Apply(sizes);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    setlogmask(LOG_UPTO(LOG_ERR)); // each request that succeeds is logged
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    return benchmark::RunSpecifiedBenchmarks(&reporter) == 0 ? 1 : 0;
}
