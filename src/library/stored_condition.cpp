#include "library/stored_condition.h"

#include "library/condition.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace varo {

namespace {

/// Puts rows together from the roots down.
class Assembly {
  public:
    explicit Assembly(const FilterRows& rows) : rows_(rows), reached_(rows.nodes.size(), false) {
        for (std::size_t row = 0; row < rows.nodes.size(); ++row) {
            childrenOf_[rows.nodes[row].parent].push_back(row);
        }
        for (const FilterTermRow& term : rows.terms) {
            ++termCount_[term.id];
            if (!termOf_.contains(term.id)) {
                termOf_.insert(term.id, &term.term);
            }
        }
    }

    StoredCondition run() {
        addChildren(0, condition_.tree.roots);
        describe();
        condition_.isWhole = !rows_.isCut && !isTooDeep_ && !containsItself_ && !isTooLarge_;
        return std::move(condition_);
    }

  private:
    void addChildren(qint32 parent, std::vector<ConditionNode>& children) {
        const auto rows = childrenOf_.constFind(parent);
        if (rows == childrenOf_.constEnd()) {
            return;
        }
        if (path_.size() > std::size_t{Condition::kMaxDepth}) {
            isTooDeep_ = true;
            return;
        }
        for (const std::size_t row : *rows) {
            if (std::find(path_.begin(), path_.end(), row) != path_.end()) {
                containsItself_ = true;
            } else if (++nodes_ > kMaxConditionNodes) {
                isTooLarge_ = true;
                return;
            } else {
                children.push_back(node(row));
            }
        }
    }

    ConditionNode node(std::size_t row) {
        const FilterNodeRow& stored = rows_.nodes[row];
        reached_[row] = true;
        ConditionNode node;
        node.type = static_cast<ConditionType>(stored.type);
        if (node.isGroup()) {
            path_.push_back(row);
            addChildren(stored.id, node.children);
            path_.pop_back();
        } else if (node.type == ConditionType::Comparison) {
            const ComparisonTerm* term = termOf_.value(stored.id);
            node.hasTerm = term != nullptr;
            node.term = term != nullptr ? *term : ComparisonTerm();
            usedTerms_.insert(stored.id);
        }
        return node;
    }

    void describe() {
        remark(containsItself_, QStringLiteral("条件包含它自身，无法计算。"));
        remark(isTooDeep_,
               QStringLiteral("条件的嵌套超过 %1 层，无法计算。").arg(Condition::kMaxDepth));
        remark(isTooLarge_ || rows_.isCut,
               QStringLiteral("条件太大，只显示前 %1 项。").arg(kMaxConditionNodes));
        if (isTooLarge_ || rows_.isCut) {
            return;
        }
        const auto lost = std::count(reached_.begin(), reached_.end(), false);
        remark(lost > 0, QStringLiteral("有 %1 项不在任何根之下，不起作用。").arg(lost));
        QSet<qint32> ids;
        qsizetype repeated = 0;
        for (const FilterNodeRow& row : rows_.nodes) {
            repeated += ids.contains(row.id) ? 1 : 0;
            ids.insert(row.id);
        }
        remark(repeated > 0, QStringLiteral("有 %1 项的编号与别的项相同。").arg(repeated));
        describeTerms();
    }

    void describeTerms() {
        qsizetype unused = 0;
        qsizetype repeated = 0;
        for (auto count = termCount_.cbegin(); count != termCount_.cend(); ++count) {
            if (usedTerms_.contains(count.key())) {
                repeated += count.value() - 1;
            } else {
                unused += count.value();
            }
        }
        remark(unused > 0, QStringLiteral("有 %1 个比较内容不属于任何比较。").arg(unused));
        remark(repeated > 0,
               QStringLiteral("有 %1 个比较内容重复，只有第一个起作用。").arg(repeated));
    }

    void remark(bool applies, const QString& text) {
        if (applies) {
            condition_.remarks.append(text);
        }
    }

    const FilterRows& rows_;
    QHash<qint32, std::vector<std::size_t>> childrenOf_;
    QHash<qint32, const ComparisonTerm*> termOf_;
    QHash<qint32, qsizetype> termCount_;
    QSet<qint32> usedTerms_;
    std::vector<bool> reached_;
    std::vector<std::size_t> path_;  ///< the rows of the groups around
    StoredCondition condition_;
    int nodes_ = 0;
    bool isTooDeep_ = false;
    bool containsItself_ = false;
    bool isTooLarge_ = false;
};

void addRows(const std::vector<ConditionNode>& nodes, qint32 parent, qint32& nextId,
             FilterRows& rows) {
    for (const ConditionNode& node : nodes) {
        const qint32 id = nextId++;
        rows.nodes.push_back({id, parent, static_cast<qint32>(node.type)});
        if (node.isGroup()) {
            addRows(node.children, id, nextId, rows);
        } else {
            rows.terms.push_back({id, node.term});
        }
    }
}

}  // namespace

StoredCondition conditionFromRows(const FilterRows& rows) {
    return Assembly(rows).run();
}

FilterRows conditionToRows(const ConditionTree& tree, qint32 firstId) {
    FilterRows rows;
    addRows(tree.roots, 0, firstId, rows);
    return rows;
}

}  // namespace varo
