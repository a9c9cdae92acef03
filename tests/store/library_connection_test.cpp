#include "store/library_connection.h"

#include "support/test_library.h"

#include <QDir>

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

TEST(ConnectLibrary, PointsAnOpenConnectionAtAnotherLibrary) {
    test::TestLibrary first;
    test::TestLibrary second;
    first.addFolder(0, u"in the first"_s);
    second.addFolder(0, u"in the second"_s);
    data::Connection connection;
    ASSERT_TRUE(ConnectLibrary(first.folder(), first.fileName(), connection, {}));
    ASSERT_TRUE(ConnectLibrary(second.folder(), second.fileName(), connection, {}));
    data::Recordset rs;
    ASSERT_TRUE(second.funcs().GetNodeInfo(rs, connection));
    EXPECT_EQ(rs.text(u"Name"), u"in the second"_s);
}

TEST(ConnectLibrary, FailsWithTheConnectionClosed) {
    const test::TestLibrary library;
    const QString notes = library.addFile(u"notes.txt"_s, "not a library");
    const QString empty = library.addFile(u"empty.vdb"_s, {});
    for (const QString& name : {u"missing.vdb"_s, u"notes.txt"_s, u"empty.vdb"_s, u""_s}) {
        data::Connection connection;
        ASSERT_TRUE(ConnectLibrary(library.folder(), library.fileName(), connection, {}));
        EXPECT_FALSE(ConnectLibrary(library.folder(), name, connection, {})) << qPrintable(name);
        EXPECT_FALSE(connection.isOpen());
    }
    data::Connection connection;
    EXPECT_FALSE(ConnectLibrary(library.folder(), library.fileName(), connection, u"secret"_s));
    EXPECT_FALSE(QFile::exists(library.pathOf(u"missing.vdb"_s)));
}

TEST(ConnectLibrary, TakesFoldersWithEitherSeparator) {
    const test::TestLibrary library;
    QString folder = library.folder();
    folder.replace(u'/', u'\\');
    data::Connection connection;
    EXPECT_TRUE(ConnectLibrary(folder, library.fileName(), connection, {}));
    folder.chop(1);
    EXPECT_TRUE(ConnectLibrary(folder, library.fileName(), connection, {}));
}

TEST(CloseRecordset, ClosesWhatIsOpenAndBearsWhatIsNot) {
    test::TestLibrary library;
    data::Recordset rs;
    CloseRecordset(rs);
    ASSERT_TRUE(library.funcs().GetNodeInfo(rs, library.connection()));
    CloseRecordset(rs);
    EXPECT_FALSE(rs.isOpen());
}

TEST(Paths, AreWrittenWithThePlatformsSeparators) {
    const QString s(QDir::separator());
    struct Case {
        QString given;
        QString path;
        QString folder;
    };
    const Case cases[] = {
        {u""_s, u""_s, u""_s},
        {u"a\\b/c"_s, u"a"_s + s + u"b"_s + s + u"c"_s, u"a"_s + s + u"b"_s + s + u"c"_s + s},
        {u"a\\\\"_s, u"a"_s + s + s, u"a"_s + s},
        {u"/"_s, s, s},
    };
    for (const Case& expected : cases) {
        EXPECT_EQ(normalisedPath(expected.given), expected.path);
        EXPECT_EQ(normalisedFolder(expected.given), expected.folder);
    }
}

TEST(Paths, AreSplitBehindTheLastSeparator) {
    QString folder;
    QString fileName;
    SplitFilePath(u"/libraries\\steel/beams.vdb"_s, folder, fileName);
    EXPECT_EQ(folder, QDir::toNativeSeparators(u"/libraries/steel/"_s));
    EXPECT_EQ(fileName, u"beams.vdb"_s);
}

TEST(CheckNewDB, AcceptsWhatHasTheStructureOfALibrary) {
    const char* const needed[] = {"Formula", "RecentVar", "Tree"};
    const char* const optional[] = {"Property", "FilterCond", "FilterExpressions", "TableInfo"};
    for (const char* table : optional) {
        test::TestLibrary library;
        library.connection().execute(u"Drop Table "_s + QLatin1StringView(table));
        EXPECT_TRUE(library.funcs().CheckNewDB(library.connection())) << table;
    }
    for (const char* table : needed) {
        test::TestLibrary library;
        library.connection().execute(u"Drop Table "_s + QLatin1StringView(table));
        EXPECT_FALSE(library.funcs().CheckNewDB(library.connection())) << table;
    }
    test::TestLibrary library;
    library.connection().execute(u"Alter Table Formula Drop Column Memo"_s);
    EXPECT_FALSE(library.funcs().CheckNewDB(library.connection()));
    data::Connection closed;
    EXPECT_FALSE(library.funcs().CheckNewDB(closed));
}

}  // namespace
}  // namespace varo
