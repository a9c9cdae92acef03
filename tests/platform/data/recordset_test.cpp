#include "platform/data/recordset.h"

#include "platform/data/item_database.h"

#include <gtest/gtest.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

TEST(Recordset, GoesFromTheFirstRowToBehindTheLast) {
    ItemDatabase items;
    EXPECT_TRUE(items.connection.query(u"Select * From Item"_s).atEnd());
    items.add(u"one"_s, 5);
    items.add(u"two"_s);
    Recordset rows = items.connection.query(u"Select * From Item Order By ID"_s);
    EXPECT_EQ(rows.columnCount(), 4);
    EXPECT_EQ(rows.column(u"AMOUNT"), 2);
    EXPECT_EQ(rows.column(u"Weight"), -1);
    EXPECT_EQ(rows.columnName(2), u"Amount"_s);
    const QString marked = u"\xFEFFName"_s;
    EXPECT_EQ(items.connection.query(u"Select 1 As [%1]"_s.arg(marked)).columnName(0), marked);
    EXPECT_EQ(rows.integer(u"amount"), 5);
    EXPECT_THROW(rows.integer(u"Weight"), Error);
    EXPECT_THROW(rows.text(4), Error);
    EXPECT_THROW(rows.integer(-1), Error);
    rows.moveNext();
    EXPECT_EQ(rows.text(u"name"), u"two"_s);
    rows.moveNext();
    EXPECT_TRUE(rows.atEnd());
    EXPECT_THROW(rows.moveNext(), Error);
    EXPECT_THROW(rows.text(0), Error);
}

TEST(Recordset, ReadsEveryStoredTypeAsNumberAndAsText) {
    const std::tuple<const char*, qint32, qint64, QString> cases[] = {
        {"NULL", 0, 0, u""_s},
        {"-42", -42, -42, u"-42"_s},
        {"2147483648", INT32_MAX, 2147483648, u"2147483648"_s},
        {"-9000000000", INT32_MIN, -9000000000, u"-9000000000"_s},
        {"2.5", 2, 2, u"2.5"_s},
        {"'17'", 17, 17, u"17"_s},
        {"'beam'", 0, 0, u"beam"_s},
        {"''", 0, 0, u""_s}};
    ItemDatabase items;
    for (const auto& [value, number, longNumber, text] : cases) {
        const Recordset row = items.connection.query(u"Select "_s + QLatin1StringView(value));
        EXPECT_EQ(row.integer(0), number) << value;
        EXPECT_EQ(row.integer64(0), longNumber) << value;
        EXPECT_EQ(row.text(0), text) << value;
        EXPECT_EQ(row.isNull(0), value == std::string("NULL"));
    }
}

TEST(Recordset, ANumberReadsBackExactlyAndAsTheShortestText) {
    const std::pair<double, QString> cases[] = {{0.1 + 0.2, u"0.30000000000000004"_s},
                                                {0.1, u"0.1"_s},
                                                {-0.0, u"0"_s},
                                                {206000, u"206000"_s},
                                                {-1e15, u"-1000000000000000"_s},
                                                {1.2e-5, u"0.000012"_s},
                                                {1e300, u"1e+300"_s},
                                                {5e-324, u"5e-324"_s}};
    ItemDatabase items;
    items.connection.execute(u"Create Table Number (Value Double)"_s);
    for (const auto& [value, text] : cases) {
        items.connection.execute(u"Insert Into Number Values (?)"_s,
                                 {QString::number(value, 'g', 17)});
        const Recordset row = items.connection.query(
            u"Select Value, exact_text(Value) From Number Order By rowid Desc"_s);
        EXPECT_EQ(row.valueType(0), ValueType::Floating);
        EXPECT_EQ(row.real(0), value) << text.toStdString();
        EXPECT_EQ(row.text(0), text);
        EXPECT_EQ(row.text(1), text);
        EXPECT_EQ(row.text(0).toDouble(), value);
    }
    const Recordset others = items.connection.query(
        u"Select 7, 'a', x'00', Null, exact_text(7), exact_text('a'), exact_text(x'00')"_s);
    const ValueType types[] = {ValueType::Integer, ValueType::Text,    ValueType::Binary,
                               ValueType::Null,    ValueType::Integer, ValueType::Text,
                               ValueType::Null};
    for (int column = 0; column < others.columnCount(); ++column) {
        EXPECT_EQ(others.valueType(column), types[column]) << column;
    }
}

TEST(Recordset, StaysOpenWhileItsConnectionWritesAndLocksTheFileUntilItIsClosed) {
    ItemDatabase items;
    items.add(u"one"_s);
    items.add(u"two"_s);
    Connection writer;
    writer.open(items.path());
    Recordset rows = items.connection.query(u"Select ID From Item Order By ID"_s);
    EXPECT_THROW(writer.execute(u"Delete From Item"_s), Error);
    EXPECT_EQ(items.connection.execute(u"Update Item Set Amount = 9"_s), 2);
    rows.moveNext();
    EXPECT_EQ(rows.integer(0), 2);
    rows.close();
    EXPECT_EQ(writer.execute(u"Delete From Item"_s), 2);
}

}  // namespace
}  // namespace varo::data
