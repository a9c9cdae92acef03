// Random rows written, changed and removed, compared with a model and with what the pages hold.

#include "platform/data/access/catalog.h"
#include "platform/data/access/long_value.h"
#include "platform/data/access/long_value_format.h"
#include "platform/data/access/stored_value.h"
#include "platform/data/access/table_writer.h"
#include "platform/data/access/text.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace varo::access {
namespace {

using namespace Qt::StringLiterals;

using Values = std::vector<Value>;

/// Equal for equal values of a column only.
QByteArray shown(const Value& value) {
    if (const auto* real = std::get_if<double>(&value)) {
        return QByteArray::number(*real, 'g', 17);
    }
    if (const auto* integer = std::get_if<qint64>(&value)) {
        return QByteArray::number(*integer);
    }
    if (const auto* text = std::get_if<Text>(&value)) {
        return '\'' + text->utf8;
    }
    const auto* bytes = std::get_if<QByteArray>(&value);
    return bytes == nullptr ? QByteArray("NULL") : 'x' + bytes->toHex();
}

QByteArray shown(const Values& values) {
    QByteArray all;
    for (const Value& value : values) {
        all += shown(value) + '|';
    }
    return all;
}

/// Rows by number.
using Model = std::map<qint64, Values>;

Model readAll(PageFile& file, const TableDefinition& table) {
    Model rows;
    RowScan scan(file, table);
    while (const auto found = scan.next()) {
        const Row row(file.layout(), table, found->page, found->bytes);
        Values& values = rows[rowNumber(scan.place())];
        for (const Column& column : table.columns) {
            values.push_back(fieldValue(file, row, column));
        }
    }
    return rows;
}

/// Indexes that are only counted; refuses the insertions that it is told to.
class CountingIndexes : public IndexKeeper {
  public:
    CountingIndexes(PageFile& file, const TableDefinition& table) : file_(file), table_(table) {}

    bool inserted(const Index& index, RowPlace place, const Row& row) override {
        if (isRefusing) {
            throw data::Error(u"refused"_s);
        }
        auto& places = entries[index.root][keyOf(index, row)];
        EXPECT_TRUE(places.insert(rowNumber(place)).second);
        return places.size() == 1;
    }

    bool removed(const Index& index, RowPlace place, const Row& row) override {
        auto& keys = entries[index.root];
        const QByteArray key = keyOf(index, row);
        EXPECT_EQ(keys[key].erase(rowNumber(place)), 1u);
        return keys[key].empty() && keys.erase(key) == 1;
    }

    void addAll() {
        RowScan scan(file_, table_);
        while (const auto found = scan.next()) {
            const Row row(file_.layout(), table_, found->page, found->bytes);
            for (const Index& index : table_.indexes) {
                entries[index.root][keyOf(index, row)].insert(rowNumber(scan.place()));
            }
        }
    }

    std::map<PageNumber, std::map<QByteArray, std::set<qint64>>> entries;
    bool isRefusing = false;

  private:
    QByteArray keyOf(const Index& index, const Row& row) {
        Values values;
        for (const IndexColumn& column : index.columns) {
            values.push_back(fieldValue(file_, row, *table_.columnByNumber(column.column)));
        }
        return shown(values);
    }

    PageFile& file_;
    const TableDefinition& table_;
};

/// Edits a table at random and keeps a model of it.
class Editor {
  public:
    Editor(PageFile& file, const TableDefinition& table, unsigned seed)
        : file_(file),
          table_(table),
          indexes_(file, table),
          random_(seed),
          model_(readAll(file, table)) {
        rules_.columns.resize(table.columns.size());
        indexes_.addAll();
        for (std::size_t i = 0; i < table.indexes.size(); ++i) {
            counts_.push_back(keyCount(i) - distinct(i));
        }
        leaked_ = pieces() - referredPieces();
        rowsMiscounted_ = rowCount() - static_cast<qint64>(model_.size());
    }

