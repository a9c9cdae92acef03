#include "library/library_rows.h"
#include "library/library_text.h"
#include "library/output_file.h"
#include "library/picture_reader.h"
#include "library/row_store.h"
#include "platform/data/connection.h"
#include "platform/data/create_database.h"
#include "store/db_funcs.h"
#include "store/template.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <limits>

namespace varo {

namespace {

void storeInfo(data::Connection& connection, const LibraryRows& rows) {
    const auto insert = [&](const QString& name, const QString& value) {
        connection.execute(QStringLiteral("insert into TableInfo(PrptyName,PrptyVal) values(?,?)"),
                           {name, value});
    };
    const auto isVersion = [](const InfoRow& row) {
        return row.name.compare(u"DBVersion", Qt::CaseInsensitive) == 0;
    };
    connection.execute(QStringLiteral("delete from TableInfo"));
    if (std::none_of(rows.info.begin(), rows.info.end(), isVersion)) {
        insert(QStringLiteral("DBVersion"), QString::fromUtf8(kTemplateVersion));
    }
    for (const InfoRow& row : rows.info) {
        insert(row.name, row.value);
    }
}

/// Sees to it that the database gives no identifier up to `last` to a new row of `table`: rows that
/// a deleted folder or formula has left behind would attach themselves to it.
void retireIdentifiers(data::Connection& connection, const QString& table, qint32 last) {
    const QString insert =
        QStringLiteral("insert into %1(ID) select ?1 where ?1 not in (select ID from %1)")
            .arg(table);
    const QString remove = QStringLiteral("delete from %1 where ID = ?").arg(table);
    if (last < std::numeric_limits<qint32>::max() && connection.execute(insert, {last}) == 1) {
        connection.execute(remove, {last});
    }
}

void retireReferences(data::Connection& connection, const LibraryRows& rows) {
    qint32 lastFolder = 0;
    qint32 lastFormula = 0;
    for (const FolderRow& row : rows.folders) {
        lastFolder = std::max(lastFolder, row.parent);
    }
    for (const FormulaRow& row : rows.formulas) {
        lastFolder = std::max(lastFolder, row.folder);
    }
    for (const ValueRow& row : rows.values) {
        lastFormula = std::max(lastFormula, row.formula);
    }
    for (const PropertyRow& row : rows.properties) {
        qint32& last = row.nodeType == NodeTypeFolder ? lastFolder : lastFormula;
        last = std::max(last, row.node);
    }
    retireIdentifiers(connection, QStringLiteral("Tree"), lastFolder);
    retireIdentifiers(connection, QStringLiteral("Formula"), lastFormula);
}

void fillLibrary(const QString& path, const LibraryRows& rows, const QString& textPath) {
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    for (const FolderRow& row : rows.folders) {
        storeFolder(connection, row, Numbering::AsInText);
    }
    PictureReader pictures(textPath);
    for (const FormulaRow& row : rows.formulas) {
        storeFormula(connection, row, Numbering::AsInText, pictures);
    }
    storeValues(connection, rows.values);
    storeConditions(connection, rows);
    storeInfo(connection, rows);
    retireReferences(connection, rows);
    transaction.commit();
}

}  // namespace

QStringList buildLibrary(const QString& textPath, const QString& libraryPath, bool force,
                         LibraryFormat format) {
    const QFileInfo library(libraryPath);
    if (library.exists() &&
        library.canonicalFilePath() == QFileInfo(textPath).canonicalFilePath()) {
        throw TextError(libraryPath, QStringLiteral("the library would replace its own text"));
    }
    requireReplaceable(libraryPath, force);
    const LibraryRows rows = readLibraryText(textPath);

    // A folder beside the library, so that the finished file only has to be renamed.
    const QTemporaryDir workshop(library.absolutePath() + QStringLiteral("/.varo-library-XXXXXX"));
    if (!workshop.isValid()) {
        throw TextError(libraryPath, workshop.errorString());
    }
    const QString unfinished = workshop.filePath(QStringLiteral("library"));
    createEmptyLibrary(unfinished, format);
    fillLibrary(unfinished, rows, textPath);

    requireReplaceable(libraryPath, force);  // the text may have taken long
    if (force) {
        removeForeignSideFiles(libraryPath);
    }
    data::replaceDatabase(unfinished, libraryPath);
    return rows.warnings;
}

}  // namespace varo
