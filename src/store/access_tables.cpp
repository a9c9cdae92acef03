#include "store/access_tables.h"

namespace varo {

namespace {

using access::FieldType;
using access::NewColumn;
using access::NewIndex;
using access::NewTable;

constexpr int kTextSize = 255;  ///< characters, the most that there are

NewColumn number(const char* name) {
    return {.name = QString::fromLatin1(name), .type = FieldType::Long};
}

NewColumn identifier() {
    return {.name = QStringLiteral("ID"), .type = FieldType::Long, .isAutoNumber = true};
}

NewColumn text(const char* name) {
    return {.name = QString::fromLatin1(name), .type = FieldType::Text, .size = kTextSize};
}

NewColumn longText(const char* name) {
    return {.name = QString::fromLatin1(name), .type = FieldType::Memo};
}

NewColumn bytes(const char* name) {
    return {.name = QString::fromLatin1(name), .type = FieldType::Ole};
}

NewIndex primaryKey() {
    return {.name = QStringLiteral("PrimaryKey"),
            .columns = {QStringLiteral("ID")},
            .isUnique = true,
            .isPrimary = true};
}

NewIndex index(const char* name, std::initializer_list<const char*> columns) {
    NewIndex made{.name = QString::fromLatin1(name)};
    for (const char* column : columns) {
        made.columns.append(QString::fromLatin1(column));
    }
    return made;
}

NewTable table(const char* name, const QList<NewColumn>& columns, const QList<NewIndex>& indexes) {
    return {.name = QString::fromLatin1(name), .columns = columns, .indexes = indexes};
}

}  // namespace

QList<NewTable> accessLibraryTables() {
    return {
        table("Tree", {identifier(), text("Name"), number("PID"), number("OrderID")},
              {primaryKey(), index("TreeOrder", {"PID", "OrderID"})}),
        table("Formula",
              {identifier(), text("Name"), longText("Formula"), longText("Memo"), number("PicType"),
               number("PID"), number("OrderID"), bytes("Pic")},
              {primaryKey(), index("FormulaOrder", {"PID", "OrderID"})}),
        table("RecentVar",
              {text("VarName"), number("FormulaID"), longText("Value"), number("VarSourceType"),
               longText("VarMemo")},
              {index("RecentVarFormula", {"FormulaID"})}),
        table("Property",
              {number("PropID"), text("PropName"), number("FilterID"), number("NodeID"),
               number("NodeType")},
              {index("PropertyType", {"NodeType", "PropID"}),
               index("PropertyNode", {"NodeID", "NodeType", "PropID"})}),
        table("FilterCond", {number("ID"), number("UserID"), number("ParentID"), number("Type")},
              {index("FilterCondParent", {"UserID", "ParentID", "ID"})}),
        table("FilterExpressions",
              {number("FilterID"), number("ExpID"), text("TableName"), text("FieldName"),
               number("FieldType"), number("CompareType"), longText("TheConst")},
              {index("FilterExpressionsLeaf", {"FilterID", "ExpID"})}),
        table("TableInfo", {text("PrptyName"), longText("PrptyVal")}, {}),
    };
}

}  // namespace varo
