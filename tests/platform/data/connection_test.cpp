#include "platform/data/connection.h"

#include "platform/data/create_database.h"
#include "platform/data/item_database.h"
#include "support/process.h"
#include "support/test_library.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

QStringList filesIn(const QTemporaryDir& directory) {
    return QDir(directory.path()).entryList(QDir::Files | QDir::Hidden);
}

TEST(Connection, IsClosedWithItsRecordsByMovingFromItAndByOpeningWhatCannotBeOpened) {
    ItemDatabase items;
    ItemDatabase others;
    Connection& connection = items.connection;
    others.add(u"other"_s);
    Recordset rows = others.connection.query(u"Select Name From Item"_s);
    others.connection.close();
    EXPECT_FALSE(rows.isOpen());
    EXPECT_TRUE(rows.atEnd());
    EXPECT_THROW(rows.moveNext(), Error);
    EXPECT_THROW(rows.column(u"Name"), Error);
    EXPECT_THROW(Recordset().text(0), Error);
    connection.open(others.path());
    Connection moved = std::move(connection);
    connection = std::move(moved);
    EXPECT_EQ(items.names(), QStringList{u"other"_s});
    for (const QString& path : {items.path() + u'2', items.directory.path(), QString()}) {
        connection.open(items.path());
        EXPECT_THROW(connection.open(path), Error);
        EXPECT_FALSE(connection.isOpen());
        EXPECT_EQ(connection.path(), QString());
    }
    EXPECT_THROW(connection.query(u"Select 1"_s), Error);
    EXPECT_THROW(connection.execute(u"Delete From Item"_s), Error);
    EXPECT_THROW(connection.lastInsertedId(), Error);
    EXPECT_THROW(connection.structure(u"Item"_s), Error);
    EXPECT_THROW(Transaction{connection}, Error);
    EXPECT_EQ(filesIn(items.directory), QStringList{u"items.db"_s});
}

TEST(Connection, EndsAStatementThatIsNoLongerWanted) {
    ItemDatabase items;
    const auto kEndless =
        u"With Recursive N (I) As (Select 1 Union All Select I + 1 From N) Select max(I) From N"_s;
    int asked = 0;
    items.connection.setInterrupt([&] { return ++asked < 3; });
    try {
        items.connection.query(kEndless);
        FAIL() << "the statement has ended by itself";
    } catch (const Error& error) {
        EXPECT_TRUE(error.isInterrupted());
        EXPECT_FALSE(error.isLocked());
    }
    EXPECT_EQ(asked, 3);
    items.connection.setInterrupt({});
    items.add(u"stored afterwards"_s);
    EXPECT_EQ(items.names(), QStringList{u"stored afterwards"_s});
}

TEST(Connection, TakesOddFileNames) {
    const QTemporaryDir directory;
    for (const QString& name : {u"公式库 %20 ?mode=memory#.db"_s, u"it's; -- a \"name\".db"_s,
                                u":memory:"_s, u"file:x.db"_s, u"😀.db"_s}) {
        const QString path = directory.path() + u'/' + name;
        createDatabase(path, u"Create Table T (A); Insert Into T Values (7);"_s);
        ASSERT_TRUE(QFile::exists(path)) << qPrintable(name);
        Connection connection;
        connection.open(path);
        EXPECT_EQ(connection.query(u"Select A From T"_s).integer(0), 7);
    }
}

