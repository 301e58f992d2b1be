// What morvanectl lists, as lines or as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>

namespace morvane::ctl {

using Json = nlohmann::ordered_json;

/// The texts one after the other, with the separator between them.
std::string joined(std::span<const std::string> texts, const char* separator);

/// Writes one text a line, or one JSON array of texts.
void writeList(std::span<const std::string> texts, bool asJson);

/// Writes a value with a line feed. Bytes that are not UTF-8 become U+FFFD.
void writeJson(const Json& value);

} // namespace morvane::ctl
