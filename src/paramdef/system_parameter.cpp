#include "paramdef/system_parameter.h"

#include <algorithm>
#include <array>

namespace morvane {

namespace {

struct AccessKeyword {
    std::string_view keyword;
    AccessType access;
};

constexpr std::array accessKeywords{
    AccessKeyword{"index", AccessType::ACCESS_INDEX},
    AccessKeyword{"ro", AccessType::ACCESS_RO},
    AccessKeyword{"rostrict", AccessType::ACCESS_ROSTRICT},
    AccessKeyword{"wo", AccessType::ACCESS_WO},
    AccessKeyword{"rw", AccessType::ACCESS_RW},
};

} // namespace

std::optional<AccessType> accessTypeOf(std::string_view keyword) {
    const auto* const row = std::find_if(accessKeywords.begin(), accessKeywords.end(),
                                         [&](const auto& r) { return r.keyword == keyword; });
    if (row == accessKeywords.end())
        return std::nullopt;
    return row->access;
}

bool SystemParameter::hasIndex(std::string_view indexName) const {
    return std::any_of(indices.begin(), indices.end(),
                       [&](const auto& dimension) { return dimension.indexName() == indexName; });
}

const SystemParameter* SystemParameterTable::find(std::string_view name) const {
    const auto found = content_->parameters.find(name);
    return found == content_->parameters.end() ? nullptr : &found->second;
}

SystemParameter* SystemParameterTable::find(std::string_view name) {
    const auto found = content_->parameters.find(name);
    return found == content_->parameters.end() ? nullptr : &found->second;
}

void SystemParameterTable::clear() {
    content_->parameters.clear();
    content_->lastInserted = nullptr;
}

void SystemParameterTable::insert(std::string_view name, std::uint32_t line) {
    auto& [text, parameters, lastInserted] = *content_;
    const auto sizeBefore = parameters.size();
    // The end is tried first: most files define their parameters more or less in name order.
    lastInserted = &parameters.try_emplace(parameters.end(), name)->second;
    if (parameters.size() > sizeBefore) {
        lastInserted->name = name;
        lastInserted->line = line;
    }
}

} // namespace morvane
