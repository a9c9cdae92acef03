#include "program.h"

#include "library/library_files.h"

namespace varo {
namespace {

class LibraryProgram : public LibraryFiles {
  protected:
    /// Runs with arguments that are separated by blanks, and returns what is written to `output`,
    /// or to the standard output, and behind a "!" to the error output.
    static QByteArray run(int code, const QString& arguments, const QString& output = {}) {
        qputenv("QT_LOGGING_RULES", "default.warning=false");  // of a missing XDG_RUNTIME_DIR
        QProcess program;
        program.setStandardOutputFile(output);
        program.start(QStringLiteral(VARO_LIBRARY_PROGRAM),
                      arguments.split(u' ', Qt::SkipEmptyParts));
        const auto [status, out, err] = test::outcomeOf(program);
        EXPECT_EQ(status, code) << arguments.toStdString();
        return QByteArray::fromStdString(out + (err.empty() ? "" : "!") + err);
    }
};

TEST_F(LibraryProgram, TellsItsOutcomeByExitCodeOutputAndErrorOutput) {
    const QString library = path(u"a.mdb"_s);
    const QString text = write(u"a.toml"_s, "[[folder]]\nname = \"电\"\n");
    EXPECT_EQ(run(0, u"build %1 %2"_s.arg(text, library)), "");
    EXPECT_EQ(run(0, u"check "_s + library), "1 folders, 0 formulas, 0 pictures\n");
    EXPECT_TRUE(run(0, u"dump "_s + library).contains("name = \"电\"\n"));
    EXPECT_TRUE(run(0, u"--help"_s).startsWith("Usage:"));
    write(u"a.toml"_s, "[[folder]]\n");
    EXPECT_EQ(run(1, u"build %1 %2"_s.arg(text, library)),
              '!' + text.toUtf8() + ":1:1: [[folder]] needs \"name\"\n");
    EXPECT_TRUE(run(1, u"dump "_s + text).startsWith('!'));
    EXPECT_TRUE(run(1, u"dump "_s + library, u"/dev/full"_s).startsWith('!'));
    write(u"a.toml"_s,
          "[[folder]]\nname = 'a'\n[[property]]\nid = 1\nname = 'p'\nnode = 1\nnode_type = 1\n"
          "condition = 'x = 1 and y > \"12 mm\"'\n");
    const QByteArray said = "only the number at the start of the constant counts\n";
    EXPECT_EQ(run(0, u"build %1 %2"_s.arg(text, library)),
              '!' + text.toUtf8() + ":8:24: warning: the condition: " + said);
    EXPECT_EQ(run(0, u"check "_s + library),
              "warning: filter 1: " + said + "1 folders, 0 formulas, 0 pictures\n");
    build(u"left.mdb"_s, "[[value]]\nname = 'a'\nvalue = ''\n");
    open(path(u"left.mdb"_s)).execute(u"update RecentVar set FormulaID = 'x'"_s);
    EXPECT_TRUE(run(1, u"dump "_s + path(u"left.mdb"_s))
                    .endsWith("!row 1 of table RecentVar: it is left out, FormulaID is no whole "
                              "number of 32 bits\n"));
    build(u"a.mdb"_s, "[[folder]]\nname = 'a'\nparent = 5\n");
    EXPECT_EQ(run(1, u"check "_s + library), "folder 1 \"a\": its parent 5 does not exist\n");
    const QString tables =
        write(u"t.sql"_s, "create table 钢 (E double); insert into 钢 values (206)");
    EXPECT_EQ(run(0, u"tables %1 %2"_s.arg(tables, path(u"钢.mdb"_s))), "");
    data::Connection connection;
    connection.open(path(u"钢.mdb"_s));
    EXPECT_EQ(connection.query(u"select E from 钢"_s).text(0), u"206"_s);
    EXPECT_TRUE(run(1, u"tables %1 %2"_s.arg(text, path(u"b.mdb"_s))).startsWith('!'));
    EXPECT_FALSE(QFile::exists(path(u"b.mdb"_s)));
    for (const QString& line :
         u",build,build a,dump a b,check,destroy a,tables a,--help a"_s.split(u',')) {
        EXPECT_TRUE(run(2, line).startsWith("!Usage:")) << line.toStdString();
    }
}

}  // namespace
}  // namespace varo
