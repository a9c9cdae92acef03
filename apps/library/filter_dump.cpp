#include "library/filter_dump.h"

#include <QSet>

#include <algorithm>

namespace varo {

void FilterDump::write() {
    lines_ = conditionLines(connection_);
    writeProperties();
    writeConditions();
    writeExpressions();
}

/// The condition of a filter stands with the first property that has it, where one line tells it.
void FilterDump::writeProperties() {
    qint32 lastId = lastIdGivenAsRows();
    QSet<qint32> written;
    for (auto rs = connection_.query(
             QStringLiteral("select rowid,PropID,PropName,FilterID,NodeID,NodeType from "
                            "Property order by rowid"));
         !rs.atEnd(); rs.moveNext()) {
        const auto found = complaints_.numbers(rs, "Property", {1, 3, 4, 5});
        if (!found) {
            continue;
        }
        out_.begin("property");
        out_.number("id", rs.integer(1));
        out_.text("name", rs.text(2));
        out_.numberUnless("filter", rs.integer(3), 0);
        out_.number("node", rs.integer(4));
        out_.number("node_type", rs.integer(5));
        const auto condition = lines_.find(rs.integer(3));
        if (condition != lines_.end() && !written.contains(condition->first)) {
            written.insert(condition->first);
            lastId = writeLine(condition->second, lastId);
        }
    }
}

/// Returns the largest identifier of a condition written so far.
qint32 FilterDump::writeLine(const ConditionLine& condition, qint32 lastId) {
    out_.text("condition", condition.text);
    if (qint64{condition.firstId} != qint64{lastId} + 1) {
        out_.number("condition_id", condition.firstId);
    }
    return std::max(lastId, condition.lastId);
}

qint32 FilterDump::lastIdGivenAsRows() {
    qint32 last = 0;
    for (auto rs = connection_.query(
             QStringLiteral("select UserID,ID from FilterCond union select FilterID,ExpID "
                            "from FilterExpressions"));
         !rs.atEnd(); rs.moveNext()) {
        last = lines_.contains(rs.integer(0)) ? last : std::max(last, rs.integer(1));
    }
    return last;
}

void FilterDump::writeConditions() {
    for (auto rs = connection_.query(
             QStringLiteral("select rowid,ID,UserID,ParentID,Type from FilterCond order by rowid"));
         !rs.atEnd(); rs.moveNext()) {
        if (!complaints_.numbers(rs, "FilterCond", {1, 2, 3, 4}) ||
            lines_.contains(rs.integer(2))) {
            continue;
        }
        out_.begin("condition");
        out_.number("id", rs.integer(1));
        out_.number("user", rs.integer(2));
        out_.numberUnless("parent", rs.integer(3), 0);
        out_.number("type", rs.integer(4));
    }
}

void FilterDump::writeExpressions() {
    for (auto rs = connection_.query(
             QStringLiteral("select rowid,FilterID,ExpID,TableName,FieldName,FieldType,"
                            "CompareType,TheConst from FilterExpressions order by rowid"));
         !rs.atEnd(); rs.moveNext()) {
        if (!complaints_.numbers(rs, "FilterExpressions", {1, 2, 5, 6}) ||
            lines_.contains(rs.integer(1))) {
            continue;
        }
        out_.begin("expression");
        out_.number("filter", rs.integer(1));
        out_.number("id", rs.integer(2));
        out_.textUnlessEmpty("table", rs.text(3));
        out_.text("field", rs.text(4));
        out_.numberUnless("field_type", rs.integer(5), 0);
        out_.number("compare", rs.integer(6));
        out_.textUnlessEmpty("constant", rs.text(7));
    }
}

}  // namespace varo
