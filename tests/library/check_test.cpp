#include "library_files.h"

namespace varo {
namespace {

constexpr auto soundText = R"(
[[folder]]
id = 1
name = "a"
[[folder]]
id = 2
name = "b"
parent = 1
[[folder]]
id = 3
name = "c"
parent = 2
[[formula]]
id = 1
name = "f"
folder = 1
expression = "x+y"
values = { x = "1" }
picture = { base64 = "Qk0=" }
[[formula]]
id = 2
name = "g"
folder = 1
[[value]]
name = "deleted"
formula = 99
value = "1"
[[value]]
name = "unowned"
value = "1"
[[property]]
id = 1
name = "p"
filter = 5
node = 1
node_type = 2
[[property]]
id = 1
name = "library"
node = 0
node_type = 1
[[condition]]
id = 1
user = 5
type = 1
[[condition]]
id = 2
user = 5
parent = 1
type = 4
[[expression]]
filter = 5
id = 2
field = "x"
compare = 1
)";

struct Damage {
    const char* statement;  ///< what is done to the sound library
    const char* fault;      ///< the one fault that is then found
};

void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.statement;
}

class BrokenLibrary : public LibraryFiles, public testing::WithParamInterface<Damage> {};

TEST_P(BrokenLibrary, IsReportedWithTheOneFaultItHas) {
    const QString library = build(QStringLiteral("a.mdb"), soundText);
    ASSERT_EQ(checkLibrary(library).faults, QStringList());
    open(library).execute(QString::fromUtf8(GetParam().statement));
    EXPECT_EQ(checkLibrary(library).faults, QStringList(QString::fromUtf8(GetParam().fault)));
}

INSTANTIATE_TEST_SUITE_P(
    Damages, BrokenLibrary,
    testing::Values(
        Damage{"alter table Property drop column FilterID",
               "table Property has no column FilterID"},
        Damage{"alter table Formula drop column Pic", "table Formula has no column Pic"},
        Damage{"drop table FilterExpressions",
               "table FilterExpressions cannot be read: no such table: FilterExpressions"},
        Damage{"update Tree set ID = 0 where ID = 3",
               "folder 0 \"c\": its identifier stands for the top level"},
        Damage{"update Tree set PID = 9 where ID = 3",
               "folder 3 \"c\": its parent 9 does not exist"},
        Damage{"update Formula set PID = -4 where ID = 2",
               "formula 2 \"g\": its folder -4 does not exist"},
        Damage{"update Tree set PID = 3 where ID = 1",
               "folders are inside themselves: 1 \"a\" > 2 \"b\" > 3 \"c\" > 1 \"a\""},
        Damage{"update Tree set PID = 3 where ID = 3",
               "folders are inside themselves: 3 \"c\" > 3 \"c\""},
        Damage{"insert into Tree values(7, 'd', 1, 1)",
               "2 folders below folder 1 have the order number 1"},
        Damage{"update Formula set OrderID = 4", "2 formulas of folder 1 have the order number 4"},
        Damage{"update Formula set PicType = 1 where ID = 2",
               "formula 2 \"g\": its picture type is 1"},
        Damage{"update Formula set PicType = 2 where ID = 2",
               "formula 2 \"g\": its picture type is 2 without a picture"},
        Damage{"update Formula set Pic = '' where ID = 1",
               "formula 1 \"f\": its picture type is 2 without a picture"},
        Damage{"update Formula set PicType = 0 where ID = 1",
               "formula 1 \"f\": it has a picture with picture type 0"},
        Damage{"update Formula set Pic = 'GIF89a' where ID = 1",
               "formula 1 \"f\": its picture is no bmp, jpg, png or wmf"},
        Damage{"update Property set NodeID = 8 where NodeType = 1",
               "property 1 \"library\": its folder 8 does not exist"},
        Damage{"update Property set NodeID = 3 where NodeType = 2",
               "property 1 \"p\": its formula 3 does not exist"},
        Damage{"update Property set NodeType = 3 where NodeID = 0",
               "property 1 \"library\": its node type is 3"},
        Damage{"update Property set FilterID = 6 where NodeType = 1",
               "property 1 \"library\": its filter 6 has no conditions"},
        Damage{"update FilterCond set ParentID = 3 where ID = 2",
               "condition 2 of filter 5: its parent 3 does not exist"},
        Damage{"insert into FilterCond values(3, 5, 2, 1)",
               "condition 3 of filter 5: its parent 2 is a comparison"},
        Damage{"delete from FilterExpressions", "condition 2 of filter 5: it has no comparison"},
        Damage{"update FilterCond set Type = 9 where ID = 1",
               "condition 1 of filter 5: its type is 9"},
        Damage{
            "update Tree set Name = printf('%.41c', 'n') where ID = 1",
            "folder 1 \"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn\": its name has 41 characters, "
            "over the limit of 40"},
        Damage{"update Formula set Name = printf('%.21c', 'n') where ID = 1",
               "formula 1 \"nnnnnnnnnnnnnnnnnnnnn\": its name has 21 characters, over the limit of "
               "20"},
        Damage{"update Formula set Formula = printf('%.256c', 'n') where ID = 1",
               "formula 1 \"f\": its expression has 256 characters, over the limit of 255"},
        Damage{"update Formula set Memo = replace(printf('%.128c', 'n'), 'n', '😀') where ID = 1",
               "formula 1 \"f\": its memo has 256 characters, over the limit of 255"},
        Damage{"update RecentVar set Value = printf('%.300c', 'n') where VarName = 'x'",
               "variable \"x\" of formula 1: its value has 300 characters, over the limit of 255"},
        Damage{
            "update Property set PropName = printf('%.51c', 'n') where NodeID = 0",
            "property 1 \"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn\": its name has 51 "
            "characters, over the limit of 50"},
        Damage{"delete from TableInfo", "the version record DBVersion is missing"},
        Damage{"update TableInfo set PrptyVal = '1.0'",
               "the version record DBVersion is \"1.0\", not \"2.0\""},
        Damage{"update TableInfo set PrptyVal = null",
               "the version record DBVersion is \"\", not \"2.0\""}));

