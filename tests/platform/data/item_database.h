#pragma once

#include "platform/data/connection.h"
#include "platform/data/create_database.h"

#include <QFile>
#include <QTemporaryDir>

#include <sqlite3.h>

namespace varo::data {

/// A database in a folder of its own with the table Item(ID, Name, Amount, Bytes), opened.
class ItemDatabase {
  public:
    ItemDatabase() {
        createDatabase(path(),
                       QStringLiteral("Create Table Item (ID Integer Primary Key Autoincrement,"
                                      "Name Text Collate NoCase, Amount Integer, Bytes Blob);"));
        connection.open(path());
    }

    QString path() const { return directory.filePath(QStringLiteral("items.db")); }

    qint32 add(const QString& name, const Argument& amount = nullptr) {
        connection.execute(QStringLiteral("Insert Into Item(Name,Amount) Values(?,?)"),
                           {name, amount});
        return connection.lastInsertedId();
    }

    QStringList names() {
        QStringList names;
        for (Recordset items =
                 connection.query(QStringLiteral("Select Name From Item Order By ID"));
             !items.atEnd(); items.moveNext()) {
            names.append(items.text(0));
        }
        return names;
    }

    QTemporaryDir directory;
    Connection connection;
};

/// Runs statements on the file as another program does; SQLite's result.
inline int runElsewhere(const QString& path, const char* statements) {
    sqlite3* other = nullptr;
    sqlite3_open(path.toUtf8().constData(), &other);
    const int result = sqlite3_exec(other, statements, nullptr, nullptr, nullptr);
    sqlite3_close(other);
    return result;
}

/// Replaces the content of the file; false when that fails.
inline bool writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

}  // namespace varo::data
