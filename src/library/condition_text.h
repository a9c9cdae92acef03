#pragma once

#include "library/condition_check.h"

#include <optional>

namespace varo {

/// A condition as one line of a library's text: `跨度 >= 2 and not 材料 equal "木材"`.
///
/// `not` binds closer than `and`, and `and` closer than `or`; parentheses group. The comparisons
/// are = <> < <= > >= for numbers, `contains` and `equal` for texts. A name is a word of letters,
/// digits and _ that does not begin with a digit, or a text in double quotes, in which \" \\ \n \r
/// \t stand for one character; a constant is a number or such a text. `and (x)` and `or (x)` are
/// groups with one child. The words are read in any letter case.

/// The line, which parseCondition() reads as `tree`; nothing when it would read something else: a
/// tree with faults that are more than a warning, or with what the line has no place for (table and
/// field type of a term).
std::optional<QString> conditionText(const ConditionTree& tree);

/// What parseCondition() says of a place of the text.
struct ConditionRemark {
    QString text;    ///< in English, as the rest of the text's messages
    int line = 1;    ///< from 1
    int column = 1;  ///< in characters from 1
};

/// What parseCondition() found.
struct ParsedCondition {
    ConditionTree tree;  ///< empty when there is an error
    std::optional<ConditionRemark> error;
    std::vector<ConditionRemark> warnings;  ///< from top to bottom
};

/// What a fault is, in English: `this comparison needs a number`.
QString conditionFaultText(ConditionFaultKind kind);

/// Reads a line as above; line breaks are blanks. What conditionFaults() finds wrong with the
/// condition is an error too, or a warning, at its place.
ParsedCondition parseCondition(const QString& text);

}  // namespace varo