TEST(Connection, StoresAndFindsTextsAsTheyAreTypedOrRefusesThem) {
    const QStringList texts =
        u"|it's|say \"hello\"|100 % _ \\ [a] * ?|'; Drop Table Item; --|two\nlines\r\nand\ttabs|"
        "公式 ΔΣ 😀𝛼|\xFEFF|\xFEFF\xFEFFx\xFEFF"_s.split(u'|') +
        QStringList{QString(256, u'y'), QString(100000, u'长')};
    ItemDatabase items;
    for (const QString& text : texts) {
        const qint32 id = items.add(text);
        const Recordset found =
            items.connection.query(u"Select ID,Name From Item Where Name = ?"_s, {text});
        ASSERT_FALSE(found.atEnd()) << qPrintable(text);
        EXPECT_EQ(found.integer(0), id);
        EXPECT_EQ(found.text(1), text);
    }
    for (const QString& text : {u"a\0b"_s, QString(QChar(0xD83D))}) {
        EXPECT_THROW(items.add(text), Error);
    }
    EXPECT_EQ(items.names(), texts);
}

TEST(Connection, RefusesWhatIsNotOneStatementWithItsValues) {
    ItemDatabase items;
    items.add(u"a"_s);
    for (const auto& statement :
         {u""_s, u"Delete From Item; Delete From Item"_s, u"Delete From Item Where ID = ?"_s,
          u"Select \"Nothing\" From Item"_s, u"Select * From Nowhere"_s}) {
        EXPECT_THROW(items.connection.execute(statement), Error) << qPrintable(statement);
    }
    EXPECT_THROW(items.connection.execute(u"Delete From Item"_s, {1}), Error);
    EXPECT_EQ(items.connection.execute(u"Delete From Item Where Name = 'A'"_s), 1);
    EXPECT_EQ(items.connection.execute(u"Delete From Item"_s), 0);
}

TEST(Connection, RunsAStatementAgainAfterItFailedAndAfterTheTableHasChanged) {
    ItemDatabase items;
    Connection& connection = items.connection;
    const auto insert = u"Insert Into Item(ID,Name) Values(?,?)"_s;
    connection.execute(insert, {1, u"one"_s});
    EXPECT_THROW(connection.execute(insert, {1, u"again"_s}), Error);
    EXPECT_THROW(connection.execute(insert, {2}), Error);
    connection.execute(insert, {2, u"two"_s});
    connection.execute(u"Alter Table Item Add Column Note Text Default 'n'"_s);
    connection.execute(insert, {3, u"three"_s});
    for (int i = 0; i < 200; ++i) {
        connection.execute(u"Update Item Set Note = '%1' Where ID = 3"_s.arg(i));
    }
    connection.execute(insert, {4, u"four"_s});
    const Recordset rows = connection.query(u"Select group_concat(Name || Note) From Item"_s);
    EXPECT_EQ(rows.text(0), u"onen,twon,three199,fourn"_s);
}

TEST(Connection, ReportsThatIdentifiersHaveRunOut) {
    ItemDatabase items;
    items.connection.execute(u"Insert Into Item(ID) Values(2147483647)"_s);
    EXPECT_EQ(items.connection.lastInsertedId(), 2147483647);
    items.connection.execute(u"Insert Into Item(Name) Values('beyond')"_s);
    EXPECT_THROW(items.connection.lastInsertedId(), Error);
}

/// While it lives, connections that are opened count how long they wait, in microseconds, and let
/// no time pass.
struct CountedWaiting {
    CountedWaiting() {
        files.zName = "counted waiting";
        files.xSleep = [](sqlite3_vfs*, int time) { return waited += time, time; };
        sqlite3_vfs_register(&files, 1);
    }
    ~CountedWaiting() { sqlite3_vfs_unregister(&files); }

    sqlite3_vfs files = *sqlite3_vfs_find(nullptr);
    static inline int waited = 0;
};

