#include "library/condition.h"

#include "engine/numbers.h"
#include "store/attempt.h"

#include <vector>

namespace varo {

namespace {

enum ConditionType { And = 1, Or = 2, Not = 3, Leaf = 4 };

enum Comparison {
    Equal = 0,
    NotEqual = 1,
    Less = 2,
    LessOrEqual = 3,
    Greater = 4,
    GreaterOrEqual = 5,
    Contains = 6,
    SameText = 7,
};

struct ConditionRow {
    qint32 id;
    qint32 type;
};

/// What a comparison says of the host's value and the stored constant; `otherwise` for an unknown
/// code.
bool compare(int comparison, const QString& value, const QString& constant, bool otherwise) {
    const double left = engine::leadingNumber(value.toStdString());
    const double right = engine::leadingNumber(constant.toStdString());
    switch (comparison) {
        case Equal:
            return left == right;
        case NotEqual:
            return left != right;
        case Less:
            return left < right;
        case LessOrEqual:
            return left <= right;
        case Greater:
            return left > right;
        case GreaterOrEqual:
            return left >= right;
        case Contains:
            return value.contains(constant);
        case SameText:
            return value == constant;
        default:
            return otherwise;
    }
}

}  // namespace

bool Condition::evaluateChildren(qint32 filterID, qint32 parentID, int parentType, int depth,
                                 bool& result) {
    data::Recordset rs;
    if (depth > kMaxDepth ||
        !funcs_.GetResFilterCondByParentID(filterID, parentID, rs, connection_)) {
        return false;
    }
    std::vector<ConditionRow> rows;
    const bool read = attempt([&] {
        for (; !rs.atEnd(); rs.moveNext()) {
            rows.push_back({rs.integer(u"ID"), rs.integer(u"Type")});
        }
    });
    rs.close();
    if (!read) {
        return false;
    }

    bool first = true;
    for (const ConditionRow& row : rows) {
        const bool before = result;
        const bool combines = row.type == And || row.type == Or || row.type == Not;
        if ((combines && !evaluateChildren(filterID, row.id, row.type, depth + 1, result)) ||
            (row.type == Leaf && !evaluateLeaf(filterID, row.id, result))) {
            return false;
        }
        if (first && parentType == Not) {
            result = !result;
        } else if (!first && parentType == And) {
            result = result && before;
        } else if (!first && parentType == Or) {
            result = result || before;
        }
        first = false;
    }
    return true;
}

bool Condition::evaluateLeaf(qint32 filterID, qint32 expressionID, bool& result) {
    data::Recordset rs;
    if (!funcs_.GetResExpressions(filterID, expressionID, rs, connection_)) {
        return false;
    }
    QString field;
    int comparison = 0;
    QString constant;
    const bool read = attempt([&] {
        if (!rs.atEnd()) {
            field = rs.text(u"FieldName");
            comparison = rs.integer(u"CompareType");
            constant = rs.text(u"TheConst");
        }
    });
    const bool stored = read && !rs.atEnd();
    rs.close();
    // The host is asked with nothing open: it may take its time.
    if (stored) {
        result = compare(comparison, properties_.propertyValue(field).trimmed(), constant, result);
    }
    return read;
}

}  // namespace varo
