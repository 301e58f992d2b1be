#include "matrix_page.h"

#include "html_page.h"
#include "page_data.h"

#include <string>

namespace morvane::ctl {

namespace {

// What the page has less than all of the definitions, in words.
Json restrictions(const Settings& settings) {
    Json words = Json::array();
    if (!settings.preset.empty())
        words.push_back("preset " + settings.preset);
    if (!settings.pattern.empty())
        words.push_back("parameters that match " + settings.pattern);
    if (settings.onlyDifferences)
        words.push_back("what differs between variants");
    return words;
}

} // namespace

ExitStatus writeMatrixPage(const Settings& settings, const Definitions& definitions,
                           const CoverageMatrix& matrix, std::span<const std::size_t> parameters) {
    auto data = pageData(definitions, matrix, parameters);
    data["files"] = {{"parameters", settings.paramDefFile}, {"presets", settings.presetDefFile}};
    data["only"] = restrictions(settings);
    const std::string less = settings.preset.empty() ? "--for or --only" : "--only";
    return writePage(*settings.html, matrixPage, data, "show less of it with " + less,
                     settings.messages);
}

} // namespace morvane::ctl
