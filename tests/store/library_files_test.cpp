#include "library_test.h"
#include "store/library_connection.h"
#include "store/template.h"

#include <QDir>

namespace varo {
namespace {

using LibraryFile = LibraryTest;

TEST_F(LibraryFile, TakesTheConnectionFromAnother) {
    test::TestLibrary other;
    other.addFolder(0, u"in the other"_s);
    const QString folder = other.folder().chopped(1).replace(u'/', u'\\');
    ASSERT_TRUE(ConnectLibrary(folder, other.fileName(), connection, {}));
    ASSERT_TRUE(funcs.GetNodeInfo(rs, connection));
    EXPECT_EQ(listed(), u"in the other"_s);
    CloseRecordset(rs);
    EXPECT_FALSE(rs.isOpen());
}

TEST_F(LibraryFile, ThatIsNoneClosesTheConnection) {
    library.addFile(u"notes.txt"_s, "not a library");
    library.addFile(u"empty.vdb"_s, {});
    for (const QString& name : {u"missing.vdb"_s, u"notes.txt"_s, u"empty.vdb"_s, u""_s}) {
        ASSERT_TRUE(ConnectLibrary(library.folder(), library.fileName(), connection, {}));
        EXPECT_FALSE(ConnectLibrary(library.folder(), name, connection, {})) << qPrintable(name);
        EXPECT_FALSE(connection.isOpen());
    }
    EXPECT_FALSE(ConnectLibrary(library.folder(), library.fileName(), connection, u"secret"_s));
    EXPECT_FALSE(QFile::exists(library.pathOf(u"missing.vdb"_s)));
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

TEST_F(LibraryFile, IsALibraryWhileItHasTheNeededTablesAndColumns) {
    for (const QString& table : {u"Property"_s, u"FilterCond"_s, u"TableInfo"_s}) {
        connection.execute(u"Drop Table "_s + table);
        EXPECT_TRUE(funcs.CheckNewDB(connection));
    }
    for (const char* damage : {"Drop Table Formula", "Drop Table RecentVar", "Drop Table Tree",
                               "Alter Table Formula Drop Memo"}) {
        test::TestLibrary damaged;
        damaged.connection().execute(QLatin1StringView(damage));
        EXPECT_FALSE(damaged.funcs().CheckNewDB(damaged.connection())) << damage;
    }
}

TEST_F(LibraryFile, IsNeverReplacedByANewOne) {
    const QByteArray before = test::fileContent(library.path());
    EXPECT_THROW(createEmptyLibrary(library.path()), data::Error);
    EXPECT_EQ(test::fileContent(library.path()), before);
    EXPECT_THROW(createEmptyLibrary(library.pathOf(u"no/folder/new.vdb"_s)), data::Error);
    EXPECT_EQ(QDir(library.folder()).entryList(QDir::Files), QStringList{library.fileName()});
}

TEST(Template, GivesItsVersionAndLeavesAMissingItemAlone) {
    test::TestLibrary library{QLatin1StringView(TemplateFileName)};
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
    library.connection().execute(u"Drop Table TableInfo"_s);
    for (const QString& folder : {library.folder(), library.pathOf(u"missing"_s)}) {
        EXPECT_EQ(version(folder),
                  u"failed untouched打开模板数据库失败，无法读取模板数据库信息！"_s);
    }
}

}  // namespace
}  // namespace varo
