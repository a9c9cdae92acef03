#pragma once

#include "library/library_text.h"
#include "platform/data/connection.h"
#include "support/test_library.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace varo {

/// Tests that write texts and libraries into a folder of their own.
class LibraryFiles : public testing::Test {
  protected:
    QString path(const QString& name) const { return folder_.filePath(name); }

    QString write(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
        return path(name);
    }

    QByteArray read(const QString& name) const { return test::fileContent(path(name)); }

    /// The library `name` built from `text`.
    QString build(const QString& name, const QByteArray& text) const {
        buildLibrary(write(name + QStringLiteral(".toml"), text), path(name));
        return path(name);
    }

    static QByteArray dump(const QString& library) {
        QBuffer out;
        out.open(QIODevice::WriteOnly);
        dumpLibrary(library, out);
        return out.data();
    }

    static data::Connection open(const QString& library) {
        data::Connection connection;
        connection.open(library);
        return connection;
    }

    /// One string for each row of the query: its fields, joined by "|".
    static QStringList rowsOf(const QString& library, const QString& query) {
        data::Connection connection = open(library);
        data::Recordset rs = connection.query(query);
        return test::remainingRows(rs);
    }

    QStringList filesInFolder() const {
        return QDir(folder_.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

  private:
    QTemporaryDir folder_;
};

}  // namespace varo
