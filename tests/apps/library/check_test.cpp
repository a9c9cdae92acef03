#include "library/library_files.h"
#include "support/process.h"

namespace varo {
namespace {

constexpr auto soundText = R"(
folder = [{id = 1, name = "a"}, {id = 2, name = "b", parent = 1}, {id = 3, name = "c", parent = 2}]
formula = [
  {id = 1, name = "f", folder = 1, expression = "x+y", values = {x = "1"}, picture = {base64 = "Qk0="}},
  {id = 2, name = "g", folder = 1}]
value = [{name = "deleted", formula = 99, value = "1"}, {name = "unowned", value = "1"}]
property = [{id = 1, name = "p", filter = 5, node = 1, node_type = 2},
  {id = 1, name = "library", node = 0, node_type = 1}]
condition = [{id = 1, user = 5, type = 1}, {id = 2, user = 5, parent = 1, type = 4}]
expression = [{filter = 5, id = 2, field = "x", compare = 1, constant = "2"}]
)";

/// What is done to the sound library, and the fault that is then found, or several, separated by ";
/// ".
constexpr auto damages = R"(
alter table Property drop FilterID → table Property has no column FilterID
drop table FilterCond → table FilterCond cannot be read: no such table: FilterCond
drop table FilterExpressions → table FilterExpressions cannot be read: no such table: FilterExpressions
update Tree set ID=0 where ID=3 → folder 0 "c": its identifier stands for the top level
update Tree set PID=9 where ID=3 → folder 3 "c": its parent 9 does not exist
update Formula set PID=-4 where ID=2 → formula 2 "g": its folder -4 does not exist
update Tree set PID=3 where ID=1 → folders are inside themselves: 1 "a" > 2 "b" > 3 "c" > 1 "a"
update Tree set PID=3 where ID=3 → folders are inside themselves: 3 "c" > 3 "c"
insert into Tree values(7,'d',1,1) → 2 folders below folder 1 have the order number 1
update Formula set OrderID=4 → 2 formulas of folder 1 have the order number 4
update Formula set PicType=1 where ID=2 → formula 2 "g": its picture type is 1
update Formula set PicType=2 where ID=2 → formula 2 "g": its picture type is 2 without a picture
update Formula set PicType=0 → formula 1 "f": it has a picture with picture type 0
update Formula set Pic='GIF89a' where ID=1 → formula 1 "f": its picture is no bmp, jpg, png or wmf
update Property set NodeID=8 where NodeType=1 → property 1 "library": its folder 8 does not exist
update Property set NodeID=3 where NodeType=2 → property 1 "p": its formula 3 does not exist
update Property set NodeType=3 where NodeID=0 → property 1 "library": its node type is 3
update Property set FilterID=6 where NodeType=1 → property 1 "library": its filter 6 has no conditions
update FilterCond set ParentID=3 where ID=2 → condition 2 of filter 5: its parent 3 does not exist
insert into FilterCond values(3,5,2,1) → condition 3 of filter 5: its parent 2 is a comparison
delete from FilterExpressions → condition 2 of filter 5: it has no comparison
update FilterCond set Type=9 where ID=1 → condition 1 of filter 5: its type is 9
update FilterCond set ParentID=0 → filter 5: the condition has several roots, of which the last decides; filter 5: this group is empty
update FilterCond set ID=2,Type=4 where ID=1 → condition 2 of filter 5: its parent 1 does not exist; 2 conditions of filter 5 have the identifier 2
insert into FilterCond values(4,5,6,1),(5,5,4,1),(6,5,5,1) → filter 5: conditions are inside themselves: 4 > 5 > 6 > 4
insert into FilterCond values(4,5,1,1),(4,5,4,1) → 2 conditions of filter 5 have the identifier 4; filter 5: conditions are inside themselves: 4 > 4
update FilterCond set UserID='x' where ID=1 → condition 2 of filter 5: its parent 1 does not exist; row 1 of table FilterCond: its UserID is no whole number of 32 bits
update RecentVar set FormulaID=4294967296 where VarName='x' → row 1 of table RecentVar: its FormulaID is no whole number of 32 bits
insert into FilterCond values(4,5,1,3) → filter 5: this group is empty
update FilterCond set ParentID=0,ID=0 where ID=1 → condition 2 of filter 5: its parent 1 does not exist; filter 5: conditions are inside themselves: 0 > 0
update FilterExpressions set TheConst='x' → filter 5: this comparison needs a number
update FilterExpressions set TheConst='2 m' → warning: filter 5: only the number at the start of the constant counts
update FilterExpressions set CompareType=8 → filter 5: this comparison is unknown
update FilterExpressions set FieldName='' → filter 5: the name of a property is empty
insert into RecentVar(VarName,FormulaID) values('X',1) → variable "x" of formula 1 has 2 values
insert into Property select 1,'q',0,1,2 → 2 properties of formula 1 have the identifier 1
create trigger t after update on Tree begin delete from Formula; end → the tables can lose or invent rows: an identifier that the database does not give, a trigger or the like
delete from TableInfo → the version record DBVersion is missing
update TableInfo set PrptyVal='1.0' → the version record DBVersion is "1.0", not "2.0"
)";

