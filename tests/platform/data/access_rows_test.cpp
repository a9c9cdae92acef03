// Random rows written, changed and removed, compared with a model and with what the pages hold.

#include "platform/data/access/catalog.h"
#include "platform/data/access/page_check.h"
#include "platform/data/access_row_editor.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace varo::access {
namespace {

using namespace Qt::StringLiterals;

Column column(const QString& name, FieldType type, int number, int place, int size = 0) {
    Column column;
    column.name = name;
    column.type = type;
    column.number = number;
    column.isFixed = size == 0 && type != FieldType::Memo && type != FieldType::Ole;
    column.fixed = column.isFixed ? place : 0;
    column.variable = place;
    column.size = size;
    column.isCompressed = type == FieldType::Text || type == FieldType::Memo;
    column.precision = 18;
    column.scale = 4;
    return column;
}

/// A file with nothing but the maps of the pages and the counts of a table.
class AccessRows : public testing::Test {
  protected:
    static constexpr PageNumber kMaps = 1;
    static constexpr PageNumber kDefinition = 2;

    AccessRows() {
        const Header header{Version::Jet4, 1252, 0x409, 0, false, false};
        const int size = header.layout().pageSize;
        QByteArray bytes(size * 3, '\0');
        RowPage::clear(header.layout(), bytes.data() + size, 0);
        RowPage maps(header.layout(), bytes.data() + size);
        constexpr int kMapBytes = 69;
        for (int map = 0; map < 7; ++map) {
            maps.add(Bytes(QByteArray(kMapBytes, '\0')), RowPage::Kind::Row);
        }
        bytes[size * 2] = static_cast<char>(PageKind::Table);
        QFile written(path());
        EXPECT_TRUE(written.open(QFile::WriteOnly) && written.write(bytes) == bytes.size());
        written.close();
        file = std::make_unique<PageFile>(path(), header, data::Access::Write);

        table.page = kDefinition;
        table.columns = {
            column(u"ID"_s, FieldType::Long, 0, 0),
            column(u"Name"_s, FieldType::Text, 1, 0, 100),
            column(u"Memo"_s, FieldType::Memo, 2, 1),
            column(u"Pic"_s, FieldType::Ole, 4, 3),  // one was deleted before it
            column(u"Yes"_s, FieldType::YesNo, 5, 0),
            column(u"Amount"_s, FieldType::Money, 6, 4),
            column(u"Date"_s, FieldType::Date, 7, 12),
            column(u"Decimal"_s, FieldType::Decimal, 8, 20),
            column(u"Single"_s, FieldType::Single, 9, 37),
            column(u"Guid"_s, FieldType::Guid, 10, 41),
            column(u"Binary"_s, FieldType::Binary, 11, 4, 40),
            column(u"Big"_s, FieldType::BigInteger, 12, 57),
        };
        table.columns.front().isAutoNumber = true;
        table.variableColumns = 5;
        table.columnNumbers = 13;
        table.ownedPages = {kMaps, 1};
        table.pagesWithRoom = {kMaps, 2};
        table.longValuePages = {{2, {kMaps, 3}, {kMaps, 4}}, {4, {kMaps, 5}, {kMaps, 6}}};
        for (const int number : {0, 1, 5}) {
            Index index;
            index.names = {u"I%1"_s.arg(number)};
            index.columns = {{number, false}, {9, true}};
            index.root = static_cast<PageNumber>(100 + number);
            table.indexes.push_back(index);
        }
        rules.columns.resize(table.columns.size());
    }

    QString path() const { return directory.filePath(u"rows.mdb"_s); }

