#include "library/condition_trial.h"

#include "library/condition_check.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace varo {

namespace {

void collectNames(const std::vector<ConditionNode>& nodes, QSet<QString>& known,
                  QStringList& names) {
    for (const ConditionNode& node : nodes) {
        if (node.isGroup()) {
            collectNames(node.children, known, names);
        } else if (node.type == ConditionType::Comparison && node.hasTerm &&
                   !known.contains(node.term.name)) {
            known.insert(node.term.name);
            names.append(node.term.name);
        }
    }
}

bool preventsEvaluation(const ConditionFault& fault) {
    return fault.kind == ConditionFaultKind::TooDeep ||
           fault.kind == ConditionFaultKind::TooLarge || fault.kind == ConditionFaultKind::TooLong;
}

class Trial {
  public:
    explicit Trial(const QHash<QString, QString>& values) : values_(values) {}

    /// `type` is that of the group whose children `nodes` are; nothing for roots.
    bool evaluate(const std::vector<ConditionNode>& nodes, std::optional<ConditionType> type,
                  bool result) {
        for (std::size_t position = 0; position < nodes.size(); ++position) {
            const bool before = result;
            place_.push_back(static_cast<int>(position));
            result = evaluate(nodes[position], before);
            place_.pop_back();
            if (position == 0 && type == ConditionType::Not) {
                result = !result;
            } else if (position > 0 && type == ConditionType::And) {
                result = result && before;
            } else if (position > 0 && type == ConditionType::Or) {
                result = result || before;
            }
        }
        return result;
    }

    std::map<ConditionPath, ConditionMark> takeMarks() { return std::move(marks_); }

  private:
    bool evaluate(const ConditionNode& node, bool before) {
        ConditionMark mark{before, {}};
        if (node.isGroup()) {
            mark.holds = evaluate(node.children, node.type, before);
        } else if (node.type == ConditionType::Comparison && node.hasTerm) {
            mark.value = values_.value(node.term.name);
            mark.holds = compareValues(node.term.type, mark.value, node.term.constant, before);
        }
        marks_.emplace(place_, mark);
        return mark.holds;
    }

    const QHash<QString, QString>& values_;
    ConditionPath place_;
    std::map<ConditionPath, ConditionMark> marks_;
};

}  // namespace

QStringList namesIn(const ConditionTree& tree) {
    QSet<QString> known;
    QStringList names;
    collectNames(tree.roots, known, names);
    return names;
}

std::optional<ConditionTrial> tryCondition(ConditionTree tree, PropertySource& properties) {
    if (std::ranges::any_of(conditionFaults(tree), preventsEvaluation)) {
        return std::nullopt;
    }
    QHash<QString, QString> values;
    for (const QString& name : namesIn(tree)) {
        values.insert(name, properties.propertyValue(name).trimmed());
    }
    Trial trial(values);
    const bool holds = trial.evaluate(tree.roots, std::nullopt, false);
    return ConditionTrial{holds, trial.takeMarks()};
}

}  // namespace varo
