#pragma once

#include "support/test_library.h"

#include <gtest/gtest.h>

namespace varo {

using namespace Qt::StringLiterals;

/// A library with the operations on it, and a record set for what they list.
class LibraryTest : public testing::Test {
  protected:
    /// One column of the rows that are left in `rs`, joined by blanks.
    QString listed(const QString& column = u"Name"_s) {
        QStringList texts;
        for (; !rs.atEnd(); rs.moveNext()) {
            texts.append(rs.text(column));
        }
        return texts.join(u' ');
    }

    /// The same for what a listing operation has just opened, by its answer.
    QString listed(bool opened, const QString& column = u"Name"_s) {
        return opened ? listed(column) : u"failed"_s;
    }

    QString rows(const QString& query) { return library.rows(query).join(u' '); }

    test::TestLibrary library;
    clsDBFuncs& funcs = library.funcs();
    data::Connection& connection = library.connection();
    data::Recordset rs;
};

}  // namespace varo