    /// Transactions, some of which are undone.
    void run(int transactions, int steps) {
        TableWriter writer(file_, table_, rules_, indexes_);
        for (int i = 0; i < transactions; ++i) {
            const Model before = model_;
            const auto entries = indexes_.entries;
            file_.begin();
            for (int step = 0; step < steps; ++step) {
                edit(writer, i % 4 == 3);
            }
            check();
            if (chance(4)) {
                file_.undo();
                model_ = before;
                indexes_.entries = entries;
                check();
            } else {
                file_.commit();
            }
        }
        check();
    }

    const Model& model() const { return model_; }

  private:
    unsigned upTo(unsigned most) { return static_cast<unsigned>(random_()) % (most + 1); }
    bool chance(unsigned of) { return upTo(of - 1) == 0; }

    QByteArray randomText(const Column& column) {
        const auto most =
            static_cast<unsigned>(column.type == FieldType::Text ? column.size / 2 : 40);
        const bool isHuge = column.type == FieldType::Memo && chance(6);
        const unsigned length = isHuge ? upTo(9000) : upTo(most);
        QString text;
        for (const bool isWide = chance(3); static_cast<unsigned>(text.size()) < length;) {
            text += isWide ? QChar(0x4E00 + upTo(5000)) : QChar(' ' + 1 + upTo(90));
        }
        return text.toUtf8();
    }

    Value randomValue(const Column& column) {
        if (chance(8) && column.type != FieldType::YesNo) {
            return {};
        }
        switch (column.type) {
            case FieldType::YesNo:
                return qint64{upTo(1)};
            case FieldType::Byte:
                return qint64{upTo(255)};
            case FieldType::Integer:
            case FieldType::Long:
                return qint64{upTo(60)} - 30;
            case FieldType::BigInteger:
                return static_cast<qint64>(random_()) << 31;
            case FieldType::Date:
                return Text{"2" + QByteArray::number(100 + upTo(800)) + "-02-" +
                            QByteArray::number(10 + upTo(18)) + " 0" + QByteArray::number(upTo(9)) +
                            ":00:59"};
            case FieldType::Guid:
                return Text{"{00000000-0000-0000-ABCD-" +
                            QByteArray::number(upTo(99)).rightJustified(12, '0') + '}'};
            case FieldType::Text:
            case FieldType::Memo:
                return Text{randomText(column)};
            case FieldType::Binary:
                return QByteArray(upTo(static_cast<unsigned>(column.size)), 'b');
            case FieldType::Ole: {
                constexpr unsigned kLengths[] = {10, 64, 300, 4076, 5000, 30000};
                return QByteArray(upTo(kLengths[upTo(5)]), static_cast<char>(upTo(255)));
            }
            default:
                return (upTo(8000) - 4000.0) / 4;
        }
    }

    /// A long value that was written before the row, in pieces of any length.
    LongField written(const Value& value, const Column& column) {
        const QByteArray bytes = *storedValue(value, column);
        LongValueWriter writer(file_, table_.longValuePagesOf(column), bytes.size());
        for (qsizetype at = 0; at < bytes.size();) {
            const qsizetype count = std::min<qsizetype>(1 + upTo(6000), bytes.size() - at);
            writer.append(Bytes(bytes).part(at, count));
            at += count;
        }
        return writer.finish();
    }

    bool isLong(const Column& column) const {
        return column.type == FieldType::Memo || column.type == FieldType::Ole;
    }

    /// Random fields; `values` becomes what the row then has.
    std::vector<FieldChange> randomChanges(Values& values, unsigned keptOneOf) {
        std::vector<FieldChange> changes;
        for (std::size_t i = 0; i < table_.columns.size(); ++i) {
            const Column& column = table_.columns[i];
            if (column.isAutoNumber || !chance(keptOneOf)) {
                changes.push_back(Kept());
                continue;
            }
            values[i] = randomValue(column);
            const bool isNull = std::holds_alternative<std::monostate>(values[i]);
            if (isLong(column) && !isNull && chance(3)) {
                changes.push_back(written(values[i], column));
            } else {
                changes.push_back(values[i]);
            }
        }
        return changes;
    }

