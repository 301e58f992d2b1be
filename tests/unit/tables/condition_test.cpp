#include "paramdef/system_parameter.h"
#include "support/definition_text.h"
#include "tables/condition.h"

#include <gtest/gtest.h>

#include <string>

namespace morvane {
namespace {

constexpr std::string_view otherParameters = "gain rw { ctrlValid (0) }\n"
                                             "input index { }\n"
                                             "reset wo { }\n"
                                             "status rostrict { }\n";

/// The conditions of a parameter "self" with these attributes, among other parameters.
struct Conditions {
    explicit Conditions(const std::string& attributes)
        : parameters(test::parametersOf("self ro { " + attributes + " }\n" +
                                        std::string(otherParameters))) {}

    const std::vector<Expression>& list() const { return parameters.find("self")->ctrlValid; }

    SystemParameterTable parameters;
};

struct ConditionRow {
    const char* why;
    const char* condition; ///< with its parentheses
    SystemArguments arguments;
    bool holds;
};

const ConditionRow conditionRows[] = {
    {"the empty condition", "( )", {}, true},

    {"an argument has the value", "(mode == 2)", {{"mode", "2"}}, true},
    {"an argument has another value", "(mode == 2)", {{"mode", "3"}}, false},
    {"an argument is missing", "(mode == 2)", {{"Mode", "2"}}, false},
    {"a missing argument fails, whatever the rest says", "(mode || 1)", {}, false},
    {"a number other than 0", "(-3)", {}, true},
    {"the number 0", "(0)", {}, false},
    {"a text", "(\"x\")", {}, true},
    {"an empty text", "(\"\")", {}, false},
    {"an argument that is a text", "(name)", {{"name", "abc"}}, true},
    {"an argument that is 0 in another base", "(name)", {{"name", "0x0"}}, false},
    {"an empty argument is the number 0", "(name)", {{"name", ""}}, false},
    {"an argument that contains a text", "(name $ \"b\")", {{"name", "abc"}}, true},
    {"two values", "(1 2)", {}, false},
    {"a missing operand", "(1 +)", {}, false},
    {"a division by zero", "(1 / zero)", {{"zero", "0"}}, false},

    {"the name of a parameter", "(gain)", {}, true},
    {"the name of an index", "(input == 3)", {}, true},
    {"the name of a write-only parameter", "(reset < 0)", {}, true},
    {"the name of the parameter itself", "(self != self)", {}, true},
    {"the name of a parameter beats an argument of that name", "(gain)", {{"gain", "0"}}, true},
    {"the name of a parameter after a false comparison",
     "(mode == 2 && status)",
     {{"mode", "3"}},
     true},
    {"the name of a parameter where nothing can be evaluated", "(1 2 gain + +)", {}, true},
    {"a text is not the name of a parameter", R"(("gain" == "x"))", {}, false},
    {"a name in capitals is another name", "(GAIN)", {}, false},
    {"a part of a name is another name", "(gai || gains)", {{"gai", "0"}, {"gains", "0"}}, false},
};

TEST(Condition, IsDecidedByTheArgumentsUnlessItNamesAParameter) {
    for (const auto& [why, condition, arguments, holds] : conditionRows) {
        SCOPED_TRACE(why);
        const Conditions conditions("ctrlValid " + std::string(condition));
        ASSERT_EQ(conditions.list().size(), 1U);
        EXPECT_EQ(conditionHolds(conditions.list()[0], conditions.parameters, arguments), holds);
    }
}

struct ListRow {
    const char* why;
    const char* attributes;
    bool hold;
};

constexpr ListRow listRows[] = {
    {"no condition", "", true},
    {"one that holds", "ctrlValid (1)", true},
    {"one that does not", "ctrlValid (0)", false},
    {"two that hold", "ctrlValid (1) ctrlValid (gain)", true},
    {"the first does not hold", "ctrlValid (0) ctrlValid (1)", false},
    {"the last does not hold", "ctrlValid (1) ctrlValid ( ) ctrlValid (0)", false},
    {"a parameter's name decides only its own condition", "ctrlValid (gain) ctrlValid (0)", false},
};

TEST(Conditions, HoldWhenEveryOneDoes) {
    for (const auto& [why, attributes, hold] : listRows) {
        SCOPED_TRACE(why);
        const Conditions conditions(attributes);
        EXPECT_EQ(conditionsHold(conditions.list(), conditions.parameters, {}), hold);
    }
}

} // namespace
} // namespace morvane