    QTemporaryDir directory;
    std::unique_ptr<PageFile> file;
    TableDefinition table;
    TableRules rules;
};

TEST_F(AccessRows, AreWhatWasWrittenAfterEveryTransaction) {
    Editor(*file, table, 1).run(40, 60);
}

TEST_F(AccessRows, OfTwoColumnsFillPagesUpToTheirLastNumberAndMoreMapPages) {
    table.columns = {table.columns[0], table.columns[4]};
    table.columnNumbers = 6;
    table.variableColumns = 0;
    table.longValuePages.clear();
    table.indexes.clear();
    Editor(*file, table, 2).run(12, 900);
}

TEST_F(AccessRows, ReuseTheRoomOfThoseThatWereRemoved) {
    CountingIndexes indexes(*file, table);
    TableWriter writer(*file, table, rules, indexes);
    std::vector<FieldChange> fields(table.columns.size());
    fields[2] = Value(Text{QByteArray(3000, 'm')});
    fields[3] = Value(QByteArray(20000, 'p'));
    file->begin();
    quint32 pages = 0;
    for (int round = 0; round < 50; ++round) {
        std::vector<RowPlace> places;
        for (int i = 0; i < 30; ++i) {
            places.push_back(writer.insert(fields));
        }
        pages = round == 1 ? file->pageCount() : pages;
        for (const RowPlace place : places) {
            fields[3] = Value(QByteArray(25000, 'q'));
            writer.update(place, fields);
            writer.remove(place);
        }
    }
    EXPECT_LE(file->pageCount(), pages + 20);
    EXPECT_EQ(Bytes(*file->page(kDefinition)).u32(file->layout().autoNumber), 50u * 30);
    file->commit();
}

TEST_F(AccessRows, FindAnEmptyPageAmongManyWithLittleRoom) {
    RowPages pages(*file, kDefinition, table.ownedPages, table.pagesWithRoom);
    const QByteArray large(3500, 'r');
    file->begin();
    std::vector<RowPlace> places;
    for (int i = 0; i < 40; ++i) {
        places.push_back(pages.add(Bytes(large)));
    }
    for (const std::size_t removed : {20u, 0u}) {
        pages.remove(places[removed]);
        bool isUsed = false;
        for (int i = 0; i < 10; ++i) {
            isUsed = pages.add(Bytes(large)).page == places[removed].page || isUsed;
        }
        EXPECT_TRUE(isUsed) << removed;
    }
}

TEST_F(AccessRows, LeaveNothingOnThePagesFromWhichTheyMoved) {
    table.columns[10].size = 4000;
    table.indexes.clear();
    CountingIndexes indexes(*file, table);
    TableWriter writer(*file, table, rules, indexes);
    const auto ofSize = [&](int size) {
        std::vector<FieldChange> fields(table.columns.size());
        fields[10] = Value(QByteArray(size, 'b'));
        return fields;
    };
    const auto pagesAndRows = [&] {
        int rows = 0;
        const auto pages = markedPages(*file, table.ownedPages);
        for (const PageNumber each : pages) {
            const Page page = file->page(each);
            for (int row = 0; row < rowCount(file->layout(), Bytes(*page)); ++row) {
                const RowEntry entry = rowEntry(file->layout(), Bytes(*page), row);
                rows += entry.isDeleted && entry.hasMoved ? 0 : 1;
            }
        }
        return std::pair(pages.size(), rows);
    };
    file->begin();
    const RowPlace place = writer.insert(ofSize(10));
    writer.insert(ofSize(3500));
    writer.update(place, ofSize(1000));
    writer.insert(ofSize(2700));  // behind the row that moved
    ASSERT_EQ(pagesAndRows(), std::pair(std::size_t{2}, 4));
    writer.update(place, ofSize(2000));
    EXPECT_EQ(pagesAndRows(), std::pair(std::size_t{3}, 4));
    EXPECT_EQ(readAll(*file, table).size(), 3u);
    writer.update(place, ofSize(3900));
    writer.remove(place);
    EXPECT_EQ(pagesAndRows(), std::pair(std::size_t{3}, 2));
}

TEST_F(AccessRows, KeepLongValuesWhereTheyAreWhenOtherFieldsChange) {
    CountingIndexes indexes(*file, table);
    TableWriter writer(*file, table, rules, indexes);
    std::vector<FieldChange> fields(table.columns.size());
    fields[3] = Value(QByteArray(20000, 'p'));
    file->begin();
    const RowPlace place = writer.insert(fields);
    // What is on the pages of the value is not looked at.
    for (const PageNumber page : markedPages(*file, {kMaps, 5})) {
        file->change(page)[0] = static_cast<char>(PageKind::IndexLeaf);
    }
    fields[3] = Kept();
    fields[1] = Value(Text{"renamed"});
    writer.update(place, fields);
    const Row row(file->layout(), table, findRow(*file, place)->page, findRow(*file, place)->bytes);
    EXPECT_EQ(longValueSize(*row.field(table.columns[3])), 20000);
    EXPECT_THROW(writer.remove(place), data::Error);
    EXPECT_EQ(std::get<Text>(fieldValue(*file, row, table.columns[1])).utf8, "renamed");
    EXPECT_TRUE(findRow(*file, place).has_value());
}

TEST_F(AccessRows, AreRefusedWhenARuleOrTheTypeForbidsThem) {
    CountingIndexes indexes(*file, table);
    rules.columns[1] = {true, false};
    table.indexes[2].isRequired = true;  // of a column of yes and no, and one that may be NULL
    file->begin();
    TableWriter writer(*file, table, rules, indexes);
    std::vector<FieldChange> good(table.columns.size());
    good[1] = Value(Text{"n"});
    good[8] = Value(0.5);
    const RowPlace place = writer.insert(good);
    const std::pair<std::size_t, FieldChange> kCases[] = {
        {1, Value()}, {1, Value(Text{""})},  {1, Value(Text{QByteArray(51, 'x')})},
        {8, Value()}, {0, Value(Text{"x"})}, {1, LongField{QByteArray(12, '\0')}},
    };
    for (const auto& [at, change] : kCases) {
        auto fields = good;
        fields[at] = change;
        EXPECT_THROW(writer.insert(fields), data::Error) << at;
        EXPECT_THROW(writer.update(place, fields), data::Error) << at;
    }
    EXPECT_EQ(readAll(*file, table).size(), 1u);

    good[0] = Value(qint64{std::numeric_limits<qint32>::max()});
    writer.insert(good);
    good[0] = Kept();
    EXPECT_THROW(writer.insert(good), data::Error);
    EXPECT_EQ(readAll(*file, table).size(), 2u);

    table.columns[5].isComputed = true;
    EXPECT_THROW(writer.update(place, std::vector<FieldChange>(table.columns.size())), data::Error);
    rules.refusal = u"no"_s;
    EXPECT_THROW(TableWriter(*file, table, rules, indexes), data::Error);
}

/// Tables of files that other programs have written.
class AccessRowsOfFiles : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        const QString folder = qEnvironmentVariable("VARO_ACCESS_FILES");
        if (folder.isEmpty()) {
            GTEST_SKIP() << "VARO_ACCESS_FILES names no folder";
        }
        path = directory.filePath(QString::fromLatin1(GetParam()));
        ASSERT_TRUE(QFile::copy(QDir(folder).filePath(QString::fromLatin1(GetParam())), path));
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
        QFile start(path);
        ASSERT_TRUE(start.open(QFile::ReadOnly));
        file = std::make_unique<PageFile>(path, *readHeader(start.read(kHeaderLength)),
                                          data::Access::Write);
    }

    QTemporaryDir directory;
    QString path;
    std::unique_ptr<PageFile> file;
};

TEST_P(AccessRowsOfFiles, AreWhatAnotherReaderFinds) {
    unsigned seed = 3;
    for (const CatalogEntry& entry : userTables(*file)) {
        const TableDefinition table = readTable(*file, entry.page);
        ASSERT_EQ(readTableRules(*file, table).refusal, QString());
        Editor editor(*file, table, ++seed);
        editor.run(8, 60);
        expectExported(path, entry.name, table, editor.model());
    }
    EXPECT_EQ(checkPages(*file), QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Files, AccessRowsOfFiles,
    testing::Values("indexed.mdb", "indexed.accdb", "types.mdb", "types.accdb", "materials.mdb",
                    "mechanics.mdb", "memo-columns.mdb"),
    [](const auto& file) {
        return QString::fromLatin1(file.param).remove(u'.').remove(u'-').toStdString();
    });

}  // namespace
}  // namespace varo::access