    void insert(TableWriter& writer) {
        Values values(table_.columns.size());
        const auto changes = randomChanges(values, 1);
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (table_.columns[i].isAutoNumber) {
                values[i] =
                    qint64{Bytes(*file_.page(table_.page)).u32(file_.layout().autoNumber)} + 1;
            }
        }
        const RowPlace place = writer.insert(changes);
        ASSERT_TRUE(model_.emplace(rowNumber(place), values).second);
    }

    void edit(TableWriter& writer, bool isRemoving) {
        const int savepoint = file_.setSavepoint();
        const auto entries = indexes_.isRefusing ? indexes_.entries : decltype(indexes_.entries)();
        const auto row = model_.empty() ? model_.end()
                                        : std::next(model_.begin(),
                                                    upTo(static_cast<unsigned>(model_.size()) - 1));
        const unsigned what = upTo(9);
        if (row == model_.end() || what < (isRemoving ? 1 : 5)) {
            insert(writer);
        } else if (what < (isRemoving ? 3 : 8)) {
            Values values = row->second;
            writer.update(rowPlace(row->first), randomChanges(values, 4));
            row->second = values;
        } else {
            writer.remove(rowPlace(row->first));
            model_.erase(row);
        }
        file_.releaseSavepoint(savepoint);
        if (chance(10)) {
            refuseEdit(writer);
        }
    }

    /// An operation that the indexes refuse changes nothing.
    void refuseEdit(TableWriter& writer) {
        const auto entries = indexes_.entries;
        const int savepoint = file_.setSavepoint();
        const qint64 before = rowCount();
        indexes_.isRefusing = true;
        Values values(table_.columns.size());
        if (!table_.indexes.empty()) {
            EXPECT_THROW(writer.insert(randomChanges(values, 1)), data::Error);
        }
        indexes_.isRefusing = false;
        indexes_.entries = entries;
        EXPECT_EQ(rowCount(), before);
        file_.undoTo(savepoint);
        file_.releaseSavepoint(savepoint);
    }

    qint64 count(int at) { return Bytes(*file_.page(table_.page)).u32(at); }
    qint64 rowCount() { return count(file_.layout().tableRowCount); }
    qint64 keyCount(std::size_t index) {
        return count(file_.layout().realIndexes +
                     static_cast<int>(index) * file_.layout().realIndexEntry + 4);
    }
    qint64 distinct(std::size_t index) {
        return static_cast<qint64>(indexes_.entries[table_.indexes[index].root].size());
    }

    /// Rows on the pages of long values of the table.
    qint64 pieces() {
        qint64 number = 0;
        for (const LongValuePages& pages : table_.longValuePages) {
            for (const PageNumber each : markedPages(file_, pages.owned)) {
                const Page page = file_.page(each, PageKind::Data);
                EXPECT_EQ(ownerOf(Bytes(*page)), kLongValueOwner);
                for (int row = 0; row < access::rowCount(file_.layout(), Bytes(*page)); ++row) {
                    number += rowEntry(file_.layout(), Bytes(*page), row).isDeleted ? 0 : 1;
                }
            }
        }
        return number;
    }

    /// Those that the rows refer to.
    qint64 referredPieces() {
        qint64 number = 0;
        RowScan scan(file_, table_);
        while (const auto found = scan.next()) {
            const Row row(file_.layout(), table_, found->page, found->bytes);
            for (const Column& column : table_.columns) {
                const auto field = isLong(column) ? row.field(column) : std::nullopt;
                if (!field || (field->u32(0) & kLongInRow) != 0) {
                    continue;
                }
                number += (field->u32(0) & kLongInOnePiece) != 0
                              ? 1
                              : (longValueSize(*field) + 4071) / 4072;
            }
        }
        return number;
    }

