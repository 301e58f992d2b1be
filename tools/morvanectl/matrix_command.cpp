// morvanectl matrix: how many keys of each parameter each preset covers.

#include "commands.h"
#include "condition_text.h"
#include "coverage_matrix.h"
#include "matrix_page.h"
#include "matrix_table.h"
#include "output.h"
#include "variant.h"

#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

constexpr const char* csvHeader =
    "parameter,access,preset,variant,keys,covered,unknown,extent,differs";

std::vector<std::size_t> shownParameters(const CoverageMatrix& matrix, bool onlyDifferences) {
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < matrix.parameters.size(); ++i) {
        if (onlyDifferences ? matrix.differs(i) : matrix.parameters[i].exists())
            shown.push_back(i);
    }
    return shown;
}

// Hands over an object for each parameter, preset and variant, with the fields of the CSV header in
// their order. They are not kept: there may be millions.
template <typename Take>
void forEachRecord(const CoverageMatrix& matrix, const std::vector<std::size_t>& parameters,
                   Take take) {
    for (const auto parameter : parameters) {
        const auto& row = matrix.parameters[parameter];
        for (const auto& [preset, column] : matrix.presets) {
            for (std::size_t variant = 0; variant < matrix.variants.size(); ++variant) {
                const auto& covered = column.covered(parameter, variant);
                const auto& keys = row.keys[variant];
                take(Json{{"parameter", row.definition->name},
                          {"access", keywordOf(row.definition->access)},
                          {"preset", preset},
                          {"variant", matrix.variants[variant].name},
                          {"keys", keys ? Json(*keys) : Json()},
                          {"covered", covered.own},
                          {"unknown", covered.unknown},
                          {"extent", extentOf(covered, keys.value_or(0))},
                          {"differs", column.differs(parameter)}});
            }
        }
    }
}

// Between quotes, with those of the text doubled, where the text could be taken for more than one.
std::string csvText(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

void writeCsvLine(const Json& record) {
    std::string line;
    for (const auto& [name, value] : record.items()) {
        line += line.empty() ? "" : ",";
        if (value.is_string())
            line += csvText(value.get<std::string>());
        else if (!value.is_null())
            line += value.dump();
    }
    std::cout << line << '\n';
}

void writeRecords(const CoverageMatrix& matrix, const std::vector<std::size_t>& parameters,
                  bool asCsv) {
    if (asCsv) {
        std::cout << csvHeader << '\n';
        forEachRecord(matrix, parameters, writeCsvLine);
        return;
    }
    const char* separator = "[";
    forEachRecord(matrix, parameters, [&separator](const Json& record) {
        std::cout << separator << '\n'
                  << record.dump(-1, ' ', false, Json::error_handler_t::replace);
        separator = ",";
    });
    std::cout << (*separator == '[' ? "[]\n" : "\n]\n");
}

// Says why a matrix that is asked for has nothing.
// @return whether it has something.
bool hasContent(const Settings& settings, const CoverageMatrix& matrix) {
    const std::string where = matrix.variants.size() > 1 ? "any of these variants" : "this variant";
    if (!settings.preset.empty() && matrix.presets.empty()) {
        failWithoutPreset(settings, where);
        return false;
    }
    if (!settings.pattern.empty() && shownParameters(matrix, /*onlyDifferences=*/false).empty()) {
        settings.messages.fail("no ro, rostrict or rw parameter of " + where + " matches " +
                               settings.pattern);
        return false;
    }
    return true;
}

} // namespace

ExitStatus showMatrix(const Settings& settings) {
    if ((settings.csv && settings.json) || (settings.html && (settings.csv || settings.json)))
        return settings.messages.fail("matrix takes one of --csv, --html and --json");
    auto device = readDevice(settings);
    if (!device)
        return ExitStatus::error;
    const auto matrix = coverageMatrix(device->definitions, std::move(device->variants),
                                       {settings.preset, settings.pattern});
    if (!hasContent(settings, matrix))
        return ExitStatus::error;
    const auto parameters = shownParameters(matrix, settings.onlyDifferences);
    if (settings.html)
        return writeMatrixPage(settings, device->definitions, matrix, parameters);
    if (settings.csv || settings.json)
        writeRecords(matrix, parameters, settings.csv);
    else
        writeTable(matrix, parameters);
    return ExitStatus::yes;
}

} // namespace morvane::ctl
