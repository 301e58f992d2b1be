// Takes any bytes through the three stages of an expression: tokens, postfix order, value.

#include "fuzz_input.h"
#include "paramdef/evaluator.h"
#include "paramdef/expression_tokenizer.h"
#include "text/cursor.h"
#include "text/source_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace morvane;
    using NameIndices = ExpressionTokenizer::NameIndices;
    static const NameTable names{{"a", "1"}, {"b", "text"}, {"c", ""}, {"d", "0x7fffffff"}};
    for (const auto nameIndices : {NameIndices::refused, NameIndices::accepted}) {
        ExpressionTokenizer tokenizer(nameIndices);
        SourceText source;
        Expression expression;
        auto text = fuzz::textOf(data, size);
        for (std::uint32_t number = 1; !text.empty(); ++number) {
            const auto length = std::min(text.find('\n'), text.size() - 1) + 1;
            Cursor line({text.substr(0, length), number, &source});
            if (tokenizer.parse(line, expression) != ParamDefResult::incomplete)
                break;
            text.remove_prefix(length);
        }
        ExprValue value;
        if (evaluate(expression, names, &value) && value.type == ExprValue::Type::invalid)
            __builtin_trap();
    }
    return 0;
}
