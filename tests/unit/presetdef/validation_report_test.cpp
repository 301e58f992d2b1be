#include "presetdef/validation_report.h"
#include "support/output_capture.h"
#include "support/preset_records.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(ValidationReport, WritesTheLineAndTheTextAndHandsTheResultBack) {
    auto result = PresetParseResult::PARSE_PRESET_OK;
    const auto output = test::standardOutputOf([&] {
        result = reportInvalid(4711, "x - is wrong", PresetParseResult::PARSE_PRESET_SYNTAX);
    });
    EXPECT_EQ(output, "Preset Definition Error on line 4711.\nx - is wrong\n");
    EXPECT_EQ(result, PresetParseResult::PARSE_PRESET_SYNTAX);
}

} // namespace
} // namespace morvane
