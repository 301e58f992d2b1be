// What a load makes of each line of a preset data file, and what may be a mistake in it.
#pragma once

#include "data_file.h"
#include "entry_check.h"
#include "findings.h"
#include "value_check.h"
#include "variant.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane::ctl {

/// What a load makes of a line, or of a piece of one.
struct LineOutcome {
    struct Setting {
        std::string key;
        std::string value;
    };

    std::optional<Setting> set;    ///< what is sent; nothing if nothing is
    std::string what;              ///< what was done, or why nothing is sent
    std::optional<Finding> reason; ///< the latter, where it may be a mistake
    std::vector<Finding> others;   ///< what else was found

    std::vector<Finding> findings() const;
};

/// Writes a finding to standard error as a note about an answer.
void noteFinding(const Finding& finding, const Messages& messages);

/// Checks the lines of one file, one after the other.
class DataCheck {
public:
    /// @param variant borrowed for the life of the check.
    /// @param preset  a preset of the variant, or empty: then a line is sent if any preset has its
    ///                key.
    /// @param file    name of the file, for the findings.
    DataCheck(const Variant& variant, std::string preset, std::string file, Reports reports);

    LineOutcome check(const DataLine& line);

private:
    void checkPlace(const DataLine& line, LineOutcome& outcome) const;
    void checkEntry(const DataLine& line, const PresetEntry& entry, LineOutcome& outcome);
    Finding findingAt(const DataLine& line, std::size_t offset, Severity severity, const char* code,
                      std::string text) const;
    bool isCovered(const std::string& key) const;
    std::string whyNoParameter(std::string_view name) const;
    void checkSetting(const DataLine& line, const PresetEntry& entry, const std::string& key,
                      LineOutcome& outcome);

    const Variant& variant_;
    std::string preset_;
    std::string file_;
    Reports reports_;
    bool wasSet_ = false; ///< by the piece before
    ValueCheck values_;
    EntryCheck entries_;
    std::map<std::string, std::uint32_t> setOn_; ///< the last line that sets a key
};

} // namespace morvane::ctl
