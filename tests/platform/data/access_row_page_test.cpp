// The directory of a page of rows, and the conversion of values into fields.

#include "platform/data/access/decimal_digits.h"
#include "platform/data/access/row_page.h"
#include "platform/data/access/stored_value.h"
#include "platform/data/access/table_rules.h"

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <random>

namespace varo::access {
namespace {

using namespace Qt::StringLiterals;

const Layout& layout() {
    static const Header header{Version::Jet4, 1252, 0x409, 0, false, false};
    return header.layout();
}

/// What the directory says of a page; the rows that are there by number.
std::map<int, QByteArray> rowsOn(const QByteArray& page) {
    std::map<int, QByteArray> rows;
    for (int row = 0; row < rowCount(layout(), Bytes(page)); ++row) {
        if (!rowEntry(layout(), Bytes(page), row).isDeleted) {
            rows[row] = rowBytes(layout(), Bytes(page), row).toByteArray();
        }
    }
    return rows;
}

TEST(AccessRowPage, KeepsRowsAndTheirNumbersWhileOthersComeGrowAndGo) {
    std::mt19937 random(7);
    const auto upTo = [&](int most) { return static_cast<int>(random() % (most + 1u)); };
    for (const int longest : {3, 60, 1500}) {
        QByteArray bytes(layout().pageSize, '\0');
        RowPage::clear(layout(), bytes.data(), 77);
        std::map<int, QByteArray> rows;
        for (int step = 0; step < 4000; ++step) {
            RowPage page(layout(), bytes.data());
            const QByteArray content(upTo(longest), static_cast<char>('a' + step % 26));
            const bool isFilling = step / 500 % 2 == 0;
            const auto any = rows.empty()
                                 ? rows.end()
                                 : std::next(rows.begin(), upTo(static_cast<int>(rows.size()) - 1));
            if (upTo(9) < (isFilling ? 6 : 2)) {
                if (page.roomForNew() >= content.size()) {
                    const int row = page.add(Bytes(content), RowPage::Kind::Row);
                    ASSERT_TRUE(rows.emplace(row, content).second);
                }
            } else if (any != rows.end() && upTo(1) == 0) {
                if (page.roomFor(any->first) >= content.size()) {
                    page.replace(any->first, Bytes(content), RowPage::Kind::Row);
                    any->second = content;
                }
            } else if (any != rows.end()) {
                page.remove(any->first);
                rows.erase(any);
            }
            ASSERT_EQ(rowsOn(bytes), rows);
            ASSERT_EQ(page.isEmpty(), rows.empty());
            qsizetype used = 0;
            for (const auto& [row, each] : rows) {
                used += each.size();
            }
            const Bytes now(bytes);
            ASSERT_EQ(now.u16(2),
                      layout().pageSize - layout().rowOffsets - used - 2 * rowCount(layout(), now));
        }
        EXPECT_EQ(ownerOf(Bytes(bytes)), 77u);
    }
}

TEST(AccessRowPage, TakesAsMuchAsItSaysAndGivesRemovedRowsBack) {
    QByteArray bytes(layout().pageSize, '\0');
    RowPage::clear(layout(), bytes.data(), 1);
    RowPage page(layout(), bytes.data());
    page.add(Bytes(QByteArray(1000, 'a')), RowPage::Kind::Row);
    page.add(Bytes(QByteArray(page.roomForNew(), 'b')), RowPage::Kind::Row);
    EXPECT_LT(page.roomForNew(), 0);
    // Another program only marks a row as removed.
    bytes[layout().rowOffsets + 1] = static_cast<char>(bytes[layout().rowOffsets + 1] | 0xC0);
    RowPage again(layout(), bytes.data());
    EXPECT_EQ(again.roomForNew(), 998);
    again.add(Bytes(QByteArray(998, 'c')), RowPage::Kind::Row);
    const auto rows = rowsOn(bytes);
    EXPECT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows.at(1), QByteArray(4096 - 14 - 4 - 1000, 'b'));
    EXPECT_EQ(rows.at(2), QByteArray(998, 'c'));
    EXPECT_THROW(again.requireRow(0), data::Error);
    EXPECT_THROW(again.requireRow(3), data::Error);
}

Column column(FieldType type, int size = 0) {
    Column column;
    column.name = u"C"_s;
    column.type = type;
    column.size = size;
    column.isCompressed = type == FieldType::Text;
    column.precision = 6;
    column.scale = 2;
    return column;
}

Value text(const char* utf8) {
    return Text{utf8};
}

TEST(AccessStoredValue, ConvertsIntoTheTypeOfTheColumn) {
    const struct {
        FieldType type;
        Value value;
        const char* hex;
    } kCases[] = {
        {FieldType::Byte, qint64{255}, "ff"},
        {FieldType::Integer, text("-2"), "feff"},
        {FieldType::Long, 65536.0, "00000100"},
        {FieldType::Long, text(" 1.5e1 "), "0f000000"},
        {FieldType::BigInteger, std::numeric_limits<qint64>::min(), "0000000000000080"},
        {FieldType::Money, 1.5, "983a000000000000"},
        {FieldType::Money, text("-922337203685477.5808"), "0000000000000080"},
        {FieldType::Single, 0.5, "0000003f"},
        {FieldType::Double, text("1"), "000000000000f03f"},
        {FieldType::Date, text("1899-12-31 12:00:00"), "000000000000f83f"},
        {FieldType::Date, text("1899-12-29 06:00:00"), "000000000000f4bf"},
        {FieldType::Date, text("1900-01-01"), "0000000000000040"},
        {FieldType::Date, 2.0, "0000000000000040"},
        {FieldType::Decimal, text("-1234.56"), "8000000000000000000000000040e20100"},
        {FieldType::Guid, text("{00112233-4455-6677-8899-aabbccddeeff}"),
         "33221100554477668899aabbccddeeff"},
        {FieldType::Text, text("abc"), "fffe616263"},
        {FieldType::Text, text("ab"), "61006200"},
        {FieldType::Text, text("\xCE\xB1"), "b103"},
        {FieldType::Text, text(""), ""},
        {FieldType::Text, qint64{7}, "3700"},
        {FieldType::Text, 0.1, "fffe302e31"},
        {FieldType::Memo, text("abc"), "610062006300"},
        {FieldType::Binary, QByteArray("\0\1", 2), "0001"},
        {FieldType::YesNo, qint64{-1}, ""},
        {FieldType::YesNo, 0.5, ""},
    };
    for (const auto& each : kCases) {
        const auto stored = storedValue(each.value, column(each.type, 10));
        ASSERT_TRUE(stored.has_value()) << each.hex;
        EXPECT_EQ(stored->toHex(), QByteArray(each.hex)) << static_cast<int>(each.type);
    }
    EXPECT_FALSE(storedValue({}, column(FieldType::Long)).has_value());
    EXPECT_FALSE(storedValue(qint64{0}, column(FieldType::YesNo)).has_value());
}

TEST(AccessStoredValue, RefusesWhatTheColumnCannotHold) {
    const double infinite = std::numeric_limits<double>::infinity();
    const std::pair<FieldType, Value> kCases[] = {
        {FieldType::Byte, qint64{256}},
        {FieldType::Byte, qint64{-1}},
        {FieldType::Integer, qint64{32768}},
        {FieldType::Long, qint64{1} << 31},
        {FieldType::Long, 0.5},
        {FieldType::Long, text("1x")},
        {FieldType::Long, text("")},
        {FieldType::Long, text("1e999999999999")},
        {FieldType::Long, QByteArray("1")},
        {FieldType::BigInteger, 1e19},
        {FieldType::Money, 0.00001},
        {FieldType::Money, 1e15},
        {FieldType::Single, 1e39},
        {FieldType::Double, infinite},
        {FieldType::Decimal, text("12345.67")},
        {FieldType::Decimal, text("0.001")},
        {FieldType::Date, text("2001-02-29")},
        {FieldType::Date, text("2001-02-28 24:00:00")},
        {FieldType::Date, text("0099-01-01")},
        {FieldType::Guid, text("{00112233-4455-6677-8899-aabbccddee}")},
        {FieldType::Text, text("123456")},
        {FieldType::Text, text("\xFF")},
        {FieldType::Text, QByteArray("a")},
        {FieldType::Memo, text("\xEF\xBB\xBFx")},
        {FieldType::Binary, QByteArray(11, 'a')},
        {FieldType::Binary, text("a")},
        {FieldType::ExtendedDate, text("2000-01-01")},
    };
    for (const auto& [type, value] : kCases) {
        EXPECT_THROW(storedValue(value, column(type, 10)), data::Error)
            << static_cast<int>(type) << ' ' << value.index();
    }
}

QByteArray number(quint32 value, int bytes) {
    QByteArray result(4, '\0');
    qToLittleEndian(value, result.data());
    return result.left(bytes);
}

QByteArray name(const QString& name) {
    QByteArray bytes;
    for (const QChar c : name) {
        bytes += number(c.unicode(), 2);
    }
    return number(static_cast<quint32>(bytes.size()), 2) + bytes;
}

QByteArray block(int kind, const QByteArray& content) {
    return number(static_cast<quint32>(content.size()) + 6, 4) +
           number(static_cast<quint32>(kind), 2) + content;
}

/// The properties of a column, or of the table when it has no name: numbers of names, and values.
QByteArray properties(const QString& owner, const QList<std::pair<int, QByteArray>>& values) {
    QByteArray content = name(owner);
    content.prepend(number(static_cast<quint32>(content.size()) + 4, 4));
    for (const auto& [nameNumber, value] : values) {
        content += number(static_cast<quint32>(value.size()) + 8, 2) + QByteArray(2, '\1') +
                   number(static_cast<quint32>(nameNumber), 2) +
                   number(static_cast<quint32>(value.size()), 2) + value;
    }
    return block(owner.isEmpty() ? 0 : 1, content);
}

TEST(AccessTableRules, ComeFromThePropertiesOfTheTable) {
    TableDefinition table;
    table.columns = {column(FieldType::Text), column(FieldType::Long)};
    table.columns[0].name = u"名"_s;
    table.columns[1].isAutoNumber = true;
    const QByteArray names = "MR2" + QByteArray(1, '\0') +
                             block(0x80, name(u"Required"_s) + name(u"AllowZeroLength"_s) +
                                             name(u"ValidationRule"_s) + name(u"DefaultValue"_s));
    const QByteArray yes("\1");
    const QByteArray no(1, '\0');

    const TableRules none = rulesOf(table, {});
    EXPECT_TRUE(!none.columns[0].isRequired && none.columns[0].allowsEmpty &&
                none.refusal.isEmpty());
    const TableRules some =
        rulesOf(table, names + properties({}, {{0, yes}}) +
                           properties(u"名"_s, {{0, yes}, {1, no}, {2, {}}}) +
                           properties(u"c"_s, {{3, name(u"GenUniqueID()"_s).mid(2)}}));
    EXPECT_TRUE(some.columns[0].isRequired && !some.columns[0].allowsEmpty);
    EXPECT_TRUE(!some.columns[1].isRequired && some.columns[1].allowsEmpty);
    EXPECT_TRUE(some.hasRandomNumbers && some.refusal.isEmpty());
    for (const QString& owner : {QString(), u"C"_s}) {
        EXPECT_NE(rulesOf(table, names + properties(owner, {{2, name(u">0"_s)}})).refusal,
                  QString());
    }
    for (const QByteArray& damaged :
         {QByteArray("MR3"), names.chopped(1),
          names + block(1, number(99, 4) + name({})).chopped(1),
          names + number(0, 4) + number(1, 2), names + properties({}, {{9, yes}})}) {
        EXPECT_THROW(rulesOf(table, damaged), data::Error) << damaged.toHex().constData();
    }
}

}  // namespace
}  // namespace varo::access
