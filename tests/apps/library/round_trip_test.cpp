#include "library/library_files.h"
#include "store/template.h"

#include <random>

namespace varo {
namespace {

class RoundTrip : public LibraryFiles {
  protected:
    /// Every row of the library, with the picture's bytes in hexadecimal, in no particular order.
    static QStringList everything(const QString& library) {
        data::Connection connection = open(library);
        QStringList all;
        for (const char* query :
             {"* from Tree", "ID,Name,Formula,Memo,PicType,PID,OrderID,hex(Pic) from Formula",
              "* from RecentVar", "* from Property", "* from FilterCond",
              "* from FilterExpressions", "* from TableInfo"}) {
            data::Recordset rs = connection.query(u"select "_s + QLatin1StringView(query));
            all += test::remainingRows(rs);
        }
        all.sort();
        return all;
    }

    /// An empty library filled by `fill(connection)`, and the library that is built from its dump,
    /// which must have the same rows and give the same text.
    template <class Fill>
    QString copyOf(Fill fill) const {
        const QString library = path(u"a.mdb"_s);
        QFile::remove(library);
        createEmptyLibrary(library);
        data::Connection connection = open(library);
        data::Transaction transaction(connection);
        fill(connection);
        transaction.commit();
        const QByteArray text = dump(library);
        const QString copy = build(u"copy.mdb"_s, text);
        EXPECT_EQ(everything(copy), everything(library));
        EXPECT_EQ(dump(copy), text);
        return copy;
    }
};

/// Separated by "@".
const QString hostileTexts = QString::fromUtf8(
    "@ @a\"b@a'b@a\"b'c\\d@\\@'''@\"\"\"@\n@\n\n\"\"\"\n@first\nsecond \\\n   third\t\n@"
    "dos\r\nline\rend\r@# no comment@[[folder]]@100%1 %2 %s@\x01\x02\x1B\x7F@σ ₁ 弯矩 “引号”@"
    "😀 \xF4\x8F\xBF\xBD@\xEF\xBB\xBF\xE2\x80\xA8\xE2\x80\xAE\xC2\x85\xEF\xBF\xBE@"
    "'; drop table Tree; --");

TEST_F(RoundTrip, KeepsHostileTextsInEveryColumn) {
    copyOf([](data::Connection& connection) {
        const QString formulas = u"insert into Formula values(?,?,?,?,0,?,?,null)"_s;
        qint32 id = 0;
        for (const QString& text : hostileTexts.split(u'@')) {
            ++id;
            connection.execute(u"insert into Tree values(?,?,?,?)"_s, {id, text, id / 2, id});
            connection.execute(formulas, {id, text, text, text, id / 3, id});
            connection.execute(u"insert into RecentVar values(?,?,?,2,?)"_s,
                               {text, id, text, text});
            connection.execute(u"insert into Property values(?,?,?,?,?)"_s,
                               {id, text, id % 2, id, 1 + id % 2});
            connection.execute(u"insert into FilterCond values(?,1,?,4)"_s, {id, id - 1});
            connection.execute(u"insert into FilterExpressions values(1,?,?,?,?,?,?)"_s,
                               {id, text, text, id, id, text});
            connection.execute(u"insert into TableInfo values(?,?)"_s, {text, text});
        }
        for (int first = 0; first < 0x10000; first += 0x100) {
            QString text;
            for (int code = std::max(first, 1); code < first + 0x100; ++code) {
                if (!QChar(code).isSurrogate()) {
                    text += QChar(code);
                }
            }
            connection.execute(u"insert into RecentVar values(?,0,?,0,'')"_s, {text, text});
            connection.execute(formulas, {first + 100, text, text, text + u'\n', 0, first + 100});
        }
    });
}

TEST_F(RoundTrip, KeepsLongTextsPicturesOfEveryTypeAndTheOrderOfTheValuesOfOneName) {
    const QString copy = copyOf([](data::Connection& connection) {
        // The pieces of the longest begin between the halves of a character.
        const QString text = u"很长\n\"'"_s.repeated(2500);
        const QString longest = u"a"_s + u"😀"_s.repeated(100'000);
        connection.execute(u"insert into Formula values(9,?,?,?,0,0,9,null)"_s,
                           {longest, longest, longest});
        connection.execute(u"insert into RecentVar values('w',9,?,0,'')"_s, {longest});
        for (const int size : {1, 56, 57, 58, 58'368, 58'369, 100'000}) {
            connection.execute(u"insert into Formula values(?,?,'',?,2,0,?,randomblob(?))"_s,
                               {size, text, text, size, size});
        }
        connection.execute(
            u"insert into Formula(Name,Formula,Memo,PicType,PID,OrderID,Pic) values"
            "('a','','',0,0,1,x'0102'), ('b','','',2,0,2,''), ('c','','',7,0,3,'text')"_s);
        connection.execute(
            u"insert into RecentVar values"
            "('a',1,'source',1,'p'), ('b',1,'2',0,''), ('A',1,'typed',0,'')"_s);
    });
    EXPECT_EQ(rows(copy, u"select [Value] from RecentVar where VarName = 'a' order by rowid"_s),
              u"source typed"_s);
}

TEST_F(RoundTrip, KeepsStrayReferencesAndRings) {
    std::mt19937 random(12345);
    const auto number = [&](int from, int to) {
        return qint32(std::uniform_int_distribution(from, to)(random));
    };
    for (int round = 0; round < 20; ++round) {
        copyOf([&](data::Connection& connection) {
            for (int row = 0; row < 40; ++row) {
                for (const char* table :
                     {"Tree values(?,'f',?,?)", "Formula values(?,'f','','',0,?,?,null)"}) {
                    connection.execute(u"insert or ignore into "_s + QLatin1StringView(table),
                                       {number(-3, 40), number(-3, 40), number(-2, 5)});
                }
                connection.execute(u"insert into RecentVar values(?,?,?,?,'')"_s,
                                   {QString(QChar(number('A', 'f'))), number(-3, 40),
                                    QString::number(row), number(0, 1)});
            }
        });
    }
}

TEST_F(RoundTrip, WritesAConditionAsALineWhereThatTellsItsRows) {
    const QByteArray text = dump(copyOf([](data::Connection& connection) {
        for (const auto& [filter, name] :
             {std::pair{1, "a"}, {1, "b"}, {2, "c"}, {3, "d"}, {4, "e"}}) {
            connection.execute(u"insert into Property values(1,?,?,1,1)"_s,
                               {QString::fromLatin1(name), filter});
        }
        // Filter 3 has a term with a table, filter 4 goes on behind filter 2.
        connection.execute(
            u"insert into FilterCond values(21,1,0,1), (22,1,21,4), (23,1,21,3), (24,1,23,4),"
            "(30,2,0,4), (20,3,0,4), (31,4,0,4), (19,9,0,4)"_s);
        connection.execute(
            u"insert into FilterExpressions values(1,22,'','跨度',0,5,'2'),"
            "(1,24,'','材 料',0,7,'木材'), (2,30,'','c',0,0,''), (3,20,'t','d',0,0,'1'),"
            "(4,31,'','e',0,0,'12 mm')"_s);
        connection.execute(u"update FilterExpressions set TheConst = '3' where FilterID = 2"_s);
    }));
    EXPECT_EQ(QString::fromUtf8(text.sliced(text.indexOf("[[property]]"))).simplified(),
              uR"([[property]] id = 1 name = "a" filter = 1 node = 1 node_type = 1
                  condition = '跨度 >= 2 and not "材 料" equal "木材"'
                  [[property]] id = 1 name = "b" filter = 1 node = 1 node_type = 1
                  [[property]] id = 1 name = "c" filter = 2 node = 1 node_type = 1
                  condition = "c = 3" condition_id = 30
                  [[property]] id = 1 name = "d" filter = 3 node = 1 node_type = 1
                  [[property]] id = 1 name = "e" filter = 4 node = 1 node_type = 1
                  condition = 'e = "12 mm"'
                  [[condition]] id = 20 user = 3 type = 4 [[condition]] id = 19 user = 9 type = 4
                  [[expression]] filter = 3 id = 20 table = "t" field = "d" compare = 0
                  constant = "1")"_s.simplified());
    const QString built = build(u"b.mdb"_s, R"(
property = [{id = 1, name = "a", node = 1, node_type = 1, condition = "a = 1 or b = 2"},
            {id = 2, name = "b", filter = 7, node = 1, node_type = 1, condition = "c = 3"}])");
    EXPECT_EQ(rows(built, u"select PropName || FilterID from Property"_s), u"a8 b7"_s);
    EXPECT_EQ(rows(built, u"select UserID||':'||ID||','||ParentID||','||Type from FilterCond"_s),
              u"8:1,0,2 8:2,1,4 8:3,1,4 7:4,0,4"_s);
}

TEST_F(RoundTrip, ReadsNullAsEmptyOrZeroAndAddsTheVersion) {
    const QString library = path(u"a.mdb"_s);
    createEmptyLibrary(library);
    for (const char* statement :
         {"insert into Tree(ID) values(1)",
          "insert into Formula(ID,PicType,PID) values(1,null,null)",
          "insert into RecentVar values(null,null,null,null,null)", "delete from TableInfo"}) {
        open(library).execute(QLatin1StringView(statement));
    }
    const QString copy = build(u"copy.mdb"_s, dump(library));
    EXPECT_EQ(rows(copy, u"select PID + OrderID + PicType || Name from Formula"_s), u"0"_s);
    EXPECT_EQ(rows(copy, u"select PrptyVal from TableInfo"_s), u"2.0"_s);
}

TEST_F(RoundTrip, NamesWhatHasNoPlaceInATextAndWritesTheRest) {
    const QString library = path(u"a.mdb"_s);
    createEmptyLibrary(library);
    data::Connection connection = open(library);
    for (const char* statement :
         {"drop table Tree", "create table Tree(ID, Name, PID, OrderID)", "drop table Formula",
          "create table Formula(ID, Name, Formula, Memo, Pic, PicType, PID, OrderID)",
          "insert into Tree values(1,'kept',0,1), (null,'a',0,1), ('x','b',0,1),"
          "(4294967297,'c',0,1), (1,'d',0,1), (2,'e','y',1), (3.5,'f',0,1), (4.0,'whole',1,1)",
          "insert into Formula values(5,'in f','x','',17,0,1,1), (6,'kept','','',null,'z',1,2)",
          "insert into RecentVar values('v','w','1',0,''), ('kept',5,'1',0,'')",
          "insert into Property values(1,'p','q',1,1), (1,'kept',0,1,1)",
          "insert into FilterCond values(1,2,'r',4)",
          "insert into FilterExpressions values(1,2,'','',9999999999,0,'')"}) {
        connection.execute(QLatin1StringView(statement));
    }
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    const QStringList leftOut = dumpLibrary(library, out);
    const QString number = u"it is left out, %1 is no whole number of 32 bits"_s;
    EXPECT_EQ(leftOut.join(u'\n').toStdString(),
              (QStringList{u"row 2 of table Tree: it is left out, it has no ID"_s,
                           u"row 3 of table Tree: "_s + number.arg(u"ID"_s),
                           u"row 4 of table Tree: "_s + number.arg(u"ID"_s),
                           u"row 5 of table Tree: it is left out, another row has the ID 1"_s,
                           u"row 6 of table Tree: "_s + number.arg(u"PID"_s),
                           u"row 7 of table Tree: "_s + number.arg(u"ID"_s),
                           u"row 1 of table RecentVar: "_s + number.arg(u"FormulaID"_s),
                           u"row 1 of table Formula: Pic is left out, it cannot be read: "
                           "cannot open value of type integer"_s,
                           u"row 2 of table Formula: PicType is left out, it is no whole number "
                           "of 32 bits"_s,
                           u"row 1 of table Property: "_s + number.arg(u"FilterID"_s),
                           u"row 1 of table FilterCond: "_s + number.arg(u"ParentID"_s),
                           u"row 1 of table FilterExpressions: "_s + number.arg(u"FieldType"_s)})
                  .join(u'\n')
                  .toStdString());
    const QString copy = build(u"copy.mdb"_s, out.data());
    EXPECT_EQ(rows(copy, u"select ID,Name,PID from Tree"_s), u"1|kept|0 4|whole|1"_s);
    EXPECT_EQ(rows(copy, u"select ID,Name from Formula"_s), u"5|in f 6|kept"_s);
    EXPECT_EQ(rows(copy, u"select VarName,FormulaID from RecentVar"_s), u"kept|5"_s);
}

TEST_F(RoundTrip, WritesTheTextInTreeOrder) {
    const QByteArray text = dump(build(u"a.mdb"_s, R"(
folder = [{id = 2, name = "first", order = 3}, {name = "second"}, {name = "inside", parent = 2}]
formula = [{id = 1, name = "杆", folder = 2, memo = "one\ntwo", values = {F = "12", "σ" = ""}},
           {id = 4, name = "at the top", expression = 'StrCat("a",b)'}]
value = [{name = "A", formula = 1, value = "314", source = 2, memo = "beams.mdb->profiles"}]
)"));
    EXPECT_EQ(QString::fromUtf8(text.sliced(text.indexOf("[[formula]]"))).simplified(),
              uR"([[formula]] id = 4 name = "at the top" expression = 'StrCat("a",b)'
                  [[folder]] id = 2 name = "first" order = 3
                  [[formula]] id = 1 name = "杆" folder = 2 expression = ""
                  memo = """ one two""" values = { F = "12", "σ" = "" }
                  [[value]] name = "A" formula = 1 value = "314" source = 2
                  memo = "beams.mdb->profiles"
                  [[folder]] id = 3 name = "inside" parent = 2
                  [[folder]] id = 1 name = "second")"_s.simplified());
    QBuffer closed;
    EXPECT_ANY_THROW(dumpLibrary(path(u"a.mdb"_s), closed)) << "the output takes nothing";
}

TEST_F(RoundTrip, FillsInTheNumbersThatTheTextLeavesOut) {
    const QString library = build(u"a.mdb"_s, R"(
folder = [{name = "a"}, {name = "b", id = 1, order = 7}, {name = "c"}, {name = "d", parent = 1}]
formula = [{name = "e", folder = 1}, {name = "f"}, {name = "g"}]
value = [{name = "x", formula = 57, value = "of a deleted formula"}]
)");
    const QString numbers = u"select Name || ID || PID || OrderID from %1 order by Name"_s;
    EXPECT_EQ(rows(library, numbers.arg(u"Tree"_s)), u"a201 b107 c308 d411"_s);
    EXPECT_EQ(rows(library, numbers.arg(u"Formula"_s)), u"e111 f201 g302"_s);
    data::Connection connection = open(library);
    connection.execute(u"insert into Formula(Name) values('new')"_s);
    EXPECT_EQ(connection.lastInsertedId(), 58) << "it takes over the values of a deleted one";
}

}  // namespace
}  // namespace varo
