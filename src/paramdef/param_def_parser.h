// Parses the parameter definition file line by line. Opens no files: tests feed it literals.
#pragma once

#include "paramdef/default_parser.h"
#include "paramdef/expression_tokenizer.h"
#include "paramdef/index_parser.h"
#include "paramdef/param_def_result.h"
#include "paramdef/range_parser.h"
#include "paramdef/system_parameter.h"
#include "paramdef/value_change_parser.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace morvane {

class Cursor;

/// What the parser reads next, or the attribute that it is in.
enum class ParamDefParseState : std::int32_t {
    expectName = 0,
    expectAccess = 1,
    expectOpenBrace = 2,
    expectAttribute = 3, ///< or the block's end
    inRangeValid = 4,
    inRangeDoc = 5,
    inCtrlRO = 6,
    inCtrlValid = 7,
    inDefault = 8,
    inValueChange = 9,
    inIndex = 10,
};

/// Which attributes get into the table. All of them are checked.
enum class KeptAttributes {
    all,
    ofStartUp, ///< those that decide which keys there are: `index`, `ctrlValid`, and `rangeValid`
               ///< of what is an index when it is read
};

/// The state survives from one line to the next, so a block, a string or an expression may run over
/// several lines. A new parser is at the beginning of a file.
class ParamDefParser {
public:
    explicit ParamDefParser(KeptAttributes kept = KeptAttributes::all) : kept_(kept) {}

    /// Parses one line into `table`. After an error the parser must not be fed again.
    ///
    /// @param errorColumn the byte offset of the last token that the parser began to read: after an
    ///                    error, where the caret goes. Left alone by a blank or comment line.
    /// @param line        borrowed by the parameters: a line of `table.text()`, or of a text that
    ///                    lives longer than the table.
    /// @param lineNumber  counted from 1.
    /// @return ok, also when the line ended inside a construct; invalidAccess, syntaxError, or
    ///         internalError when `table` lost the parameter of the open block.
    ParamDefResult parseParamDefLine(SystemParameterTable& table, std::uint32_t& errorColumn,
                                     std::string_view line, std::uint32_t lineNumber);

    ParamDefParseState state() const { return state_; }

    /// The name with which the last block began, as it stands there.
    std::string_view blockName() const { return blockName_; }

    /// Whether a later block made an index of a parameter whose ranges may not have been kept.
    bool lacksRanges() const { return lacksRanges_; }

private:
    ParamDefResult readToken(SystemParameterTable& table, Cursor& line);
    ParamDefResult readName(SystemParameterTable& table, Cursor& line);
    ParamDefResult readAccess(SystemParameterTable& table, Cursor& line);
    ParamDefResult readAttributeKeyword(Cursor& line);
    ParamDefResult readAttribute(SystemParameterTable& table, Cursor& line);
    ParamDefResult readAttributeBody(Cursor& line);
    ParamDefResult finishAttribute(SystemParameter& parameter);

    KeptAttributes kept_;
    bool lacksRanges_ = false;
    ParamDefParseState state_ = ParamDefParseState::expectName;
    std::string_view blockName_;
    RangeParser range_;
    ExpressionTokenizer tokenizer_;
    Expression expression_; ///< of the open `ctrlRO` or `ctrlValid`
    DefaultParser default_;
    ValueChangeParser valueChange_;
    IndexParser index_;
};

} // namespace morvane
