#include "library/data_table.h"

#include "library/data_files.h"
#include "platform/data/create_database.h"
#include "support/test_library.h"

#include <QDir>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A file of data tables in a folder of its own, opened.
class DataTableTest : public testing::Test {
  protected:
    void make(const QString& script) {
        connection.close();
        QFile::remove(path);
        data::createDatabase(path, script);
        connection.open(path);
    }

    /// The rows that are listed, their fields joined by "|", all joined by blanks.
    QString listed() {
        QStringList rows;
        for (int row = 0; row < table.rowCount(); ++row) {
            QStringList fields;
            for (int column = 0; column < table.columnCount(); ++column) {
                fields.append(table.cell(row, column).text);
            }
            rows.append(fields.join(u'|'));
        }
        return rows.join(u' ');
    }

    /// The table t with columns a and b, with and without numbers of its rows.
    static QString tableOf(const QString& rows, bool isNumbered) {
        return u"Create Table t (a, b, Primary Key (a, b)) %1; Insert Into t Values %2"_s.arg(
            isNumbered ? QString() : u"Without Rowid"_s, rows);
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(u"表.mdb"_s);
    data::Connection connection;
    DataTable table;
};

TEST_F(DataTableTest, ShowsNumbersTextsAndGuidsExactlyAndLeavesOtherValuesEmpty) {
    make(
        u"Create Table [Select \"钢\"] ([a b] Double, c Money, d Decimal(9), e Text, f Guid, g "
        u"DateTime,"
        "h Boolean, i Blob, [k\"] Integer, l);"
        "Insert Into [Select \"钢\"] Values (0.1 + 0.2, 19.99, 1e300, '钢', '{1}', 45000.5, 1, "
        "x'41',"
        "9007199254740993, x'42'), (Null, 2, 'n/a', 7, Null, 'now', 'yes', 'text', 1.5, '%');"_s);
    ASSERT_TRUE(table.open(connection, u"select \"钢\""_s));
    EXPECT_EQ(listed(),
              u"0.30000000000000004|19.99|1e+300|钢|{1}||||9007199254740993| "
              "|2|n/a|7|||||1.5|%"_s);
    QString shown;
    QString numbers;
    for (int column = 0; column < table.columnCount(); ++column) {
        shown += table.isShown(column) ? u'+' : u'-';
        numbers += table.cell(0, column).isNumber ? u'+' : u'-';
    }
    EXPECT_EQ(shown, u"+++++---++"_s);
    EXPECT_EQ(numbers, u"+++-----+-"_s);
    EXPECT_EQ(table.columnName(8), u"k\""_s);
}

TEST_F(DataTableTest, IsFilteredOverAllShownColumnsAndSortedByOne) {
    const struct {
        QString filter;
        int column;
        bool descending;
        QString rows;
    } cases[] = {
        {{}, -1, false, u"b|2 a|10 B|2 100%|0.5 a_b|2"_s},
        {{}, 0, false, u"100%|0.5 a|10 a_b|2 b|2 B|2"_s},
        {{}, 0, true, u"b|2 B|2 a_b|2 a|10 100%|0.5"_s},
        {{}, 1, false, u"100%|0.5 b|2 B|2 a_b|2 a|10"_s},
        {{}, 1, true, u"a|10 b|2 B|2 a_b|2 100%|0.5"_s},
        {u"B"_s, -1, false, u"b|2 B|2 a_b|2"_s},
        {u"10"_s, 0, false, u"100%|0.5 a|10"_s},
        {u"%"_s, -1, false, u"100%|0.5"_s},
        {u"_"_s, -1, false, u"a_b|2"_s},
        {u"\\"_s, -1, false, {}},
        {u".0"_s, -1, false, {}},
        {u"' Or 1"_s, -1, false, {}},
    };
    make(
        u"Create Table t (a Text, b Double, c Date); Insert Into t Values "
        "('b', 2, 'B'), ('a', 10, '%'), ('B', 2, '_'), ('100%', 0.5, Null), ('a_b', 2, Null)"_s);
    ASSERT_TRUE(table.open(connection, u"t"_s));
    for (const auto& each : cases) {
        EXPECT_TRUE(table.list({each.filter, each.column, each.descending}));
        QStringList rows;
        for (int row = 0; row < table.rowCount(); ++row) {
            rows.append(table.cell(row, 0).text + u'|' + table.cell(row, 1).text);
        }
        EXPECT_EQ(rows.join(u' '), each.rows) << each.filter.toStdString() << each.column;
    }
    EXPECT_FALSE(table.list({QString(QChar::Null), -1, false})) << "no file can hold that text";
    EXPECT_EQ(table.rowCount(), 0);
}

TEST_F(DataTableTest, EveryRowOfALongTableIsListedOnceInOrder) {
    for (const bool isNumbered : {true, false}) {
        make(
            tableOf(u"(0, 0); With Recursive n(i) As (Select 1 Union All Select i + 1 From n "
                    "Where i < 2499) Insert Into t Select i, i % 3 From n"_s,
                    isNumbered));
        ASSERT_TRUE(table.open(connection, u"t"_s));
        EXPECT_EQ(table.hasMore(), isNumbered);
        EXPECT_EQ(table.rowCount(), isNumbered ? 1000 : 2500);
        while (table.hasMore()) {
            ASSERT_TRUE(table.loadMore());
        }
        ASSERT_EQ(table.rowCount(), 2500);
        // Back and forth, so that what has been read is read again.
        for (const int row : {0, 2499, 63, 64, 1279, 2000, 1, 128, 640, 2498}) {
            EXPECT_EQ(table.cell(row, 0).text, QString::number(row));
        }
        ASSERT_TRUE(table.list({{}, 1, true}));
        ASSERT_EQ(table.rowCount(), 2500);
        int before = 2;
        for (int row = 0; row < 2500; ++row) {
            const int a = table.cell(row, 0).text.toInt();
            ASSERT_TRUE(row == 0 || row == 833 || row == 1666 || a == before + 3) << row;
            before = a;
        }
        EXPECT_EQ(table.numberOf(0).has_value(), isNumbered);
    }
}

TEST_F(DataTableTest, AValueIsFoundWhereItIsFirst) {
    make(
        u"Create Table t (a Text, b Double, c Date); Insert Into t Values "
        "('2', 1, '7'), ('x', 206, '3'), ('y', 206, '206')"_s);
    ASSERT_TRUE(table.open(connection, u"t"_s));
    const std::tuple<QString, int, int> cases[] = {
        {u"206"_s, 1, 1}, {u"2"_s, 0, 0}, {u"y"_s, 2, 0}, {u"7"_s, -1, -1}, {u""_s, -1, -1}};
    for (const auto& [value, row, column] : cases) {
        const auto found = table.find(value);
        EXPECT_EQ(found ? found->row : -1, row) << value.toStdString();
        EXPECT_EQ(found ? found->column : -1, column);
    }
    connection.execute(u"Delete From t Where a = 'x'"_s);
    EXPECT_EQ(table.rowWithNumber(*table.numberOf(2)), 2) << "of the listing";
    EXPECT_EQ(table.rowWithNumber(9), std::nullopt);
}

TEST_F(DataTableTest, LocksNothingAndFollowsTheFileAsItIsRead) {
    make(tableOf(u"(1, 'a'), (2, 'b')"_s, true));
    ASSERT_TRUE(table.open(connection, u"t"_s));
    data::Connection other;
    other.open(path);
    other.execute(u"Update t Set b = 'c' Where a = 1"_s);
    other.execute(u"Delete From t Where a = 2"_s);
    EXPECT_EQ(listed(), u"1|c |"_s);
    EXPECT_TRUE(table.list({}));
    other.execute(u"Alter Table t Rename To gone"_s);
    EXPECT_EQ(listed(), u"|"_s);
    EXPECT_TRUE(table.hasFailed());
    other.execute(u"Alter Table gone Rename To t"_s);
    EXPECT_EQ(listed(), u"|"_s) << "not tried again";
    EXPECT_TRUE(table.list({}));
    EXPECT_EQ(listed(), u"1|c"_s);
    other.execute(u"Drop Table t"_s);
    EXPECT_EQ(listed(), u"1|c"_s) << "what has been read stays";
    EXPECT_FALSE(table.list({}));
    EXPECT_EQ(table.rowCount(), 0);
    EXPECT_FALSE(table.open(connection, u"t"_s));
    EXPECT_EQ(table.columnCount(), 0);
}

TEST(DataFiles, AreThoseOfTheFolderThatCanBeNamed) {
    TestLibrary library(u"库.mdb"_s);
    for (const char* name : {"b.MDB", "A.accdb", "c.db", "x->y.mdb", "notes.txt"}) {
        library.addFile(QString::fromUtf8(name), "x");
    }
    ASSERT_TRUE(QDir(library.folder()).mkdir(u"d.mdb"_s));
    EXPECT_EQ(dataFiles(library.folder()).join(u' '), u"A.accdb b.MDB 库.mdb"_s);
    EXPECT_EQ(dataFiles(library.pathOf(u"missing"_s)), QStringList());

    data::Connection connection;
    EXPECT_TRUE(openDataFile(library.folder().chopped(1), u"库.mdb"_s, connection));
    const QString file = library.fileName();
    const QString folder = QDir(library.folder()).dirName();
    for (const QString& refused :
         {u""_s, u"."_s, u".."_s, library.path(), u"./"_s + file, u"../%1/%2"_s.arg(folder, file),
          u"..\\%1\\%2"_s.arg(folder, file), u"c.db"_s, u"missing.mdb"_s, u"b.MDB"_s, u"d.mdb"_s,
          u"notes.txt"_s}) {
        EXPECT_FALSE(openDataFile(library.folder(), refused, connection)) << refused.toStdString();
        EXPECT_EQ(connection.path(), library.path());
    }
}

TEST(DataFiles, AParameterNamesAFileAndATable) {
    const std::tuple<QString, QString, QString> cases[] = {
        {u"a.mdb->b->c"_s, u"a.mdb"_s, u"b->c"_s},
        {u"a.mdb->"_s, u"a.mdb"_s, {}},
        {u"->t"_s, {}, u"t"_s}};
    for (const auto& [parameter, file, table] : cases) {
        EXPECT_EQ(dataTableOf(parameter), (DataTableName{file, table}));
        EXPECT_EQ(parameterOf({file, table}), parameter);
    }
    EXPECT_EQ(dataTableOf(u"a.mdb"_s), (DataTableName{u"a.mdb"_s, {}}));
}

}  // namespace
}  // namespace varo::test