    void checkPages() {
        const auto withRoom = markedPages(file_, table_.pagesWithRoom);
        for (const PageNumber each : markedPages(file_, table_.ownedPages)) {
            QByteArray bytes = *file_.page(each);
            if (ownerOf(Bytes(bytes)) != table_.page) {
                continue;
            }
            const bool isMarked = std::binary_search(withRoom.begin(), withRoom.end(), each);
            if (RowPage(file_.layout(), bytes.data()).isEmpty()) {
                EXPECT_TRUE(isMarked) << each;
            }
        }
    }

    void check() {
        Model found = readAll(file_, table_);
        ASSERT_EQ(found.size(), model_.size());
        for (auto left = found.begin(), right = model_.begin(); left != found.end();
             ++left, ++right) {
            ASSERT_EQ(left->first, right->first);
            ASSERT_EQ(shown(left->second), shown(right->second));
        }
        EXPECT_EQ(rowCount(), static_cast<qint64>(model_.size()) + rowsMiscounted_);
        for (std::size_t i = 0; i < counts_.size(); ++i) {
            EXPECT_EQ(keyCount(i), distinct(i) + counts_[i]) << i;
        }
        EXPECT_EQ(pieces() - referredPieces(), leaked_);
        checkPages();
    }

    PageFile& file_;
    const TableDefinition& table_;
    CountingIndexes indexes_;
    TableRules rules_;
    std::mt19937 random_;
    Model model_;
    std::vector<qint64> counts_;
    qint64 leaked_ = 0;
    qint64 rowsMiscounted_ = 0;
};

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
    EXPECT_EQ(Bytes(*file->page(kDefinition)).u32(file->layout().autoNumber), 50u * 60);
    file->commit();
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

/// What mdb-export says of the columns of whole numbers, texts and bytes of a table, and the same
/// of the model; a record is sorted among the others.
std::multiset<QByteArray> exported(const QString& path, const QString& name,
                                   const TableDefinition& table, const std::vector<bool>& isTold) {
    QProcess process;
    process.start(u"mdb-export"_s, {u"-H"_s, u"-Q"_s, u"-b"_s, u"hex"_s, u"-d"_s, u"\x01"_s,
                                    u"-R"_s, u"\x02"_s, path, name});
    process.waitForFinished();
    std::multiset<QByteArray> records;
    const QByteArrayList lines = process.readAllStandardOutput().split('\x02');
    for (const QByteArray& line : lines.mid(0, lines.size() - 1)) {
        const QByteArrayList fields = line.split('\x01');
        EXPECT_EQ(fields.size(), static_cast<qsizetype>(table.columns.size())) << line.constData();
        QByteArray record;
        for (qsizetype i = 0; i < fields.size(); ++i) {
            record += isTold.at(static_cast<std::size_t>(i)) ? fields[i] + '|' : QByteArray();
        }
        records.insert(record);
    }
    return records;
}

QByteArray asExported(const Value& value) {
    if (const auto* integer = std::get_if<qint64>(&value)) {
        return QByteArray::number(*integer);
    }
    if (const auto* text = std::get_if<Text>(&value)) {
        return text->utf8;
    }
    const auto* bytes = std::get_if<QByteArray>(&value);
    return bytes == nullptr ? QByteArray() : bytes->toHex();
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
        std::vector<bool> isTold;
        for (const Column& column : table.columns) {
            const FieldType type = column.type;
            isTold.push_back(type == FieldType::Byte || type == FieldType::Integer ||
                             type == FieldType::Long || type == FieldType::Text ||
                             type == FieldType::Memo || type == FieldType::Ole ||
                             type == FieldType::Binary);
        }
        std::multiset<QByteArray> expected;
        for (const auto& [number, values] : editor.model()) {
            QByteArray record;
            for (std::size_t i = 0; i < values.size(); ++i) {
                record += isTold[i] ? asExported(values[i]) + '|' : QByteArray();
            }
            expected.insert(record);
        }
        EXPECT_EQ(exported(path, entry.name, table, isTold), expected) << entry.name.toStdString();
    }
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
