#include "matrix_page.h"

#include "page_data.h"
#include "page_template.h"
#include "text/line_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace morvane::ctl {

namespace {

constexpr std::size_t megabyte = 1'000'000;
constexpr std::size_t mostBytes = 20 * megabyte;

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

// No tag begins in it, whatever the texts are.
std::string withoutTags(const std::string& json) {
    std::string text;
    for (const char c : json) {
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    }
    return text;
}

bool isWritten(const std::string& file, std::string_view page) {
    OwnedStream stream(std::fopen(file.c_str(), "w"));
    return stream && std::fwrite(page.data(), 1, page.size(), stream.get()) == page.size() &&
           std::fclose(stream.release()) == 0;
}

} // namespace

ExitStatus writePage(const Settings& settings, const Definitions& definitions,
                     const CoverageMatrix& matrix, std::span<const std::size_t> parameters) {
    auto data = pageData(definitions, matrix, parameters);
    data["files"] = {{"parameters", settings.paramDefFile}, {"presets", settings.presetDefFile}};
    data["only"] = restrictions(settings);
    std::string page = pageBegin;
    page += withoutTags(data.dump(-1, ' ', false, Json::error_handler_t::replace));
    page += pageEnd;
    if (page.size() > mostBytes)
        return settings.messages.fail("the page would have " +
                                      std::to_string((page.size() + megabyte - 1) / megabyte) +
                                      " MB, and at most 20 are written; show less of it with " +
                                      (settings.preset.empty() ? "--for or --only" : "--only"));
    if (!isWritten(*settings.html, page))
        return settings.messages.fail("cannot write " + *settings.html + ": " +
                                      std::strerror(errno));
    return ExitStatus::yes;
}

} // namespace morvane::ctl
