#include "library_files.h"
#include "store/template.h"

#include <random>

namespace varo {
namespace {

const QStringList tables = {
    QStringLiteral("Tree"),      QStringLiteral("Formula"),    QStringLiteral("RecentVar"),
    QStringLiteral("Property"),  QStringLiteral("FilterCond"), QStringLiteral("FilterExpressions"),
    QStringLiteral("TableInfo"),
};

class RoundTrip : public LibraryFiles {
  protected:
    QString emptyLibrary() const {
        createEmptyLibrary(path(QStringLiteral("a.mdb")));
        return path(QStringLiteral("a.mdb"));
    }

    /// Every row of the library, with the picture's bytes in hexadecimal, in no particular order.
    static QStringList rows(const QString& library) {
        data::Connection connection = open(library);
        QStringList all;
        for (const QString& table : tables) {
            auto rs = connection.query(table == u"Formula"
                                           ? QStringLiteral("select *, hex(Pic) from Formula")
                                           : QStringLiteral("select * from ") + table);
            for (; !rs.atEnd(); rs.moveNext()) {
                QStringList fields = {table};
                for (int column = 0; column < rs.columnCount(); ++column) {
                    if (rs.columnName(column) != u"Pic") {
                        fields.append(rs.text(column));
                    }
                }
                all.append(fields.join(QStringLiteral(" | ")));
            }
        }
        all.sort();
        return all;
    }

