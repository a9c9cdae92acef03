#pragma once

#include "library/library_text.h"
#include "platform/data/connection.h"
#include "support/test_library.h"

#include <QBuffer>
#include <QDir>

#include <gtest/gtest.h>

namespace varo {

using namespace Qt::StringLiterals;

/// Tests that write texts and libraries into a folder of their own.
class LibraryFiles : public testing::Test {
  protected:
    QString path(const QString& name) const { return folder_.filePath(name); }
    QByteArray read(const QString& name) const { return test::fileContent(path(name)); }
    QString files() const { return QDir(folder_.path()).entryList(all_, QDir::Name).join(u' '); }

    QString write(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path(name);
    }

    /// The library `name` built from `text`.
    QString build(const QString& name, const QByteArray& text) const {
        buildLibrary(write(u"text.toml"_s, text), path(name));
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

    /// The rows of a query, joined by blanks, their fields by "|".
    static QString rows(const QString& library, const QString& query) {
        data::Connection connection = open(library);
        data::Recordset rs = connection.query(query);
        return test::remainingRows(rs).join(u' ');
    }

  private:
    static constexpr auto all_ = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    QTemporaryDir folder_;
};

}  // namespace varo
