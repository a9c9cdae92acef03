#include "platform/data/access/catalog.h"
#include "platform/data/access/index_key.h"
#include "platform/data/access/index_scan.h"
#include "platform/data/access/index_tree.h"
#include "platform/data/access/text_key.h"
#include "platform/data/access/value.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>

namespace varo::access {

namespace {

using Entries = std::vector<std::pair<QByteArray, qint64>>;

constexpr Header kJet4{Version::Jet4, 1252, 0x0409, 0, false, false};
constexpr Header kAce14{Version::Ace14, 1252, 0x0409, 1, false, false};

Entries entriesOf(PageFile& file, const Index& index) {
    Entries entries;
    for (IndexScan scan(file, index.root, {}); scan.next();) {
        entries.emplace_back(scan.key(), rowNumber(scan.place()));
    }
    return entries;
}

/// A file with nothing but an empty index: its root is page 3; page 1 has the maps of the free
/// pages and of those of the index.
class SmallFile {
  public:
    SmallFile() : path_(folder_.filePath(QStringLiteral("index.mdb"))) {
        constexpr int kPageSize = 4096;
        constexpr int kMapLength = 69;
        table_.page = 2;
        index_.root = 3;
        index_.pages = {1, 1};
        QByteArray bytes(4 * kPageSize, '\0');
        char* maps = bytes.data() + kPageSize;
        const std::array<char, 18> head{1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0};
        std::copy(head.begin(), head.end(), maps);
        qToLittleEndian<quint16>(kPageSize - kMapLength, maps + 14);
        qToLittleEndian<quint16>(kPageSize - 2 * kMapLength, maps + 16);
        maps[kPageSize - 2 * kMapLength + 5] = 1 << 3;
        bytes[2 * kPageSize] = static_cast<char>(PageKind::Table);
        IndexPage root;
        root.owner = table_.page;
        writeIndexPage(kJet4.layout(), root, bytes.data() + 3 * kPageSize);
        QFile file(path_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    std::unique_ptr<PageFile> open() const {
        return std::make_unique<PageFile>(path_, kJet4, data::Access::Write);
    }
    const TableDefinition& table() const { return table_; }
    const Index& index() const { return index_; }

  private:
    QTemporaryDir folder_;
    QString path_;
    TableDefinition table_;
    Index index_;
};

void expectSound(PageFile& file, const TableDefinition& table, const Index& index,
                 const std::set<std::pair<QByteArray, qint64>>& expected) {
    EXPECT_EQ(checkIndex(file, table, index).join(u'\n').toStdString(), "");
    EXPECT_EQ(entriesOf(file, index), Entries(expected.begin(), expected.end()));
}

/// Keys of one kind: short ones that are often the same, ascending ones, those of which few are on
/// a page, long ones that begin alike.
struct KeyKind {
    const char* name;
    std::function<QByteArray(std::mt19937&, int)> make;
};

QByteArray numbered(int number) {
    QByteArray key(4, '\0');
    qToBigEndian(number, key.data());
    return key;
}

const std::array kKeyKinds{
    KeyKind{"short", [](std::mt19937& random, int) { return numbered(int(random() % 300)); }},
    KeyKind{"ascending", [](std::mt19937&, int step) { return numbered(step); }},
    KeyKind{"wide",
            [](std::mt19937& random, int) {
                return numbered(static_cast<int>(random())) + QByteArray(kLongestKey - 4, 'x');
            }},
    KeyKind{"long",
            [](std::mt19937& random, int step) {
                const bool isOther = step > 1000 && random() % 20 == 0;
                const int alike = isOther ? static_cast<int>(random() % 700) : 700;
                return QByteArray(alike, 'k') + numbered(static_cast<int>(random())) +
                       QByteArray(static_cast<int>(random() % 40), 'x');
            }},
};

TEST(AccessIndexTree, StaysSoundWhileEntriesComeAndGo) {
    for (const KeyKind& kind : kKeyKinds) {
        SCOPED_TRACE(kind.name);
        const SmallFile small;
        const auto file = small.open();
        std::mt19937 random(7);
        std::set<std::pair<QByteArray, qint64>> expected;
        file->begin();
        IndexTree tree(*file, small.table(), small.index());
        constexpr int kSteps = 4000;
        for (int step = 0; step < kSteps; ++step) {
            const bool isGrowing = random() % 10 < (step < kSteps / 2 ? 8u : 1u);
            if (isGrowing || expected.empty()) {
                const QByteArray key = kind.make(random, step);
                EXPECT_EQ(tree.contains(key), [&] {
                    const auto found = expected.lower_bound({key, 0});
                    return found != expected.end() && found->first == key;
                }());
                tree.insert(key, rowPlace(step + 1000));
                expected.emplace(key, step + 1000);
            } else {
                const auto gone = std::next(expected.begin(), random() % expected.size());
                EXPECT_TRUE(tree.remove(gone->first, rowPlace(gone->second)));
                EXPECT_FALSE(tree.remove(gone->first, rowPlace(gone->second)));
                expected.erase(gone);
            }
            if (step % 100 == 0) {
                expectSound(*file, small.table(), small.index(), expected);
            }
        }
        file->commit();
        expectSound(*small.open(), small.table(), small.index(), expected);
        file->begin();
        while (!expected.empty()) {
            EXPECT_TRUE(tree.remove(expected.begin()->first, rowPlace(expected.begin()->second)));
            expected.erase(expected.begin());
        }
        expectSound(*file, small.table(), small.index(), expected);
        EXPECT_EQ(markedPages(*file, small.index().pages), std::vector<PageNumber>{3});
    }
}

TEST(AccessIndexTree, RefusesWhatItCannotHold) {
    const SmallFile small;
    const auto file = small.open();
    file->begin();
    IndexTree tree(*file, small.table(), small.index());
    tree.insert("key", {9, 1});
    EXPECT_THROW(tree.insert("key", {9, 1}), data::Error);
    EXPECT_THROW(tree.insert(QByteArray(kLongestKey + 1, 'k'), {9, 2}), data::Error);
    EXPECT_FALSE(tree.contains("key", {9, 1}));
    EXPECT_TRUE(tree.contains("key", {9, 2}));
    EXPECT_FALSE(tree.contains("ke"));
    expectSound(*file, small.table(), small.index(), {{"key", rowNumber({9, 1})}});
}

QByteArray bytesOf(const auto& number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string hexKey(const Header& header, FieldType type, bool isDescending,
                   const QByteArray& field) {
    Column column;
    column.type = type;
    column.sortOrder = header.sortOrder;
    column.sortVersion = header.sortVersion;
    const auto key = fieldKey(header, column, isDescending, field);
    return key ? key->toHex().toStdString() : "unknown";
}

TEST(AccessIndexKey, IsThatOfTheFieldsTypeAndDirection) {
    const QByteArray minusOne = "\x01" + QByteArray(12, '\0') + QByteArray("\x01\0\0\0", 4);
    const struct {
        const Header& header;
        FieldType type;
        QByteArray field;
        const char* ascending;
        const char* descending;
    } rows[] = {
        {kJet4, FieldType::YesNo, "\x01", "7f00", "80ff"},
        {kJet4, FieldType::YesNo, QByteArray(1, '\0'), "7fff", "8000"},
        {kJet4, FieldType::Byte, "\x05", "7f05", "80fa"},
        {kJet4, FieldType::Integer, bytesOf(qint16{-2}), "7f7ffe", "808001"},
        {kJet4, FieldType::Money, bytesOf(qint64{1}), "7f8000000000000001", "807ffffffffffffffe"},
        {kJet4, FieldType::Single, bytesOf(-1.0F), "7f407fffff", "80bf800000"},
        {kJet4, FieldType::Double, bytesOf(-0.0), "unknown", "unknown"},
        {kJet4, FieldType::Double, bytesOf(std::nan("")), "unknown", "unknown"},
        {kJet4, FieldType::Binary, "123456789", "7f313233343536373809390000000000000001",
         "unknown"},
        {kJet4, FieldType::Decimal, minusOne, "7f00fffffffffffffffffffffffffffffffe",
         "800000000000000000000000000000000001"},
        {kAce14, FieldType::Decimal, minusOne, "7f00fffffffffffffffffffffffffffffffe", "unknown"},
        {kJet4, FieldType::Long, bytesOf(qint16{1}), "unknown", "unknown"},
        {kJet4, FieldType::ExtendedDate, QByteArray(42, '0'), "unknown", "unknown"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ascending);
        EXPECT_EQ(hexKey(row.header, row.type, false, row.field), row.ascending);
        EXPECT_EQ(hexKey(row.header, row.type, true, row.field), row.descending);
    }
}

TEST(AccessIndexKey, OfATextIsThatOfItsSortOrder) {
    const struct {
        QString text;
        const char* legacy;
        const char* general;
    } rows[] = {
        {QStringLiteral(u""), "0100", "0100"},
        {QStringLiteral(u"aZ 9"), "4a7807480100", "0e020ea907020d210100"},
        {QStringLiteral(u"\u516C\u5F0F"), "a296b0720100", "fdff3fdcfdff4d9b0100"},
        {QStringLiteral(u"\u03C3_m"), "791d2b03600100", "0f2607440e510100"},
        {QStringLiteral(u"a\u00E9b"), "4a514c01020e00", "0e020e210e0901020e00"},
        {QStringLiteral(u"a-b"), "4a4c01010101800b068200", "0e020e0901010101800b068200"},
        {QStringLiteral(u"\u00E9-"), "51010e010101800b068200", "0e21010e010101800b068200"},
        {QStringLiteral(u"\U0001F600"), nullptr, nullptr},
        {QStringLiteral(u"\u3042"), nullptr, nullptr},
        {QStringLiteral(u"\u00DF"), nullptr, nullptr},
    };
    for (const auto& row : rows) {
        for (const auto& [version, expected] : {std::pair{0, row.legacy}, {1, row.general}}) {
            SCOPED_TRACE(row.text.toStdString());
            const auto key = textKey(0x0409, static_cast<quint8>(version), row.text);
            EXPECT_EQ(key ? key->toHex().toStdString() : "unknown",
                      expected ? expected : "unknown");
        }
    }
    EXPECT_FALSE(textKey(0x0804, 0, u"a"));
    EXPECT_FALSE(textKey(0x0409, 2, u"a"));
    EXPECT_FALSE(textKey(0x0409, 0, QString(256, u'a')));
}

TEST(AccessIndexKey, OfARowSaysWhetherItHasNulls) {
    TableDefinition table;
    for (int number : {0, 1}) {
        Column column;
        column.number = number;
        column.type = FieldType::Byte;
        table.columns.push_back(column);
    }
    Index index;
    index.columns = {{0, false}, {1, true}};
    index.ignoresNulls = true;
    const std::optional<QByteArray> five("\x05");
    const auto key = [&](std::array<std::optional<QByteArray>, 2> fields) {
        const IndexKey found = indexKey(kJet4, table, index, fields);
        return std::tuple(found.bytes->toHex(), found.hasNull, found.isLeftOut);
    };
    EXPECT_EQ(key({five, five}), std::tuple("7f0580fa", false, false));
    EXPECT_EQ(key({five, std::nullopt}), std::tuple("7f05ff", true, false));
    EXPECT_EQ(key({std::nullopt, std::nullopt}), std::tuple("00ff", true, true));
}

/// Calls `use` for each index of each table of each file in the folder that VARO_ACCESS_FILES
/// names, the system tables with them, on a copy that may be changed.
class AccessIndexOfRealFile : public testing::Test {
  protected:
    using Use = std::function<void(PageFile&, const TableDefinition&, const Index&)>;

    static void forEachIndex(const Use& use) {
        const QDir folder(qEnvironmentVariable("VARO_ACCESS_FILES"));
        for (const QString& name : folder.entryList({"*.mdb", "*.accdb"}, QDir::Files)) {
            SCOPED_TRACE(name.toStdString());
            const QTemporaryDir copies;
            const QString path = copies.filePath(name);
            ASSERT_TRUE(QFile::copy(folder.filePath(name), path));
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
            QFile start(path);
            ASSERT_TRUE(start.open(QIODevice::ReadOnly));
            const auto header = readHeader(start.read(kHeaderLength));
            PageFile file(path, header.value(), data::Access::Write);
            for (const PageNumber page : tables(file)) {
                const TableDefinition table = readTable(file, page);
                for (const Index& index : table.indexes) {
                    SCOPED_TRACE(index.names.join(u',').toStdString());
                    use(file, table, index);
                }
            }
        }
    }

  private:
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("VARO_ACCESS_FILES")) {
            GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with Access files";
        }
    }

    /// As the catalog lists them, whose definition is on page 2.
    static std::vector<PageNumber> tables(PageFile& file) {
        const TableDefinition catalog = readTable(file, 2);
        const auto number = [&](const Row& row, QStringView column) {
            const auto& columns = catalog.columns;
            const auto at = static_cast<std::size_t>(catalog.column(column));
            return std::get<qint64>(fieldValue(file, row, columns[at]));
        };
        std::vector<PageNumber> pages;
        for (RowScan scan(file, catalog); const auto found = scan.next();) {
            const Row row(file.layout(), catalog, found->page, found->bytes);
            if (number(row, u"Type") == 1) {
                pages.push_back(static_cast<PageNumber>(number(row, u"Id") & 0xFFFFFF));
            }
        }
        return pages;
    }
};

TEST_F(AccessIndexOfRealFile, HasTheKeysThatAreComputedFromItsRows) {
    forEachIndex([](PageFile& file, const TableDefinition& table, const Index& index) {
        const QStringList found =
            checkIndex(file, table, index) + checkIndexRows(file, table, index);
        EXPECT_EQ(found.join(u'\n').toStdString(), "");
        if (file.header().isJet3()) {
            return;
        }
        for (IndexScan scan(file, index.root, {}); scan.next();) {
            const FoundRow indexed = findRow(file, scan.place()).value();
            const Row row(file.layout(), table, indexed.page, indexed.bytes);
            EXPECT_TRUE(indexKey(file, table, index, row).bytes) << scan.key().toHex().data();
        }
    });
}

TEST_F(AccessIndexOfRealFile, TakesItsEntriesAgainInAnyOrder) {
    std::mt19937 random(5);
    forEachIndex([&](PageFile& file, const TableDefinition& table, const Index& index) {
        if (file.header().isJet3()) {
            return;
        }
        const Entries all = entriesOf(file, index);
        Entries some = all;
        file.begin();
        IndexTree tree(file, table, index);
        std::shuffle(some.begin(), some.end(), random);
        for (const auto& [key, row] : some) {
            EXPECT_TRUE(tree.remove(key, rowPlace(row)));
        }
        EXPECT_EQ(entriesOf(file, index), Entries());
        std::shuffle(some.begin(), some.end(), random);
        for (const auto& [key, row] : some) {
            tree.insert(key, rowPlace(row));
        }
        EXPECT_EQ(checkIndex(file, table, index).join(u'\n').toStdString(), "");
        EXPECT_EQ(entriesOf(file, index), all);
        file.commit();
    });
}

}  // namespace

}  // namespace varo::access
