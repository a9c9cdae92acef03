#include "library/condition_words.h"

#include <QStringList>

#include <algorithm>

namespace varo {

namespace {

using Nodes = std::vector<ConditionNode>;

/// Whether the value of a node rests on the value that was there before it.
bool takesOver(const ConditionNode& node) {
    if (node.type == ConditionType::Comparison) {
        return !node.hasTerm || compareTypeNames(node.term.type) == nullptr;
    }
    if (!node.isGroup() || node.children.empty()) {
        return true;
    }
    if (node.type != ConditionType::Not) {
        return takesOver(node.children.front());
    }
    return std::all_of(node.children.begin(), node.children.end(), takesOver);
}

QString nodeWords(const ConditionNode& node, bool isPart);

/// The words of nodes of which the last decides.
QString sequenceWords(const Nodes& nodes) {
    QStringList parts;
    bool isUsed = true;
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
        const QString words = nodeWords(*node, nodes.size() > 1);
        parts.prepend(isUsed ? words : words + QStringLiteral("（不起作用）"));
        isUsed = isUsed && takesOver(*node);
    }
    return parts.join(QStringLiteral("；"));
}

QString inBrackets(const QString& words) {
    return QStringLiteral("（%1）").arg(words);
}

QString takenOver(const QString& what) {
    return QStringLiteral("［%1，沿用前面的结果］").arg(what);
}

QString notWords(const ConditionNode& group) {
    if (group.children.size() > 1) {
        return QStringLiteral("并非组") + inBrackets(sequenceWords(group.children));
    }
    return QStringLiteral("并非 ") + nodeWords(group.children.front(), true);
}

QString groupWords(const ConditionNode& group, bool isPart) {
    if (group.children.empty()) {
        return takenOver(QStringLiteral("空的“%1”组").arg(conditionTypeWords(group.type)));
    }
    if (group.type == ConditionType::Not) {
        return notWords(group);
    }
    if (group.children.size() == 1) {
        return nodeWords(group.children.front(), isPart);
    }
    QStringList parts;
    for (const ConditionNode& child : group.children) {
        parts.append(nodeWords(child, true));
    }
    const QString words = parts.join(QStringLiteral(" %1 ").arg(conditionTypeWords(group.type)));
    return isPart ? inBrackets(words) : words;
}

/// `isPart`: as a part of something else, from which it must be told apart.
QString nodeWords(const ConditionNode& node, bool isPart) {
    if (node.isGroup()) {
        return groupWords(node, isPart);
    }
    if (node.type != ConditionType::Comparison) {
        return takenOver(QStringLiteral("未知类型 %1").arg(static_cast<qint32>(node.type)));
    }
    return node.hasTerm ? comparisonWords(node.term) : takenOver(QStringLiteral("没有内容的比较"));
}

QString numberWords(const QString& constant) {
    if (constant.trimmed().isEmpty()) {
        return QStringLiteral("［未填数值］");
    }
    return numberIn(constant) == NumberText::Whole
               ? constant
               : QStringLiteral("%1（按 %2 计算）").arg(constant, numberReadFrom(constant));
}

}  // namespace

QString conditionTypeWords(ConditionType type) {
    switch (type) {
        case ConditionType::And:
            return QStringLiteral("并且");
        case ConditionType::Or:
            return QStringLiteral("或者");
        case ConditionType::Not:
            return QStringLiteral("并非");
        case ConditionType::Comparison:
            return QStringLiteral("比较");
    }
    return QStringLiteral("未知");
}

QString comparisonWords(const ComparisonTerm& term) {
    const QString name = term.name.trimmed().isEmpty() ? QStringLiteral("［未填名称］") : term.name;
    const CompareTypeNames* names = compareTypeNames(term.type);
    if (names == nullptr) {
        return name + u' ' + takenOver(QStringLiteral("未知比较 %1").arg(term.type));
    }
    if (!names->isNumeric) {
        return QStringLiteral("%1 %2“%3”").arg(name, names->words, term.constant);
    }
    return QStringLiteral("%1 %2 %3").arg(name, names->words, numberWords(term.constant));
}

QString conditionWords(const ConditionTree& tree) {
    return sequenceWords(tree.roots);
}

}  // namespace varo
