// What tables demand besides their types: defaults of columns, relationships.

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

}  // namespace
}  // namespace varo::access