    /// Dumps the library, builds another from that, and compares rows and the two texts.
    void expectRoundTrip(const QString& library) const {
        const QByteArray text = dump(library);
        const QString copy = build(QStringLiteral("copy.mdb"), text);
        EXPECT_EQ(rows(copy), rows(library));
        EXPECT_EQ(dump(copy), text);
    }
};

const char* const hostileTexts[] = {
    "",
    " ",
    "a\"b",
    "a'b",
    "a\"b'c\\d",
    "\\",
    "'''",
    "\"\"\"",
    "\n",
    "\n\n\"\"\"\n",
    "first\nsecond \\\n   third\t\n",
    "dos\r\nline\rend\r",
    "# no comment",
    "[[folder]]",
    "100%1 %2 %s",
    "\x01\x02\x1B\x7F",
    "σ ₁ 弯矩 “引号”",
    "\xF0\x9F\x98\x80 \xF4\x8F\xBF\xBD",
    "\xEF\xBB\xBF\xE2\x80\xA8\xE2\x80\xAE\xC2\x85\xEF\xBF\xBE",
    "'; drop table Tree; --",
};

TEST_F(RoundTrip, HostileTextsInEveryColumn) {
    const QString library = emptyLibrary();
    data::Connection connection = open(library);
    data::Transaction transaction(connection);
    qint32 id = 0;
    for (const char* utf8 : hostileTexts) {
        ++id;
        const QString text = QString::fromUtf8(utf8);
        connection.execute(QStringLiteral("insert into Tree values(?,?,?,?)"),
                           {id, text, id / 2, id});
        connection.execute(QStringLiteral("insert into Formula(ID,Name,Formula,Memo,PID,OrderID) "
                                          "values(?,?,?,?,?,?)"),
                           {id, text, text, text, id / 3, id});
        connection.execute(QStringLiteral("insert into RecentVar values(?,?,?,?,?)"),
                           {text, id, text, 2, text});
        connection.execute(QStringLiteral("insert into RecentVar values(?,?,?,0,'')"),
                           {text + u'x', id, text});
        connection.execute(QStringLiteral("insert into RecentVar values(?,0,?,0,'')"),
                           {text, text});
        connection.execute(QStringLiteral("insert into Property values(?,?,?,?,?)"),
                           {id, text, id % 2, id, 1 + id % 2});
        connection.execute(QStringLiteral("insert into FilterCond values(?,1,?,4)"), {id, id - 1});
        connection.execute(QStringLiteral("insert into FilterExpressions values(1,?,?,?,?,?,?)"),
                           {id, text, text, id, id, text});
        connection.execute(QStringLiteral("insert into TableInfo values(?,?)"), {text, text});
    }
    transaction.commit();
    connection.close();
    expectRoundTrip(library);
}

TEST_F(RoundTrip, EveryCharacterOfTheBasicPlane) {
    const QString library = emptyLibrary();
    data::Connection connection = open(library);
    data::Transaction transaction(connection);
    for (int first = 0; first < 0x10000; first += 0x100) {
        QString text;
        for (int code = std::max(first, 1); code < first + 0x100; ++code) {
            if (!QChar(code).isSurrogate()) {
                text += QChar(code);
            }
        }
        connection.execute(QStringLiteral("insert into RecentVar values(?,0,?,0,'')"),
                           {text, text});
        connection.execute(
            QStringLiteral("insert into Formula(Name,Formula,Memo,PID,OrderID) values(?,?,?,0,?)"),
            {text, text, QString(text + u'\n'), first});
    }
    transaction.commit();
    connection.close();
    expectRoundTrip(library);
}

TEST_F(RoundTrip, LongTextsAndPictures) {
    const QString library = emptyLibrary();
    data::Connection connection = open(library);
    const QString text = QStringLiteral("很长\n\"'").repeated(2500);
    for (const int size : {1, 56, 57, 58, 100'000}) {
        connection.execute(QStringLiteral("insert into Formula(Name,Memo,PicType,PID,OrderID,Pic) "
                                          "values(?,?,2,0,?,randomblob(?))"),
                           {text, text, size, size});
    }
    connection.close();
    expectRoundTrip(library);
}

TEST_F(RoundTrip, PictureTypeThatDisagreesWithThePicture) {
    const QString library = emptyLibrary();
    data::Connection connection = open(library);
    connection.execute(QStringLiteral(
        "insert into Formula(Name,Formula,Memo,PicType,PID,OrderID,Pic) values"
        "('a','','',0,0,1,x'0102'), ('b','','',2,0,2,''), ('c','','',7,0,3,'text')"));
    connection.close();
    expectRoundTrip(library);
}

TEST_F(RoundTrip, RandomReferencesWithStraysAndRings) {
    std::mt19937 random(12345);
    const auto number = [&](int from, int to) {
        return qint32(std::uniform_int_distribution(from, to)(random));
    };
    for (int round = 0; round < 20; ++round) {
        const QString library = path(QStringLiteral("%1.mdb").arg(round));
        createEmptyLibrary(library);
        data::Connection connection = open(library);
        data::Transaction transaction(connection);
        for (int row = 0; row < 40; ++row) {
            connection.execute(QStringLiteral("insert or ignore into Tree values(?,'f',?,?)"),
                               {number(-3, 40), number(-3, 40), number(-2, 5)});
            connection.execute(QStringLiteral("insert or ignore into Formula values"
                                              "(?,'f','','',0,?,?,null)"),
                               {number(-3, 40), number(-3, 40), number(-2, 5)});
            connection.execute(QStringLiteral("insert into RecentVar values(?,?,?,?,'')"),
                               {QString(QChar(number('A', 'f'))), number(-3, 40),
                                QString::number(row), number(0, 1)});
        }
        transaction.commit();
        connection.close();
        expectRoundTrip(library);
    }
}

TEST_F(RoundTrip, ValuesOfOneNameKeepTheirOrder) {
    const QString library = emptyLibrary();
    data::Connection connection = open(library);
    connection.execute(QStringLiteral("insert into Formula values(1,'f','','',0,0,1,null)"));
    connection.execute(
        QStringLiteral("insert into RecentVar values"
                       "('a',1,'source',1,'p'), ('b',1,'2',0,''), ('A',1,'typed',0,'')"));
    connection.close();
    const QString copy = build(QStringLiteral("copy.mdb"), dump(library));
    EXPECT_EQ(rowsOf(copy, QStringLiteral("select [Value] from RecentVar where VarName = 'a' "
                                          "order by rowid")),
              QStringList({QStringLiteral("source"), QStringLiteral("typed")}));
    expectRoundTrip(library);
}

TEST_F(RoundTrip, NullReadsAsEmptyOrZero) {
    const QString library = emptyLibrary();
    data::Connection connection = open(library);
    connection.execute(QStringLiteral("insert into Tree(ID) values(1)"));
    connection.execute(QStringLiteral("insert into Formula(ID,PicType,PID) values(1,null,null)"));
    connection.execute(QStringLiteral("insert into RecentVar values(null,null,null,null,null)"));
    connection.execute(QStringLiteral("insert into TableInfo values('Empty',null)"));
    connection.close();
    const QByteArray text = dump(library);
    const QString copy = build(QStringLiteral("copy.mdb"), text);
    EXPECT_EQ(dump(copy), text);
    EXPECT_EQ(rowsOf(copy, QStringLiteral("select PID + OrderID + PicType || Name from Formula")),
              QStringList(QStringLiteral("0")));
}

TEST_F(RoundTrip, ALibraryWithoutVersionGetsOne) {
    const QString library = emptyLibrary();
    open(library).execute(QStringLiteral("delete from TableInfo"));
    const QString copy = build(QStringLiteral("copy.mdb"), dump(library));
    EXPECT_EQ(rowsOf(copy, QStringLiteral("select PrptyVal from TableInfo")),
              QStringList(QStringLiteral("2.0")));
}

TEST_F(RoundTrip, TheTextIsInTreeOrder) {
    const QByteArray text =
        R"(# A formula library; "varo-library build" makes a library file of it.

[[info]]
name = "DBVersion"
value = "2.0"

[[formula]]
id = 4
name = "at the top"
expression = 'StrCat("a",b)'

[[folder]]
id = 2
name = "first"
order = 3

[[formula]]
id = 1
name = "杆的正应力"
folder = 2
expression = "F/A"
memo = """
one
two"""
values = { F = "12000", "σ" = "" }
picture = { base64 = """
AQID
""" }

[[value]]
name = "A"
formula = 1
value = "314"
source = 2
memo = "beams.mdb->profiles"

[[folder]]
id = 3
name = "inside"
parent = 2

[[folder]]
id = 1
name = "second"

[[value]]
name = "A"
value = "1"

[[property]]
id = 1
name = "p"
filter = 9
node = 2
node_type = 1

[[condition]]
id = 5
user = 9
type = 4

[[expression]]
filter = 9
id = 5
field = "length"
compare = 3
constant = "12"
)";
    EXPECT_EQ(dump(build(QStringLiteral("a.mdb"), text)).toStdString(), text.toStdString());
}

TEST_F(RoundTrip, NumbersThatTheTextLeavesOutAreFilledIn) {
    const QString library = build(QStringLiteral("a.mdb"),
                                  "[[folder]]\nname = \"a\"\n"
                                  "[[folder]]\nname = \"b\"\nid = 1\norder = 7\n"
                                  "[[folder]]\nname = \"c\"\n"
                                  "[[folder]]\nname = \"d\"\nparent = 1\n"
                                  "[[formula]]\nname = \"e\"\nfolder = 1\n"
                                  "[[formula]]\nname = \"f\"\n"
                                  "[[formula]]\nname = \"g\"\n");
    EXPECT_EQ(rowsOf(library, QStringLiteral("select Name || ID || PID || OrderID from Tree "
                                             "order by Name")),
              QStringList({QStringLiteral("a201"), QStringLiteral("b107"), QStringLiteral("c308"),
                           QStringLiteral("d411")}));
    EXPECT_EQ(
        rowsOf(library, QStringLiteral("select Name || ID || PID || OrderID from Formula "
                                       "order by Name")),
        QStringList({QStringLiteral("e111"), QStringLiteral("f201"), QStringLiteral("g302")}));
}

TEST_F(RoundTrip, ANewFormulaDoesNotTakeOverTheValuesOfADeletedOne) {
    const QString library = build(QStringLiteral("a.mdb"),
                                  "[[formula]]\nname = \"a\"\n"
                                  "[[value]]\nname = \"x\"\nformula = 57\nvalue = \"1\"\n");
    data::Connection connection = open(library);
    connection.execute(QStringLiteral("insert into Formula(Name) values('new')"));
    EXPECT_EQ(connection.lastInsertedId(), 58);
}

}  // namespace
}  // namespace varo
