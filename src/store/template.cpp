#include "store/template.h"

#include "platform/data/create_database.h"
#include "store/access_tables.h"
#include "store/library_connection.h"

#include <QFile>

namespace varo {

namespace {

QString schema() {
    QFile file(QStringLiteral(":/varo/template.sql"));
    if (!file.open(QIODevice::ReadOnly)) {
        throw data::Error(file.errorString());
    }
    return QString::fromUtf8(file.readAll());
}

}  // namespace

QStringList libraryStatements() {
    QStringList statements;
    for (const QString& part : schema().split(u';')) {
        const qsizetype start = part.indexOf(QLatin1StringView("CREATE "));
        if (start >= 0) {
            statements.append(part.mid(start).trimmed());
        }
    }
    return statements;
}

void createEmptyLibrary(const QString& path, LibraryFormat format) {
    const QString version =
        QStringLiteral("INSERT INTO TableInfo (PrptyName, PrptyVal) VALUES ('DBVersion', '%1')")
            .arg(QLatin1StringView(kTemplateVersion));
    if (format == LibraryFormat::Sqlite) {
        data::createDatabase(path, schema() + version);
        return;
    }
    data::createAccessDatabase(
        path, format == LibraryFormat::Mdb ? access::Version::Jet4 : access::Version::Ace12,
        accessLibraryTables(), [&](const QString& unfinished) {
            data::Connection connection;
            connection.open(unfinished);
            connection.execute(version);
        });
}

void ReadTemplateInfo(const QString& folder, const QString& itemName, QString& value,
                      QString& errorText, bool& ok) {
    ok = false;
    data::Connection connection;
    if (ConnectLibrary(folder, QLatin1StringView(kTemplateFileName), connection, {})) {
        try {
            const data::Recordset item = connection.query(
                QStringLiteral("Select * From TableInfo Where PrptyName = ?"), {itemName});
            if (!item.atEnd()) {
                value = item.text(u"PrptyVal");
            }
            ok = true;
        } catch (const data::Error&) {
            ok = false;
        }
    }
    if (!ok) {
        errorText = QStringLiteral("打开模板数据库失败，无法读取模板数据库信息！");
    }
}

}  // namespace varo
