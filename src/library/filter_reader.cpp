#include "library/filter_reader.h"

#include "library/limits.h"

namespace varo {

namespace {

/// Every name and constant is read to here; SQL counts characters, the limit counts UTF-16.
constexpr int kReadLimit = kTextLimit + 1;

QString numbered(const QString& column) {
    return column + QStringLiteral(" Between -2147483648 And 2147483647");
}

QString cut(const QString& column) {
    return QStringLiteral("iif(length(%1) > %2, substr(%1, 1, %2), %1)")
        .arg(column)
        .arg(kReadLimit);
}

}  // namespace

FilterReader::FilterReader(data::Connection& connection)
    : nodes_(
          connection.query(QStringLiteral("Select UserID,ID,ParentID,Type From FilterCond Where %1 "
                                          "Order By UserID,ID,rowid")
                               .arg(numbered(QStringLiteral("UserID"))))),
      terms_(connection.query(
          QStringLiteral("Select FilterID,ExpID,%2,CompareType,%3,%4,FieldType "
                         "From FilterExpressions Where %1 Order By FilterID,ExpID,rowid")
              .arg(numbered(QStringLiteral("FilterID")), cut(QStringLiteral("FieldName")),
                   cut(QStringLiteral("TheConst")), cut(QStringLiteral("TableName"))))) {}

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
        if (terms_.integer(0) == filter_ &&
            rows_.terms.size() <= rows_.nodes.size() + kMaxConditionNodes) {
            rows_.terms.push_back({terms_.integer(1),
                                   {.name = terms_.text(2),
                                    .type = terms_.integer(3),
                                    .constant = terms_.text(4),
                                    .table = terms_.text(5),
                                    .fieldType = terms_.integer(6)}});
        }
    }
}

}  // namespace varo