class Check : public LibraryFiles {
  protected:
    /// The faults and warnings of the sound library after some statements.
    QStringList faultsAfter(const QStringList& statements) const {
        write(u"a.mdb"_s, sound_);
        data::Connection connection = open(path(u"a.mdb"_s));
        for (const QString& statement : statements) {
            connection.execute(statement);
        }
        const CheckReport report = checkLibrary(path(u"a.mdb"_s));
        QStringList found = report.faults;
        for (const QString& warning : report.warnings) {
            found.append(u"warning: "_s + warning);
        }
        return found;
    }

    const QString library_ = build(u"a.mdb"_s, soundText);
    const QByteArray sound_ = read(u"a.mdb"_s);
};

TEST_F(Check, ReportsTheFaultsOfADamagedLibrary) {
    for (const QString& row : QString::fromUtf8(damages).split(u'\n', Qt::SkipEmptyParts)) {
        EXPECT_EQ(faultsAfter({row.section(u" → "_s, 0, 0)}),
                  row.section(u" → "_s, 1).split(u"; "_s));
    }
}

TEST_F(Check, CountsWhatASoundLibraryHoldsAndChangesNothing) {
    const CheckReport report = checkLibrary(library_);
    EXPECT_EQ(report.faults, QStringList());
    EXPECT_EQ(report.folders * 100 + report.formulas * 10 + report.pictures, 321);
    EXPECT_EQ(read(u"a.mdb"_s), sound_);
    EXPECT_EQ(files(), u"a.mdb text.toml"_s);
    EXPECT_EQ(faultsAfter({u"update TableInfo set PrptyVal = ' 2.0 '"_s}), QStringList());
}

TEST_F(Check, HoldsEveryTextToItsLimitInUtf16) {
    // Columns with the name of what they hold, its limit and the number of rows.
    for (const QString& column :
         u"Tree set Name,name,40,3;Formula set Name,name,20,2;Formula set Formula,expression,255,2;"
         "Formula set Memo,memo,255,2;RecentVar set Value,value,255,3;"
         "Property set PropName,name,50,2"_s.split(u';')) {
        const QStringList parts = column.split(u',');
        const int limit = parts[2].toInt();
        const auto faultsWith = [&](int size) {
            const QString text = u"😀"_s.repeated(size / 2) + u"n"_s.repeated(size % 2);
            return faultsAfter({u"update %1 = '%2'"_s.arg(parts[0], text)});
        };
        EXPECT_EQ(faultsWith(limit), QStringList());
        const QString fault = u": its %1 has %2 characters, over the limit of %3"_s.arg(
            parts[1], QString::number(limit + 1), parts[2]);
        EXPECT_EQ(faultsWith(limit + 1).filter(fault).size(), parts[3].toInt())
            << qPrintable(column);
    }
}

