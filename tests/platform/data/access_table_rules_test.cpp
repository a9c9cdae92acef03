// What tables demand besides their types: defaults of columns, relationships.

#include "platform/data/access/catalog_writer.h"
#include "platform/data/access/create_relationship.h"
#include "platform/data/access/tree_index_keeper.h"
#include "platform/data/access_created_file.h"
#include "platform/data/connection.h"
#include "support/access_files.h"

#include <gtest/gtest.h>

namespace varo::access {
namespace {

using enum FieldType;

constexpr Version kVersions[] = {Version::Jet4, Version::Ace12};

/// What a statement that fails says; "" when it does not.
std::string refusalOf(data::Connection& connection, const QString& statement) {
    return refusal([&] { connection.execute(statement); }).toStdString();
}

/// The fields of the rows that a statement finds.
std::string found(data::Connection& connection, const QString& statement) {
    QStringList lines;
    for (auto rows = connection.query(statement); !rows.atEnd(); rows.moveNext()) {
        QStringList fields;
        for (int i = 0; i < rows.columnCount(); ++i) {
            fields.append(rows.isNull(i) ? u"-"_s : rows.text(i));
        }
        lines.append(fields.join(u','));
    }
    return lines.join(u' ').toStdString();
}

TEST(AccessDefaults, FillTheFieldsThatAreLeftOut) {
    constexpr const char* kRefused = "only the Access program can calculate its default value";
    const struct {
        FieldType type;
        QString expression;
        QString expected;
    } kCases[] = {
        {Long, u"0"_s, u"0"_s},
        {Long, u"= -12"_s, u"-12"_s},
        {Long, u"True"_s, u"-1"_s},
        {Long, u"\"7\""_s, u"7"_s},
        {Long, u"Null"_s, u"-"_s},
        {Money, u"1.0625"_s, u"1.0625"_s},
        {Decimal, u".5"_s, u"0.5"_s},
        {Double, u"2e3"_s, u"2000"_s},
        {YesNo, u"=On"_s, u"1"_s},
        {YesNo, u"No"_s, u"0"_s},
        {FieldType::Text, u"\"a \"\"b\"\"\""_s, u"a \"b\""_s},
        {FieldType::Text, u"='it''s'"_s, u"it's"_s},
        {FieldType::Text, u"\"\""_s, u""_s},
        {FieldType::Text, u"5"_s, u"5"_s},
        {Memo, u'"' + QString(5000, u'm') + u'"', QString(5000, u'm')},
        {Date, u"=now( )"_s, u"____-__-__ __:__:__"_s},
        {Date, u"Date()"_s, u"____-__-__ 00:00:00"_s},
        {Date, u"Time()"_s, u"1899-12-30 __:__:__"_s},
        {Long, u"1+1"_s, {}},
        {Long, u"="_s, {}},
        {Long, u"GenUniqueID()"_s, {}},
        {FieldType::Text, u"\"a\" & \"b\""_s, {}},
        {FieldType::Text, u"Now()"_s, {}},
        {FieldType::Text, u"\""_s, {}},
        {Ole, u"\"x\""_s, {}},
        {Date, u"#1/1/2000#"_s, {}},
    };
    for (const Version version : kVersions) {
        for (const auto& [type, expression, expected] : kCases) {
            SCOPED_TRACE(expression.left(20).toStdString());
            const Created created(version, {{.name = u"T"_s,
                                             .columns = {{.name = u"a"_s, .type = Long},
                                                         {.name = u"b"_s,
                                                          .type = type,
                                                          .size = 20,
                                                          .scale = 2,
                                                          .defaultExpression = expression}}}});
            EXPECT_TRUE(printed(u"mdb-prop"_s, {created.path, u"T"_s})
                            .contains(u"DefaultValue: "_s + expression));
            data::Connection connection;
            connection.open(created.path);
            const std::string refused = refusalOf(connection, u"Insert Into T(a) Values(1)"_s);
            if (expected.isNull()) {
                EXPECT_EQ(refused, std::string("T: column b: ") + kRefused);
                EXPECT_EQ(found(connection, u"Select a From T"_s), "");
                if (type == Long) {
                    connection.execute(u"Insert Into T(a,b) Values(1,2)"_s);
                    connection.execute(u"Update T Set b = Null"_s);
                    EXPECT_EQ(found(connection, u"Select b From T"_s), "-");
                }
                continue;
            }
            EXPECT_EQ(refused, "");
            EXPECT_TRUE(type != Date ||
                        found(connection, u"Select b Like '%1' From T"_s.arg(expected)) == "1");
            EXPECT_TRUE(type == Date ||
                        found(connection, u"Select b From T"_s) == expected.toStdString())
                << found(connection, u"Select b From T"_s);
            EXPECT_EQ(connection.damages(), QStringList());
        }
    }
}

NewTable keyed(const QString& name, const QStringList& others) {
    NewTable table{.name = name};
    table.columns = {{.name = u"ID"_s, .type = Long, .isAutoNumber = true}};
    table.indexes = {{.name = u"Key"_s, .columns = {u"ID"_s}, .isPrimary = true}};
    for (const QString& other : others) {
        table.columns.append({.name = other, .type = Long});
        table.indexes.append({.name = other, .columns = {other}});
    }
    return table;
}

NewTable paired(const QString& name, bool isUnique) {
    const bool isDescending = isUnique;
    return {
        .name = name,
        .columns = {{.name = u"a"_s, .type = Long}, textColumn(u"b"_s, 9)},
        .indexes = {
            {.name = u"ab"_s, .columns = {{u"a"_s, isDescending}, u"b"_s}, .isUnique = isUnique}}};
}

/// Tables that refer to one another, and a connection to their file.
class AccessRelationships : public testing::TestWithParam<Version> {
  protected:
    using OnRemoval = Relationship::OnRemoval;

