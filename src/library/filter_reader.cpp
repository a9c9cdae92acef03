#include "library/filter_reader.h"

#include "library/limits.h"

namespace varo {

namespace {

/// Every text is read to here; SQL counts characters, the limit counts UTF-16.
constexpr int kReadLimit = kTextLimit + 1;

QString numbered(const QString& column) {
    return column + QStringLiteral(" Between -2147483648 And 2147483647");
}

QString cut(const QString& column) {
    return QStringLiteral("iif(length(%1) > %2, substr(%1, 1, %2), %1)")
        .arg(column)
        .arg(kReadLimit);
}

/// What is read of a term, behind its numbers; as term() takes it.
QString termColumns() {
    return QStringLiteral("ExpID,%1,CompareType,%2,%3,FieldType")
        .arg(cut(QStringLiteral("FieldName")), cut(QStringLiteral("TheConst")),
             cut(QStringLiteral("TableName")));
}

/// The term in the columns from `first` on.
FilterTermRow term(data::Recordset& row, int first) {
    return {row.integer(first),
            {.name = row.text(first + 1),
             .type = row.integer(first + 2),
             .constant = row.text(first + 3),
             .table = row.text(first + 4),
             .fieldType = row.integer(first + 5)}};
}

/// Whether another term of what may be a condition is read.
bool takesTerm(const FilterRows& rows) {
    return rows.terms.size() <= rows.nodes.size() + kMaxConditionNodes;
}

}  // namespace

FilterRows readFilterRows(data::Connection& connection, qint32 filterID) {
    FilterRows rows;
    data::Recordset nodes =
        connection.query(QStringLiteral("Select ID,ParentID,Type From FilterCond Where UserID = ? "
                                        "Order By ID,rowid"),
                         {filterID});
    for (; !nodes.atEnd() && !rows.isCut; nodes.moveNext()) {
        rows.nodes.push_back({nodes.integer(0), nodes.integer(1), nodes.integer(2)});
        rows.isCut = rows.nodes.size() > std::size_t{kMaxConditionNodes};
    }
    data::Recordset terms =
        connection.query(QStringLiteral("Select %1 From FilterExpressions Where FilterID = ? "
                                        "Order By ExpID,rowid")
                             .arg(termColumns()),
                         {filterID});
    for (; !terms.atEnd() && takesTerm(rows); terms.moveNext()) {
        rows.terms.push_back(term(terms, 0));
    }
    return rows;
}

FilterReader::FilterReader(data::Connection& connection)
    : nodes_(
          connection.query(QStringLiteral("Select UserID,ID,ParentID,Type From FilterCond Where %1 "
                                          "Order By UserID,ID,rowid")
                               .arg(numbered(QStringLiteral("UserID"))))),
      terms_(connection.query(QStringLiteral("Select FilterID,%2 From FilterExpressions Where %1 "
                                             "Order By FilterID,ExpID,rowid")
                                  .arg(numbered(QStringLiteral("FilterID")), termColumns()))) {}

bool FilterReader::next() {
    rows_ = {};
    if (nodes_.atEnd()) {
        return false;
    }
    filter_ = nodes_.integer(0);
    readNodes();
    readTerms();
    return true;
}

void FilterReader::readNodes() {
    for (; !nodes_.atEnd() && nodes_.integer(0) == filter_; nodes_.moveNext()) {
        if (!rows_.isCut) {
            rows_.nodes.push_back({nodes_.integer(1), nodes_.integer(2), nodes_.integer(3)});
            rows_.isCut = rows_.nodes.size() > std::size_t{kMaxConditionNodes};
        }
    }
}

void FilterReader::readTerms() {
    for (; !terms_.atEnd() && terms_.integer(0) <= filter_; terms_.moveNext()) {
        if (terms_.integer(0) == filter_ && takesTerm(rows_)) {
            rows_.terms.push_back(term(terms_, 1));
        }
    }
}

}  // namespace varo
