#include "store/library_structure.h"

#include "store/template.h"

#include <QSet>
#include <QStringView>

#include <algorithm>

namespace varo {

namespace {

/// A table of a library.
struct LibraryTable {
    QLatin1StringView name;
    QLatin1StringView identifier;  ///< the column that the database fills; "" when there is none
    QLatin1StringView texts;       ///< the other columns, separated by blanks
    QLatin1StringView numbers;
};

constexpr LibraryTable kLibraryTables[] = {
    {QLatin1StringView("Tree"), QLatin1StringView("ID"), QLatin1StringView("Name"),
     QLatin1StringView("PID OrderID")},
    {QLatin1StringView("Formula"), QLatin1StringView("ID"), QLatin1StringView("Name Formula Memo"),
     QLatin1StringView("PicType PID OrderID")},
    {QLatin1StringView("RecentVar"), QLatin1StringView(),
     QLatin1StringView("VarName Value VarMemo"), QLatin1StringView("FormulaID VarSourceType")},
    {QLatin1StringView("Property"), QLatin1StringView(), QLatin1StringView("PropName"),
     QLatin1StringView("PropID FilterID NodeID NodeType")},
    {QLatin1StringView("FilterCond"), {}, {}, {}},
    {QLatin1StringView("FilterExpressions"), {}, {}, {}},
    {QLatin1StringView("TableInfo"), {}, {}, {}},
};

bool contains(QLatin1StringView names, const QString& name) {
    const QStringList list = QString(names).split(u' ');
    return list.contains(name, Qt::CaseInsensitive);
}

bool keepsRows(const LibraryTable& expected, const data::TableStructure& found) {
    return found.changesAsTold && found.runsNothing &&
           (expected.identifier.isEmpty() ||
            found.autoNumber.compare(expected.identifier, Qt::CaseInsensitive) == 0) &&
           std::none_of(found.columns.begin(), found.columns.end(), [&](const auto& column) {
               return (column.kind == data::ColumnKind::Number &&
                       contains(expected.texts, column.name)) ||
                      (column.kind == data::ColumnKind::Text &&
                       contains(expected.numbers, column.name));
           });
}

/// Whether all that the file has is what a new library has. Most libraries are told by that.
bool isAsMade(data::Connection& connection) {
    static const QSet<QString> known = [] {
        const QStringList statements = libraryStatements();
        return QSet<QString>(statements.begin(), statements.end()) +
               QSet<QString>{QStringLiteral("CREATE TABLE sqlite_sequence(name,seq)")};
    }();
    for (auto parts = connection.query(QStringLiteral("Select sql From sqlite_schema"));
         !parts.atEnd(); parts.moveNext()) {
        if (!known.contains(parts.text(0))) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool keepsRows(data::Connection& connection) {
    return isAsMade(connection) || std::all_of(std::begin(kLibraryTables), std::end(kLibraryTables),
                                               [&](const LibraryTable& table) {
                                                   const auto found =
                                                       connection.structure(table.name);
                                                   return !found || keepsRows(table, *found);
                                               });
}

}  // namespace varo
