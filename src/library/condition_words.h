#pragma once

#include "library/condition_tree.h"

namespace varo {

/// The kind of a node in words: 并且, 或者, 并非, 比较; 未知 for any other.
QString conditionTypeWords(ConditionType type);

/// One comparison in words: `跨度 大于等于 2`, `材料 文本等于“木材”`.
QString comparisonWords(const ComparisonTerm& term);

/// What `tree` means, on one line as one would say it: `跨度 大于等于 2 并且 并非 材料
/// 文本等于“木材”`; "" for an empty tree. What the evaluation computes without using it, such as
/// every root but the last, is marked so; and so is what takes over the value before it.
QString conditionWords(const ConditionTree& tree);

}  // namespace varo
