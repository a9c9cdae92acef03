#include "library/condition.h"

#include "store/attempt.h"

#include <QHash>

#include <algorithm>
#include <vector>

namespace varo {

namespace {

/// One pass through a condition. The value of a group depends on nothing but its number, its
/// operator and the result so far, so each of these is computed once: rows with the same number
/// have the same children, and going through them again for each would double the work at every
/// level.
class Evaluation {
  public:
    Evaluation(ConditionRows& rows, PropertySource& properties, qint32 filter)
        : rows_(rows), properties_(properties), filter_(filter) {}

    /// Puts the value of the roots into `result`. False when the condition contains itself or is
    /// nested too deep. Throws data::Error.
    bool run(bool& result) {
        int height = 0;
        return evaluate(0, {}, result, height);
    }

  private:
    struct Group {
        qint32 id;
        ConditionType type;
        bool before;

        bool operator==(const Group&) const = default;
        friend std::size_t qHash(const Group& group, std::size_t seed = 0) {
            return qHashMulti(seed, group.id, static_cast<qint32>(group.type), group.before);
        }
    };
    struct Value {
        bool holds;
        int height;
    };

    /// Evaluates what is below `id`; `height` becomes the number of levels of groups below it.
    bool evaluate(qint32 id, ConditionType type, bool& result, int& height) {
        const Group group{id, type, result};
        const auto known = values_.constFind(group);
        if (known != values_.constEnd()) {
            height = known->height;
            result = known->holds;
            return path_.size() + static_cast<std::size_t>(height) <= kDeepest;
        }
        if (path_.size() > kDeepest || std::ranges::find(path_, id) != path_.end()) {
            return false;
        }
        path_.push_back(id);
        const bool evaluated = evaluateChildren(id, type, result, height);
        path_.pop_back();
        values_.insert(group, {result, height});
        return evaluated;
    }

    bool evaluateChildren(qint32 id, ConditionType type, bool& result, int& height) {
        height = 0;
        bool first = true;
        for (const ConditionRows::Node& node : rows_.children(filter_, id)) {
            const bool before = result;
            int below = 0;
            if (isGroupType(node.type)) {
                if (!evaluate(node.id, node.type, result, below)) {
                    return false;
                }
                height = std::max(height, below + 1);
            } else if (node.type == ConditionType::Comparison) {
                result = comparison(node.id).value_or(result);
            }
            if (first && type == ConditionType::Not) {
                result = !result;
            } else if (!first && type == ConditionType::And) {
                result = result && before;
            } else if (!first && type == ConditionType::Or) {
                result = result || before;
            }
            first = false;
        }
        return true;
    }

    /// What the comparison says; nothing when it is stored without content or is unknown.
    std::optional<bool> comparison(qint32 id) {
        const auto known = comparisons_.constFind(id);
        if (known != comparisons_.constEnd()) {
            return *known;
        }
        std::optional<bool> holds;
        if (const auto term = rows_.term(filter_, id)) {
            const QString value = properties_.propertyValue(term->name).trimmed();
            holds = compareValues(term->type, value, term->constant, false);
            if (compareTypeNames(term->type) == nullptr) {
                holds.reset();
            }
        }
        comparisons_.insert(id, holds);
        return holds;
    }

    static constexpr std::size_t kDeepest = Condition::kMaxDepth;

    ConditionRows& rows_;
    PropertySource& properties_;
    qint32 filter_;
    QHash<Group, Value> values_;
    QHash<qint32, std::optional<bool>> comparisons_;
    std::vector<qint32> path_;  ///< the groups around, from the roots' parent on
};

}  // namespace

bool Condition::evaluate(qint32 filterID, bool& result) {
    bool evaluated = false;
    return attempt([&] { evaluated = Evaluation(rows_, properties_, filterID).run(result); }) &&
           evaluated;
}

}  // namespace varo