    AccessRelationships()
        : created(GetParam(), {keyed(u"Maker"_s, {}), keyed(u"Part"_s, {u"Maker"_s}),
                               keyed(u"Test"_s, {u"Part"_s}), keyed(u"Note"_s, {u"Maker"_s}),
                               keyed(u"Node"_s, {u"Above"_s}), paired(u"Pair"_s, true),
                               paired(u"Ref"_s, false)}) {
        created.file->begin();
        for (const NewRelationship& each : std::initializer_list<NewRelationship>{
                 {u"1"_s, u"Part"_s, u"Maker"_s, u"Maker"_s, u"Key"_s, true, OnRemoval::Remove},
                 {u"2"_s, u"Test"_s, u"Part"_s, u"Part"_s, u"Key"_s, false, OnRemoval::Remove},
                 {u"3"_s, u"Note"_s, u"Maker"_s, u"Maker"_s, u"Key"_s, true, OnRemoval::SetNull},
                 {u"4"_s, u"Node"_s, u"Above"_s, u"Node"_s, u"Key"_s, true, OnRemoval::Remove},
                 {u"5"_s, u"Ref"_s, u"ab"_s, u"Pair"_s, u"ab"_s, true, OnRemoval::Refuse}}) {
            createRelationship(*created.file, each);
        }
        created.file->commit();
        created.open();
    }

    /// Statements in turn with what they refuse, and what a query then finds.
    struct Step {
        const char* statement;
        std::string refused;
        const char* query = "";
        std::string rows{};
    };
    void expect(const std::vector<Step>& steps) {
        data::Connection connection;
        connection.open(created.path);
        for (const Step& step : steps) {
            SCOPED_TRACE(step.statement);
            EXPECT_EQ(refusalOf(connection, QString::fromUtf8(step.statement)), step.refused);
            if (step.query[0] != '\0') {
                EXPECT_EQ(found(connection, QString::fromUtf8(step.query)), step.rows);
            }
            EXPECT_EQ(connection.damages(), QStringList());
        }
    }

