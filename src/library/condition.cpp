#include "library/condition.h"

#include "store/attempt.h"

#include <vector>

namespace varo {

namespace {

struct Row {
    qint32 id;
    ConditionType type;
};

}  // namespace

bool Condition::evaluateChildren(qint32 filterID, qint32 parentID, ConditionType parentType,
                                 int depth, bool& result) {
    data::Recordset rs;
    if (depth > kMaxDepth ||
        !funcs_.GetResFilterCondByParentID(filterID, parentID, rs, connection_)) {
        return false;
    }
    std::vector<Row> rows;
    const bool read = attempt([&] {
        for (; !rs.atEnd(); rs.moveNext()) {
            rows.push_back({rs.integer(u"ID"), static_cast<ConditionType>(rs.integer(u"Type"))});
        }
    });
    rs.close();
    if (!read) {
        return false;
    }

    bool first = true;
    for (const Row& row : rows) {
        const bool before = result;
        if ((isGroupType(row.type) &&
             !evaluateChildren(filterID, row.id, row.type, depth + 1, result)) ||
            (row.type == ConditionType::Comparison && !evaluateLeaf(filterID, row.id, result))) {
            return false;
        }
        if (first && parentType == ConditionType::Not) {
            result = !result;
        } else if (!first && parentType == ConditionType::And) {
            result = result && before;
        } else if (!first && parentType == ConditionType::Or) {
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
        result =
            compareValues(comparison, properties_.propertyValue(field).trimmed(), constant, result);
    }
    return read;
}

}  // namespace varo
