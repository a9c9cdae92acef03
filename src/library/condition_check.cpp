#include "library/condition_check.h"

#include "library/condition.h"
#include "library/condition_words.h"
#include "library/limits.h"
#include "platform/data/storable_text.h"

#include <algorithm>

namespace varo {

namespace {

class Check {
  public:
    std::vector<ConditionFault> run(const ConditionTree& tree) {
        if (tree.isEmpty()) {
            add(ConditionFaultKind::Empty, QStringLiteral("条件是空的。"));
        } else if (tree.roots.size() > 1) {
            add(ConditionFaultKind::SeveralRoots,
                QStringLiteral("条件有 %1 个根，只有最后一个起作用。").arg(tree.roots.size()));
        }
        if (tree.size() > kMaxConditionNodes) {
            add(ConditionFaultKind::TooLarge,
                QStringLiteral("条件超过 %1 项。").arg(kMaxConditionNodes));
        }
        checkAll(tree.roots);
        return std::move(faults_);
    }

  private:
    void add(ConditionFaultKind kind, const QString& text) {
        faults_.push_back({place_, kind, text});
    }

    void checkAll(const std::vector<ConditionNode>& nodes) {
        for (std::size_t position = 0; position < nodes.size(); ++position) {
            place_.push_back(static_cast<int>(position));
            check(nodes[position]);
            place_.pop_back();
        }
    }

    void check(const ConditionNode& node) {
        if (node.isGroup()) {
            checkGroup(node);
        } else if (node.type != ConditionType::Comparison) {
            add(ConditionFaultKind::UnknownType,
                QStringLiteral("未知的条件类型 %1。").arg(static_cast<qint32>(node.type)));
        } else if (!node.hasTerm) {
            add(ConditionFaultKind::NoTerm, QStringLiteral("这个比较没有内容。"));
        } else {
            checkTerm(node.term);
        }
    }

    void checkGroup(const ConditionNode& group) {
        const auto children = group.children.size();
        if (children == 0) {
            add(ConditionFaultKind::EmptyGroup,
                QStringLiteral("“%1”组中没有条件。").arg(conditionTypeWords(group.type)));
        } else if (group.type == ConditionType::Not && children > 1) {
            add(ConditionFaultKind::NotWithoutOne,
                QStringLiteral("“并非”组中只能有一个条件，现有 %1 个。").arg(children));
        }
        if (place_.size() == Condition::kMaxDepth + 1) {
            add(ConditionFaultKind::TooDeep,
                QStringLiteral("条件的嵌套超过 %1 层。").arg(Condition::kMaxDepth));
        }
        checkAll(group.children);
    }

    void checkTerm(const ComparisonTerm& term) {
        const CompareTypeNames* names = compareTypeNames(term.type);
        if (term.name.trimmed().isEmpty()) {
            add(ConditionFaultKind::NoName, QStringLiteral("没有填写属性名称。"));
        }
        if (names == nullptr) {
            add(ConditionFaultKind::UnknownComparison,
                QStringLiteral("未知的比较方式 %1。").arg(term.type));
        } else if (names->isNumeric) {
            checkNumber(term.constant, names->words);
        } else if (term.constant != term.constant.trimmed()) {
            add(ConditionFaultKind::NeverHolds,
                QStringLiteral("文本首尾有空格，而属性值首尾的空格不参加比较。"));
        }
        checkText(term.name, QStringLiteral("属性名称"));
        checkText(term.constant, QStringLiteral("比较值"));
        checkText(term.table, QStringLiteral("表名"));
    }

    void checkNumber(const QString& constant, const QString& comparison) {
        const NumberText number = numberIn(constant);
        if (number == NumberText::Whole) {
            return;
        }
        const auto kind = number == NumberText::Start ? ConditionFaultKind::MoreThanNumber
                                                      : ConditionFaultKind::NoNumber;
        const QString isWanted = QStringLiteral("“%1”要与数值比较，但").arg(comparison);
        add(kind, isWanted + (constant.trimmed().isEmpty()
                                  ? QStringLiteral("没有填写数值。")
                                  : QStringLiteral("“%1”不是数值，按 %2 计算。")
                                        .arg(constant, numberReadFrom(constant))));
    }

    void checkText(const QString& text, const QString& what) {
        if (text.size() > kTextLimit) {
            add(ConditionFaultKind::TooLong,
                QStringLiteral("%1超过 %2 个字符。").arg(what).arg(kTextLimit));
        }
        if (!data::isStorable(text)) {
            add(ConditionFaultKind::NotStorable,
                QStringLiteral("%1中有无法保存的字符。").arg(what));
        }
    }

    ConditionPath place_;
    std::vector<ConditionFault> faults_;
};

}  // namespace

bool isWarning(ConditionFaultKind kind) {
    return kind == ConditionFaultKind::MoreThanNumber;
}

std::vector<ConditionFault> conditionFaults(const ConditionTree& tree) {
    return Check().run(tree);
}

}  // namespace varo