TEST(Connection, GivesUpOnALockOfAnotherProgramAfterTwoSeconds) {
    const CountedWaiting waiting;
    ItemDatabase items;
    test::LibraryProcess other({u"lock"_s, items.path()});
    ASSERT_EQ(other.readLine(), u"locked"_s);
    EXPECT_THROW(items.add(u"a"_s), Error);
    EXPECT_THROW(items.names(), Error);
    waiting.waited = 0;
    EXPECT_THROW(items.connection.open(items.path()), Error);
    EXPECT_NEAR(waiting.waited, 2'000'000, 200'000);
    other.kill();
    other.wait();
    items.connection.open(items.path());
    items.add(u"after"_s);
    EXPECT_EQ(items.names(), QStringList{u"after"_s});
}

TEST(CreateDatabase, LeavesWhatIsThereAlreadyAndNothingWhenItFails) {
    const ItemDatabase items;
    const QByteArray before = test::fileContent(items.path());
    EXPECT_THROW(createDatabase(items.path(), u"Create Table T (A);"_s), Error);
    EXPECT_EQ(test::fileContent(items.path()), before);
    EXPECT_THROW(createDatabase(items.directory.filePath(u"new.db"_s),
                                u"Create Table T (A); Insert Into Nowhere Values (1);"_s),
                 Error);
    EXPECT_THROW(createDatabase(items.directory.filePath(u"no/such/folder.db"_s), u"Select 1;"_s),
                 Error);
    EXPECT_EQ(filesIn(items.directory), QStringList{u"items.db"_s});
}

TEST(Connection, ListsTheTablesOfAFileButNeitherViewsNorWhatTheDatabaseKeepsForItself) {
    ItemDatabase items;
    for (const char* statement :
         {"Create View Seen As Select * From Item", "Create Table [钢 \"a\" [b] (v)",
          "Create Table [Select] (v)", "Create Table sqlitex (v)",
          "Create Virtual Table Words Using fts5(v)"}) {
        EXPECT_EQ(runElsewhere(items.path(), statement), SQLITE_OK);
    }
    EXPECT_EQ(items.connection.tables(),
              (QStringList{u"Item"_s, u"钢 \"a\" [b"_s, u"Select"_s, u"sqlitex"_s}));
    EXPECT_EQ(items.connection.structure(u"钢 \"a\" [b"_s)->columns.size(), 1);
}

TEST(Connection, TellsTheTypeOfAColumnByItsDeclaration) {
    const std::pair<ColumnType, const char*> cases[] = {
        {ColumnType::Any, ",Hyperlink"},
        {ColumnType::Integer, "Integer,Counter,Byte,Long"},
        {ColumnType::Floating, "Double Precision,Single,Real,Float(24)"},
        {ColumnType::Money, "Money,Currency"},
        {ColumnType::Decimal, "Decimal(18),Numeric"},
        {ColumnType::Text, "nvarchar(50),Text(255),Long Text,Memo"},
        {ColumnType::Guid, "Guid,UniqueIdentifier"},
        {ColumnType::Date, "DateTime,Timestamp"},
        {ColumnType::YesNo, "Boolean,Bit,YesNo"},
        {ColumnType::Binary, "Blob,LongBinary,OleObject"},
    };
    ItemDatabase items;
    for (const auto& [type, declarations] : cases) {
        for (const QString& declaration : QString::fromLatin1(declarations).split(u',')) {
            items.connection.execute(u"Create Table Typed (c %1)"_s.arg(declaration));
            EXPECT_EQ(items.connection.structure(u"typed"_s)->columns.value(0).type, type)
                << declaration.toStdString();
            items.connection.execute(u"Drop Table Typed"_s);
        }
    }
}

TEST(Connection, SaysWhatIdentifiesTheRowsOfATable) {
    const std::pair<const char*, const char*> cases[] = {
        {"(a)", "rowid"},
        {"(RowID Text)", "_rowid_"},
        {"(rowid, _rowid_)", "oid"},
        {"(rowid, _rowid_, OID)", ""},
        {"(a Primary Key) Without Rowid", ""},
    };
    ItemDatabase items;
    for (const auto& [definition, name] : cases) {
        items.connection.execute(u"Create Table T "_s + QLatin1StringView(definition));
        EXPECT_EQ(items.connection.structure(u"T"_s)->rowNumber, QLatin1StringView(name));
        items.connection.execute(u"Drop Table T"_s);
    }
}

}  // namespace
}  // namespace varo::data