    Created created;
};

INSTANTIATE_TEST_SUITE_P(Versions, AccessRelationships, testing::ValuesIn(kVersions));

TEST_P(AccessRelationships, AreKeptWithinTheStatement) {
    constexpr const char* kParts =
        "Select P.ID, Maker, T.ID From Part P Left Join Test T On Part = P.ID";
    constexpr const char* kNotes = "Select ID, Maker From Note";
    constexpr const char* kNodes = "Select ID, Above From Node Order By ID";
    constexpr const char* kRefs = "Select a, b From Ref";
    expect({
        {"Insert Into Part(Maker) Values(1)",
         "Part: the table Maker has no row to which the row of the table Part can refer"},
        {"Insert Into Maker Values(1),(2),(3)", ""},
        {"Insert Into Part Values(1,1),(2,1),(3,2),(4,Null)", ""},
        {"Insert Into Test Values(1,1),(2,2)", ""},
        {"Insert Into Note Values(1,1),(2,2)", ""},
        {"Update Part Set Maker = Maker + 1", "", kParts, "1,2,1 2,2,2 3,3,- 4,-,-"},
        {"Update Part Set Maker = Maker + 1",
         "Part: the table Maker has no row to which the row of the table Part can refer", kParts,
         "1,2,1 2,2,2 3,3,- 4,-,-"},
        {"Update Maker Set ID = ID + 10", "", kParts, "1,12,1 2,12,2 3,13,- 4,-,-"},
        {"Update Part Set ID = ID + 10",
         "Part: rows of the table Test refer to the row of the table Part", kParts,
         "1,12,1 2,12,2 3,13,- 4,-,-"},
        {"Delete From Maker Where ID = 12", "", kParts, "3,13,- 4,-,-"},
        {"Update Maker Set ID = 10 Where ID = 11", "", kNotes, "1,10 2,-"},
        // Each row refers to the one before; the last one to itself.
        {"With N(i) As (Values(1) Union All Select i + 1 From N Where i < 9) "
         "Insert Into Node Select i, Nullif(i - 1, 0) From N",
         "", kNodes, "1,- 2,1 3,2 4,3 5,4 6,5 7,6 8,7 9,8"},
        {"Insert Into Node Values(20,20)", "", "Select Count(*) From Node", "10"},
        {"Update Node Set ID = 21 Where ID = 20", "", "Select * From Node Where ID > 9", "21,21"},
        {"Update Node Set Above = 3 Where ID = 1", "", "Select Above From Node Where ID = 1", "3"},
        {"Delete From Node Where ID In (3,5,21)", "", kNodes, ""},
        {"With N(i) As (Values(1) Union All Select i + 1 From N Where i < 300) "
         "Insert Into Node Select i, Nullif(i - 1, 0) From N",
         ""},
        {"Delete From Node Where ID = 1",
         "Node: table Node: the change goes through more than 200 relationships",
         "Select Count(*) From Node", "300"},
        {"Insert Into Pair Values(1,'x'),(1,'y'),(2,'x'),(3,Null)", ""},
        {"Insert Into Ref Values(1,'X'),(Null,Null)", "", kRefs, "1,X -,-"},
        {"Insert Into Ref Values(3,Null)",
         "Ref: of the fields of a row of the table Ref that refer to the table Pair all are to be "
         "NULL or none"},
        {"Insert Into Ref Values(2,'y')",
         "Ref: the table Pair has no row to which the row of the table Ref can refer"},
        {"Delete From Pair Where b = 'y' Or a = 3", ""},
        {"Delete From Pair Where b = 'x'",
         "Pair: rows of the table Ref refer to the row of the table Pair"},
        {"Update Pair Set b = 'X' Where a = 1", "", kRefs, "1,X -,-"},
        {"Update Pair Set a = 4, b = 'z' Where a = 1", "", kRefs, "4,z -,-"},
    });
}

TEST_P(AccessRelationships, ThatTheFileContradictsMakeTheirTablesReadOnly) {
    constexpr PageNumber kRelationships = kCatalogPage + 3;
    const TableDefinition stated = readTable(*created.file, kRelationships);
    const std::string kReason =
        "Part: what the file says of the table's relationships is contradictory, or only the "
        "Access program understands it";
    TableRules rules;
    rules.columns.resize(stated.columns.size());
    TreeIndexKeeper indexes(*created.file, stated, u"MSysRelationships"_s);
    TableWriter writer(*created.file, stated, rules, indexes);
    RowPlace first;  // of the relationship of Part and Maker
    for (RowScan rows(*created.file, stated); rows.next() && first.page == 0;) {
        first = rows.place();
    }
    const auto setField = [&](const QString& column, const Value& value) {
        std::vector<FieldChange> changes(stated.columns.size(), Kept{});
        changes.at(static_cast<std::size_t>(stated.column(column))) = value;
        writer.update(first, changes);
    };
    const auto setOther = [&](qsizetype offset) {
        char* page = created.file->change(created.table(u"Maker"_s).page);
        const QByteArray bytes(page, 4096);
        page[bytes.indexOf(QByteArray("\1\1\2\0\0\0\0", 7)) + offset] ^= 2;
    };
    const std::pair<std::function<void()>, bool> kChanges[] = {
        {[&] { setField(u"grbit"_s, qint64{0x1100}); }, true},
        {[&] { setField(u"grbit"_s, qint64{0x1000}); }, false},
        {[&] { setField(u"grbit"_s, qint64{0x1110}); }, false},
        {[&] { setField(u"ccolumn"_s, qint64{2}); }, false},
        {[&] { setField(u"szReferencedColumn"_s, access::Text{"Maker"}); }, false},
        {[&] { setField(u"szReferencedObject"_s, access::Text{"Note"}); }, false},
        {[&] { writer.remove(first); }, false},
        {[&] {
             const TableDefinition part = created.table(u"Part"_s);
             CatalogWriter(*created.file)
                 .addRelationship(u"6"_s, {{u"Part"_s, &part}, 0}, {{u"Part"_s, &part}, 0}, 0);
         },
         false},
        {[&] {
             const TableDefinition part = created.table(u"Part"_s);
             CatalogWriter(*created.file)
                 .addRelationship(u"6"_s, {{u"Part"_s, &part}, 0}, {{u"Part"_s, &part}, 0}, 2);
         },
         true},
        // What the other table says: its side, the index, the table, on changes, on removals.
        {[&] { setOther(-9); }, false},
        {[&] { setOther(-8); }, false},
        {[&] { setOther(-4); }, false},
        {[&] { setOther(0); }, false},
        {[&] { setOther(1); }, false},
    };
    for (const auto& [change, isFine] : kChanges) {
        SCOPED_TRACE(&change - &kChanges[0].first);
        const QByteArray before = PageTestFile::content(created.path);
        created.file->begin();
        change();
        created.file->commit();
        expect({{"Insert Into Part(ID) Values(77)", isFine ? "" : kReason},
                {"Insert Into Node(ID) Values(77)", ""}});
        PageTestFile::write(created.path, before);
    }
}

}  // namespace
}  // namespace varo::access
