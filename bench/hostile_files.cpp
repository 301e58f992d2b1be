// What malicious files cost to read, compared with well-formed files of the same size: each kind of
// file, 10 MiB of each pattern. The counter "times_good" is the time divided by that of the
// well-formed file of the kind in the same run; it stays small if the reader's cost is linear.

#include "engine/preset_file.h"
#include "paramdef/param_def_file.h"
#include "presetdef/preset_def_file.h"
#include "support/memory_file.h"
#include "text/line_reader.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace morvane;
using test::MemoryFile;

constexpr std::size_t fileSize = std::size_t{10} << 20U;
constexpr int rounds = 3; // some files are refused at once; the good one is read as often as they

/// A file's text: a beginning, and then what `next` makes of 0, 1, 2, ..., up to the full size.
std::string fill(std::string text, const std::function<std::string(std::size_t)>& next) {
    for (std::size_t number = 0; text.size() < fileSize; ++number)
        text += next(number);
    return text;
}

std::function<std::string(std::size_t)> always(const std::string& text) {
    return [text](std::size_t) { return text; };
}

struct Pattern {
    const char* name;
    std::function<std::string()> make;
};

struct FileKind {
    const char* name;
    void (*read)(const std::string& path);
    std::vector<Pattern> patterns; // the first one is well-formed
};

std::string randomBytes(std::size_t /*number*/) {
    static std::uint32_t state = 1;
    std::string bytes(64, ' ');
    for (auto& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

void readParameterDefinitions(const std::string& path) {
    SystemParameterTable table;
    benchmark::DoNotOptimize(readParamDefFile(path.c_str(), &table));
}

std::vector<Pattern> parameterDefinitionsPatterns() {
    return {
        {"good",
         [] {
             return fill("input index { rangeValid { 1..8 } }\n", [](std::size_t number) {
                 return "gain" + std::to_string(number) +
                        " rw { index { input } rangeValid { -60..12 } default { 0 } }\n";
             });
         }},
        {"one_line", [] { return fill("", always("x")); }},
        {"one_name_many_times", [] { return fill("", always("a rw { }\n")); }},
        {"unclosed_braces", [] { return fill("a rw ", always("{ ")); }},
        {"unclosed_ranges", [] { return fill("a rw {\n", always("rangeValid { 0..9 }\n")); }},
        {"deep_parentheses", [] { return fill("a rw { rangeValid { ", always("(")); }},
        {"deep_parentheses_on_lines", [] { return fill("a rw { rangeValid { ", always("(\n")); }},
        {"one_long_expression", [] { return fill("a rw { default { (1", always(" + 1\n")); }},
        {"many_values", [] { return fill("a rw { rangeValid { 1", always(", 1\n")); }},
        {"open_quote", [] { return fill("a rw { default { \"", always("x\n")); }},
        {"comments", [] { return fill("", always("# # #\n")); }},
        {"zeros", [] { return fill("", always(std::string(64, '\0'))); }},
        {"line_feeds", [] { return fill("", always("\n")); }},
        {"random", [] { return fill("", randomBytes); }}};
}

void readPresetDefinitions(const std::string& path) {
    PresetDefinitions definitions;
    benchmark::DoNotOptimize(readPresetDefFile(path.c_str(), &definitions));
}

std::vector<Pattern> presetDefinitionsPatterns() {
    return {{"good",
             [] {
                 return fill("", [](std::size_t number) {
                     return "scene" + std::to_string(number) +
                            " preset { include ro { temperature } exclude rw { gain, mode } }\n";
                 });
             }},
            {"one_line", [] { return fill("", always("x")); }},
            {"one_name_many_times", [] { return fill("", always("a preset { }\n")); }},
            {"one_long_list", [] { return fill("a preset { exclude rw { b", always(", b\n")); }},
            {"many_lists", [] { return fill("a preset {\n", always("exclude rw { b }\n")); }},
            {"deep_braces", [] { return fill("a preset ", always("{ ")); }},
            {"many_values",
             [] { return fill("a preset { exclude rw { b { index { i { 1", always(", 1\n")); }},
            {"many_mappings",
             [] {
                 return fill("translate {\n", [](std::size_t number) {
                     return "b { from { a" + std::to_string(number) + " { x = y } } }\n";
                 });
             }},
            {"many_index_mappings",
             [] {
                 return fill("translate {\n", [](std::size_t number) {
                     return "b { index " + std::to_string(number + 1) + " { i = idx::0 } }\n";
                 });
             }},
            {"many_removed", [] { return fill("translate { removed { a", always(", a\n")); }},
            {"open_quote", [] { return fill("a preset { exclude rw { \"", always("x\n")); }},
            {"zeros", [] { return fill("", always(std::string(64, '\0'))); }},
            {"line_feeds", [] { return fill("", always("\n")); }},
            {"random", [] { return fill("", randomBytes); }}};
}

void readPresetData(const std::string& path) {
    const OwnedStream stream(std::fopen(path.c_str(), "r"));
    readPresetFile(stream.get(), [](PresetEntry& entry) { benchmark::DoNotOptimize(entry); });
}

std::vector<Pattern> presetDataPatterns() {
    return {{"good",
             [] {
                 return fill("", [](std::size_t number) {
                     return "gain" + std::to_string(number) + "[1][left]=-60\n";
                 });
             }},
            {"one_line", [] { return fill("", always("x")); }},
            {"one_key_many_times", [] { return fill("", always("a=1\n")); }},
            {"one_long_value", [] { return fill("a=", always("x")); }},
            {"brackets", [] { return fill("", always("[")); }},
            {"many_indices", [] { return fill("a", always("[1]")); }},
            {"closed_brackets", [] { return fill("", always("]")); }},
            {"no_values", [] { return fill("", always("a=\n")); }},
            {"zeros", [] { return fill("", always(std::string(64, '\0'))); }},
            {"line_feeds", [] { return fill("", always("\n")); }},
            {"random", [] { return fill("", randomBytes); }}};
}

std::vector<FileKind> fileKinds() {
    return {
        {"parameter_definitions", readParameterDefinitions, parameterDefinitionsPatterns()},
        {"preset_definitions", readPresetDefinitions, presetDefinitionsPatterns()},
        {"preset_data", readPresetData, presetDataPatterns()},
    };
}

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void readPattern(benchmark::State& state, const FileKind& kind, const Pattern& pattern) {
    const MemoryFile good(kind.patterns.front().make());
    const MemoryFile file(pattern.make());
    double goodSeconds = 0;
    double seconds = 0;
    while (state.KeepRunning()) {
        goodSeconds += secondsOf([&] { kind.read(good.path()); });
        const auto once = secondsOf([&] { kind.read(file.path()); });
        seconds += once;
        state.SetIterationTime(once);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fileSize));
    state.counters["times_good"] = seconds / goodSeconds;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    // The readers report the first error of a file, with its line, on standard output.
    std::ofstream table("/dev/fd/" + std::to_string(dup(STDOUT_FILENO)));
    if (!table || std::freopen("/dev/null", "w", stdout) == nullptr)
        return 2;
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    reporter.SetOutputStream(&table);
    const auto kinds = fileKinds();
    for (const auto& kind : kinds) {
        for (const auto& pattern : kind.patterns) {
            const auto name = std::string(kind.name) + "/" + pattern.name;
            benchmark::RegisterBenchmark(name.c_str(), readPattern, kind, pattern)
                ->UseManualTime()
                ->Iterations(rounds)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