TEST_F(Check, NamesEachRingOnceAndEachFaultOnALineOfItsOwn) {
    EXPECT_EQ(faultsAfter({u"insert into Tree values(4,'d',5,1), (5,'e',4,1), (6,'f',5,2)"_s,
                           u"update Tree set PID = 3, Name = char(97, 10, 13) where ID = 1"_s}),
              (QStringList{u"folders are inside themselves: "
                           "1 \"a  \" > 2 \"b\" > 3 \"c\" > 1 \"a  \""_s,
                           u"folders are inside themselves: 4 \"d\" > 5 \"e\" > 4 \"d\""_s}));
}

TEST_F(Check, CutsLongRingsLongNamesAndFaultsOfOneKind) {
    const QString many = u"with n(i) as (select 10 union all select i+1 from n where i < 3000) "_s;
    QStringList faults = faultsAfter(
        {many + u"insert into Tree select i,'f',iif(i=10,3000,i-1),1 from n"_s,
         u"update Tree set Name = replace(hex(zeroblob(4000)),'0','长') where ID = 2000"_s});
    ASSERT_EQ(faults.size(), 2) << faults.join(u'\n').left(2000).toStdString();
    EXPECT_TRUE(faults[0].contains(u"10 \"f\" > 11 \"f\" > "_s) &&
                faults[0].endsWith(u" > 29 \"f\" > ... (2991 in all) > 10 \"f\""_s));
    EXPECT_EQ(faults[1],
              u"folder 2000 \"%1\": its name has 8000 characters, over the limit of 40"_s.arg(
                  u"长"_s.repeated(99)));
    faults = faultsAfter({many + u"insert into Tree select i,'f',5,i from n"_s});
    EXPECT_EQ(faults.size(), 1001);
    EXPECT_EQ(faults.last(), u"... and 1991 more like that"_s);
}

TEST_F(Check, ReportsAFileThatIsNoLibraryOrMissing) {
    write(u"text.mdb"_s, "no library");
    write(u"empty.mdb"_s, "");
    for (const QString& name : {u"text.mdb"_s, u"empty.mdb"_s, u"missing.mdb"_s}) {
        const QStringList faults = checkLibrary(path(name)).faults;
        EXPECT_TRUE(faults.size() == 1 && faults[0].startsWith(u"the file cannot be opened: "))
            << name.toStdString();
    }
}

TEST_F(Check, ReportsDamageAnywhereInTheFile) {
    QByteArrayList damaged{sound_.chopped(sound_.size() / 2)};
    constexpr qsizetype page = 4096;
    for (qsizetype at = page; at < sound_.size(); at += page) {
        damaged.append(QByteArray(sound_).replace(at, 64, QByteArray(64, '\x5A')));
    }
    for (const QByteArray& content : damaged) {
        EXPECT_FALSE(checkLibrary(write(u"damaged.mdb"_s, content)).faults.isEmpty())
            << "page " << damaged.indexOf(content);
    }
}

TEST_F(Check, NeitherCheckingNorWritingAsTextChangesALibraryThatAKilledProgramLeft) {
    const QString library = build(u"a.mdb"_s, "[[folder]]\nname = 'kept'\n");
    test::LibraryProcess writer({u"spill"_s, library});
    ASSERT_EQ(writer.readLine(), u"spilled"_s);
    writer.kill();
    writer.wait();
    const QByteArray half = read(u"a.mdb"_s);
    const QByteArray journal = read(u"a.mdb-journal"_s);
    EXPECT_EQ(checkLibrary(library).faults, QStringList());
    EXPECT_TRUE(dump(library).contains("kept"));
    EXPECT_TRUE(read(u"a.mdb"_s) == half && read(u"a.mdb-journal"_s) == journal);
    EXPECT_EQ(files(), u"a.mdb a.mdb-journal text.toml"_s);
}

}  // namespace
}  // namespace varo
