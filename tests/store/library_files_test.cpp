#include "library_test.h"
#include "store/library_connection.h"
#include "store/template.h"

#include <QDir>

#include <sqlite3.h>

namespace varo {
namespace {

using LibraryFile = LibraryTest;

/// Runs statements on the file, as a program does that knows nothing of libraries.
void run(const QString& path, const char* statements) {
    sqlite3* file = nullptr;
    EXPECT_EQ(sqlite3_open(path.toUtf8().constData(), &file), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(file, statements, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(file);
}

TEST_F(LibraryFile, TakesTheConnectionFromAnotherAndAFileThatIsNoneClosesIt) {
    test::TestLibrary other;
    other.addFolder(0, u"in the other"_s);
    other.addFile(u"notes.txt"_s, "not a library");
    other.addFile(u"empty.vdb"_s, {});
    const QString folder = other.folder().chopped(1).replace(u'/', u'\\');
    for (const QString& name : {u"missing.vdb"_s, u"notes.txt"_s, u"empty.vdb"_s, u""_s}) {
        ASSERT_TRUE(ConnectLibrary(folder, other.fileName(), connection, {}));
        EXPECT_EQ(listed(funcs.GetNodeInfo(rs, connection)), u"in the other"_s);
        CloseRecordset(rs);
        EXPECT_FALSE(rs.isOpen());
        EXPECT_FALSE(ConnectLibrary(folder, name, connection, {})) << qPrintable(name);
        EXPECT_FALSE(connection.isOpen());
    }
    EXPECT_FALSE(ConnectLibrary(folder, other.fileName(), connection, u"secret"_s));
    EXPECT_FALSE(QFile::exists(other.pathOf(u"missing.vdb"_s)));
}

TEST(Paths, AreWrittenWithThePlatformsSeparators) {
    const auto native = [](const QString& path) { return QDir::toNativeSeparators(path); };
    EXPECT_EQ(normalisedPath(u"a\\b/c"_s), native(u"a/b/c"_s));
    EXPECT_EQ(normalisedFolder(u"a\\b/c"_s), native(u"a/b/c/"_s));
    EXPECT_EQ(normalisedFolder(u"a\\\\"_s), native(u"a/"_s));
    EXPECT_EQ(normalisedFolder(u"/"_s), native(u"/"_s));
    EXPECT_EQ(normalisedFolder(u""_s), u""_s);
    QString folder;
    QString fileName;
    SplitFilePath(u"/libraries\\steel/beams.vdb"_s, folder, fileName);
    EXPECT_EQ(folder + u'|' + fileName, native(u"/libraries/steel/"_s) + u"|beams.vdb"_s);
}

TEST_F(LibraryFile, IsRefusedWhenItWouldLoseOrInventRows) {
    test::requireSqlite();
    enum Answer { Library, Openable, Refused };
    const std::tuple<Answer, const char*> cases[] = {
        {Library, "Drop Table Property; Drop Table FilterCond; Drop Table TableInfo"},
        {Refused, "Create Trigger T After Update On TableInfo Begin Delete From Formula; End"},
        {Library,
         "Drop Table RecentVar; Create Table RecentVar (VarName, FormulaID, Value Blob, "
         "VarSourceType Real, VarMemo Varchar(9), Extra Unique On Conflict Abort)"},
        {Openable, "Drop Table Formula"},
        {Openable, "Drop Table RecentVar"},
        {Openable, "Drop Table Tree"},
        {Openable, "Alter Table Formula Drop Memo"},
        {Refused,
         "Drop Table Tree; Create View Tree As With Recursive N (ID) As (Select 1 Union All "
         "Select ID + 1 From N) Select ID, 'a' Name, 0 PID, ID OrderID From N"},
        {Refused, "Drop Table Tree; Create Virtual Table Tree Using fts5(ID, Name, PID, OrderID)"},
        {Refused, "Alter Table Tree Add Computed As (zeroblob(1000000000))"},
        {Refused, "Alter Table FilterCond Add C Check (C < 3)"},
        {Refused, "Create Index I On Formula (length(Name))"},
        {Refused, "Create Index I On TableInfo (PrptyVal) Where PrptyVal Like '%a%'"},
        {Refused,
         "Drop Table TableInfo; Create Table TableInfo (PrptyName, PrptyVal "
         "Default (randomblob(1000000000)))"},
        {Refused,
         "Drop Table TableInfo; Create Table TableInfo (PrptyName Primary Key, PrptyVal) "
         "Without Rowid"},
        {Refused, "Drop Table FilterExpressions; Create View FilterExpressions As Select 1"},
        {Library,
         "Alter Table Tree Add [check] Text Default 'check (1)' /* check */; "
         "Create View V As Select * From Tree; Create Table Other (A Check (A > 1))"},
        {Refused, "Create Trigger T After Update On tree Begin Delete From Formula; End"},
        {Refused, "Create Trigger T Before Insert On Property Begin Select Raise(Ignore); End"},
        {Refused, "Drop Table Tree; Create Table Tree (ID Integer, Name Text, PID, OrderID)"},
        {Refused,
         "Drop Table Tree; Create Table Tree (ID Integer Primary Key, Name, PID, OrderID)"},
        {Refused, "Alter Table Formula Rename ID To Number; Alter Table Formula Add ID Integer"},
        {Refused, "Alter Table RecentVar Rename To T; Create View RecentVar As Select * From T"},
        {Refused,
         "Drop Table RecentVar; Create Table RecentVar (VarName Memo, FormulaID, Value, "
         "VarSourceType, VarMemo)"},
        {Refused, "Drop Table Property; Create Table Property (PropID Text, PropName)"},
        {Refused,
         "Drop Table Property; Create Table Property (PropID, PropName, FilterID, NodeID,"
         "NodeType, Unique (NodeID) on /* a */ conflict -- b\n Replace)"},
    };
    for (const auto& [answer, change] : cases) {
        SCOPED_TRACE(change);
        test::TestLibrary changed;
        data::Connection& conn = changed.connection();
        conn.close();
        run(changed.path(), change);
        conn.open(changed.path());
        EXPECT_EQ(funcs.CheckNewDB(conn), answer == Library);
        EXPECT_EQ(ConnectLibrary(changed.folder(), changed.fileName(), conn, {}),
                  answer != Refused);
        EXPECT_EQ(conn.isOpen(), answer != Refused);
    }
}

TEST(Template, GivesItsVersionAndLeavesAMissingItemAlone) {
    test::TestLibrary library{QLatin1StringView(kTemplateFileName)};
    const auto version = [&](const QString& folder) {
        QString value = u"untouched"_s;
        QString error;
        bool ok = false;
        ReadTemplateInfo(folder, u"DBVersion"_s, value, error, ok);
        return (ok ? u"read "_s : u"failed "_s) + value + error;
    };
    EXPECT_EQ(version(library.folder()), u"read 2.0"_s);
    library.connection().execute(u"Update TableInfo Set PrptyVal = NULL"_s);
    EXPECT_EQ(version(library.folder()), u"read "_s);
    library.connection().execute(u"Delete From TableInfo"_s);
    EXPECT_EQ(version(library.folder()), u"read untouched"_s);
    test::requireSqlite();
    library.connection().execute(u"Drop Table TableInfo"_s);
    for (const QString& folder : {library.folder(), library.pathOf(u"missing"_s)}) {
        EXPECT_EQ(version(folder),
                  u"failed untouched打开模板数据库失败，无法读取模板数据库信息！"_s);
    }
}

}  // namespace
}  // namespace varo