class Check : public LibraryFiles {
  protected:
    QString sound() const { return build(QStringLiteral("a.mdb"), soundText); }
};

TEST_F(Check, CountsWhatASoundLibraryHolds) {
    const CheckReport report = checkLibrary(sound());
    EXPECT_EQ(report.faults, QStringList());
    EXPECT_EQ(report.folders, 3);
    EXPECT_EQ(report.formulas, 2);
    EXPECT_EQ(report.pictures, 1);
}

TEST_F(Check, AcceptsTextsAtTheirLimits) {
    const QString library = sound();
    data::Connection connection = open(library);
    connection.execute(QStringLiteral("update Tree set Name = printf('%.40c', 'n')"));
    connection.execute(
        QStringLiteral("update Formula set Name = printf('%.20c', 'n'), "
                       "Formula = printf('%.255c', 'n'), Memo = printf('%.255c', 'n')"));
    connection.execute(QStringLiteral("update RecentVar set Value = printf('%.255c', 'n')"));
    connection.execute(QStringLiteral("update Property set PropName = printf('%.50c', 'n')"));
    connection.execute(QStringLiteral("update TableInfo set PrptyVal = ' 2.0 '"));
    connection.close();
    EXPECT_EQ(checkLibrary(library).faults, QStringList());
}

TEST_F(Check, NamesEachRingOfFoldersOnce) {
    const QString library = sound();
    data::Connection connection = open(library);
    connection.execute(
        QStringLiteral("insert into Tree values"
                       "(4,'d',5,1), (5,'e',4,1), (6,'hangs on it',5,2)"));
    connection.execute(QStringLiteral("update Tree set PID = 3 where ID = 1"));
    connection.close();
    EXPECT_EQ(checkLibrary(library).faults,
              QStringList(
                  {QStringLiteral("folders are inside themselves: "
                                  "1 \"a\" > 2 \"b\" > 3 \"c\" > 1 \"a\""),
                   QStringLiteral("folders are inside themselves: 4 \"d\" > 5 \"e\" > 4 \"d\"")}));
}

TEST_F(Check, ReportsEveryFaultOnALineOfItsOwn) {
    const QString library = sound();
    data::Connection connection = open(library);
    connection.execute(QStringLiteral("update Tree set PID = 9, Name = char(97, 10, 13, 98)"));
    connection.close();
    const QStringList faults = checkLibrary(library).faults;
    EXPECT_EQ(faults.size(), 4);
    EXPECT_EQ(faults.value(0), QStringLiteral("folder 1 \"a  b\": its parent 9 does not exist"));
    EXPECT_EQ(faults.value(3), QStringLiteral("3 folders below folder 9 have the order number 1"));
}

TEST_F(Check, FindsTheMissingTablesOfAnotherProgramsDatabase) {
    const QString library = sound();
    data::Connection connection = open(library);
    for (const char* table : {"Tree", "Formula", "RecentVar"}) {
        connection.execute(QStringLiteral("drop table ") + QLatin1String(table));
    }
    connection.close();
    EXPECT_EQ(checkLibrary(library).faults.size(), 3);
}

TEST_F(Check, ReportsAFileThatIsNoLibraryOrMissing) {
    const QString files[] = {
        write(QStringLiteral("text.mdb"), "no library"),
        write(QStringLiteral("empty.mdb"), ""),
        path(QStringLiteral("missing.mdb")),
    };
    for (const QString& file : files) {
        const QStringList faults = checkLibrary(file).faults;
        ASSERT_EQ(faults.size(), 1) << file.toStdString();
        EXPECT_TRUE(faults[0].startsWith(u"the file cannot be opened: "))
            << faults[0].toStdString();
    }
}

TEST_F(Check, ReportsDamageAnywhereInTheFile) {
    sound();
    const QByteArray content = read(QStringLiteral("a.mdb"));
    EXPECT_FALSE(checkLibrary(write(QStringLiteral("cut.mdb"), content.chopped(content.size() / 2)))
                     .faults.isEmpty());
    constexpr qsizetype page = 4096;
    ASSERT_EQ(content.size() % page, 0);
    for (qsizetype at = page; at < content.size(); at += page) {
        QByteArray damaged = content;
        damaged.replace(at, 64, QByteArray(64, '\x5A'));
        EXPECT_FALSE(checkLibrary(write(QStringLiteral("damaged.mdb"), damaged)).faults.isEmpty())
            << "page " << at / page;
    }
}

TEST_F(Check, ChangesNothing) {
    const QString library = sound();
    const QByteArray before = read(QStringLiteral("a.mdb"));
    checkLibrary(library);
    EXPECT_EQ(read(QStringLiteral("a.mdb")), before);
    EXPECT_EQ(filesInFolder(),
              QStringList({QStringLiteral("a.mdb"), QStringLiteral("a.mdb.toml")}));
}

}  // namespace
}  // namespace varo
