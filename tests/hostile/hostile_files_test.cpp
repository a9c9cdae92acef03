// Files from strangers, given to the programs as a user gives them: each is refused with a reason
// or read with what is wrong left out, in bounded time and without a trace in any other file.

#include "apps/program.h"
#include "hostile/shared_pictures.h"
#include "library/clipboard.h"
#include "library/library_text.h"
#include "support/desk.h"

#include <QDir>

#include <fcntl.h>
#include <functional>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

constexpr auto kText = R"([[folder]]
id = 1
name = 'beams'
[[formula]]
id = 1
name = 'deflection'
folder = 1
expression = 'F*L'
picture = { base64 = 'Qk0AAA==' }
values = { F = '30' }
[[property]]
id = 1
name = 'p'
node = 1
node_type = 1
condition = 'x = 1 and not y >= 2')";

/// What a program is expected to come to: its exit status, and a part of what it writes.
struct Answer {
    int status;
    const char* said;
};

class HostileFiles : public testing::Test {
  protected:
    HostileFiles() {
        QDir(folder_.path()).mkdir(u"temporary"_s);
        write(u"victim"_s, "the work of a year");
        write(u"text"_s, kText);
        buildLibrary(path(u"text"_s), path(u"a.mdb"_s));
        sound_ = fileContent(path(u"a.mdb"_s));
        configuration_.addLibrary(u"library"_s, folder_.path(), u"a.mdb"_s);
    }

    QString path(const QString& name) const { return folder_.filePath(name); }

    void write(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    /// Names and contents of all files.
    QStringList everything() const {
        QStringList lines;
        const auto kinds = QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot;
        for (const QFileInfo& file : QDir(folder_.path()).entryInfoList(kinds)) {
            lines << file.fileName();
            if (file.isFile() && !file.isSymLink()) {
                lines.last() += QString::number(qHash(fileContent(file.filePath())));
            }
        }
        return lines + QDir(path(u"temporary"_s)).entryList(kinds);
    }

    /// Runs a program in the folder with a minute of processor time, and files of 64 MiB at most.
    Outcome run(const char* name, const QStringList& arguments) const {
        QProcess program;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"TMPDIR"_s, path(u"temporary"_s));
        environment.insert(u"XDG_RUNTIME_DIR"_s, folder_.path());
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        environment.insert(u"QT_LOGGING_RULES"_s, u"default.warning=false"_s);
        program.setProcessEnvironment(environment);
        program.setWorkingDirectory(folder_.path());
        program.setChildProcessModifier([] {
            constexpr rlimit kSeconds{60, 60};
            constexpr rlimit kBytes{64 << 20, 64 << 20};
            setrlimit(RLIMIT_CPU, &kSeconds);
            setrlimit(RLIMIT_FSIZE, &kBytes);
        });
        program.start(QString::fromUtf8(name), arguments);
        Outcome outcome = outcomeOf(program);
        outcome.out += outcome.err;
        return outcome;
    }

    void expect(const Answer& answer, const Outcome& outcome, const char* command) const {
        EXPECT_EQ(outcome.status, answer.status) << command << ": " << outcome.out.substr(0, 500);
        EXPECT_NE(outcome.out.find(answer.said), std::string::npos)
            << command << ": " << outcome.out.substr(0, 500) << "\nexpected: " << answer.said;
    }

    /// The host, which shows the folder and the formula, locates the property and calculates.
    Outcome host() const {
        return run(VARO_HOST_PROGRAM,
                   {u"--deploy"_s, configuration_.folder(), u"--prop"_s, u"x=1"_s, u"--prop"_s,
                    u"y=1"_s, u"--select"_s, u"FormulaNode1->DBNode1"_s, u"--select"_s,
                    u"LvFormulaKey1"_s, u"--locate"_s, u"p"_s, u"--quit"_s});
    }

    QTemporaryDir folder_;
    QByteArray sound_;
    TestConfiguration configuration_;
};

using Maker = std::function<void(const QString& library)>;

/// Runs statements on the library as any program can.
Maker sql(const QByteArray& statements) {
    return [=](const QString& library) {
        sqlite3* database = nullptr;
        sqlite3_open(library.toUtf8().constData(), &database);
        char* error = nullptr;
        sqlite3_exec(database, statements.constData(), nullptr, nullptr, &error);
        EXPECT_EQ(error, nullptr) << error;
        sqlite3_close(database);
    };
}

/// Puts bytes in the place of those from `at` on.
Maker bytes(qsizetype at, const QByteArray& content) {
    return [=](const QString& library) {
        QFile file(library);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(at));
        file.write(content);
    };
}

Maker inPlace(const std::function<bool(const QString&)>& make) {
    return [=](const QString& library) { EXPECT_TRUE(QFile::remove(library) && make(library)); };
}

/// Exchanges the first two rows of the table Tree: going through it finds the second one, a search
/// for it does not.
void exchangeRows(const QString& library) {
    sql("Insert Into Tree (Name, PID, OrderID) Values ('b', 0, 2), ('c', 0, 3), ('d', 0, 4)")(
        library);
    data::Connection connection;
    connection.open(library, data::Access::Read);
    const auto root = connection.query(u"Select rootpage From sqlite_schema Where name = 'Tree'"_s);
    const qsizetype at = (root.integer(0) - 1) * 4096 + 8;  // where the page says where they are
    connection.close();
    const QByteArray places = fileContent(library).mid(at, 4);
    bytes(at, places.last(2) + places.first(2))(library);
}

TEST_F(HostileFiles, LibrariesAreRefusedOrShownWithoutWhatIsWrong) {
    constexpr Answer kCounted{0, "1 folders, 1 formulas, 1 pictures"};
    constexpr Answer kWhole{0, "expression = \"F*L\""};
    constexpr Answer kLocated{0, "located: library / beams"};
    constexpr Answer kNotOpened{2, "无法打开用户选择的数据库！"};
    constexpr Answer kNoDatabase{1, "not a database file"};
    constexpr Answer kNoFile{1, "no such file"};
    const struct {
        const char* what;
        Maker make;
        Answer check;
        Answer dump;
        Answer host;
    } cases[] = {
        {"sound", [](const QString&) {}, kCounted, kWhole, kLocated},
        {"endless view",
         sql("Drop Table Tree; Create View Tree As With Recursive N (ID) As (Select 1 Union All "
             "Select ID + 1 From N) Select ID, 'a' Name, 0 PID, ID OrderID From N"),
         {1, "table Tree cannot be read: "},
         {1, "no such table"},
         kNotOpened},
        {"destroying trigger",
         sql("Create Trigger T After Update On RecentVar Begin Delete From Formula; End"),
         {1, "a trigger or the like"},
         kWhole,
         kNotOpened},
        {"huge generated name",
         sql("Drop Table Tree; Create Table Tree (ID Integer Primary Key Autoincrement, Name As "
             "(zeroblob(900000000)), PID, OrderID); Insert Into Tree (PID) Values (0)"),
         {1, "too big"},
         {1, "too big"},
         kNotOpened},
        {"endless view beside the tables",
         sql("Create View V As With Recursive N (I) As (Select 1 Union All Select I + 1 From N) "
             "Select I From N"),
         kCounted, kWhole, kLocated},
        {"folder inside itself",
         sql("Update Tree Set PID = 1"),
         {1, "1 \"beams\" > 1 \"beams\""},
         kWhole,
         {2, "there is no node"}},
        {"100,000 folders one in the other",
         sql("With Recursive N (I) As (Select 2 Union All Select I + 1 From N Limit 100000) "
             "Insert Into Tree Select I, 'a', I - 1, 1 From N"),
         {0, "100001 folders"},
         {0, "parent = 100000"},
         kLocated},
        {"endless texts",
         sql("Update Tree Set Name = 'a' || replace(hex(zeroblob(32767)), '0', char(769)); "
             "Update Formula Set Memo = replace(hex(zeroblob(5000000)), '0', 'm'), "
             "Formula = replace(hex(zeroblob(5000000)), '00', '+1')"),
         {1, "its name has 65535 characters"},
         {0, "mmm"},
         {0, "…"}},
        {"numbers that are none",
         sql("Insert Into Tree (Name, PID, OrderID) Values ('t', 'x', NULL), ('l', 99999999999, "
             "1e300), ('b', x'00', x'01'); Update RecentVar Set FormulaID = 4294967297; "
             "Update Property Set NodeID = 'x'"),
         {1, "its parent 99999999999 does not exist"},
         {1, "row 3 of table Tree"},
         {0, "located: library\n"}},
        {"an identifier beyond 32 bits",
         sql("Insert Into Tree Values (9223372036854775807, 'last', 0, 9)"),
         {1, "no whole number of 32 bits"},
         {1, "row 9223372036854775807"},
         kLocated},
        {"condition doubled at each of 47 levels",
         sql("With Recursive N (I) As (Select 10 Union All Select I + 1 From N Limit 47) "
             "Insert Into FilterCond Select I, 1, iif(I = 10, 0, I - 1), 1 From N "
             "Union All Select I, 1, iif(I = 10, 0, I - 1), 1 From N"),
         {1, "2 conditions of filter 1 have the identifier 10"},
         {0, "[[condition]]"},
         {0, "located: "}},
        {"condition inside itself",
         sql("Update FilterCond Set ParentID = ID"),
         {1, "1 > 1"},
         {0, "[[condition]]"},
         {0, "located: "}},
        {"50,000 conditions of one filter",
         sql("With Recursive N (I) As (Select 10 Union All Select I + 1 From N Limit 50000) "
             "Insert Into FilterCond Select I, 1, I - 1, 3 From N"),
         {1, "nested too deep or has too many"},
         {0, "[[condition]]"},
         {0, "located: "}},
        {"value that 20,000 rows have",
         sql("Drop Index RecentVarName; With Recursive N (I) As (Select 1 Union All Select I + 1 "
             "From N Limit 20000) Insert Into RecentVar Select 'F', I % 3, I, 0, '' From N"),
         {1, "has 6668 values"},
         kWhole,
         kLocated},
        {"row that a search does not find",
         exchangeRows,
         {1, "out of order"},
         {1, "row 2 of table Tree: it is left out, the table is damaged and finds it once only"},
         kLocated},
        {"picture of 10 gigapixels",
         sql("Update Formula Set Pic = x'89504e470d0a1a0a0000000d49484452000186a0000186a008020000"
             "0000000000'"),
         kCounted,
         kWhole,
         {0, "picture: none"}},
        {"bitmap cut off",
         sql("Update Formula Set Pic = x'424d36000c0000000000360000002800000000020000000200000100"
             "180000000000'"),
         kCounted,
         kWhole,
         {0, "picture: none"}},
        {"picture type without a picture",
         sql("Update Formula Set Pic = NULL"),
         {1, "its picture type is 2 without a picture"},
         kWhole,
         {0, "picture: none"}},
        {"cut in the middle of a page",
         [](const QString& library) {
             EXPECT_TRUE(QFile::resize(library, QFileInfo(library).size() / 2 + 100));
         },
         {1, "malformed"},
         {1, "malformed"},
         kNotOpened},
        {"more pages than there are",
         bytes(28, QByteArray::fromHex("7fffffff")),
         {1, "malformed"},
         {1, "malformed"},
         kNotOpened},
        {"page size of none", bytes(16, QByteArray::fromHex("0003")), kNoDatabase, kNoDatabase,
         kNotOpened},
        {"schema that is no page",
         bytes(100, QByteArray(3996, '\xff')),
         {1, "malformed"},
         {1, "malformed"},
         kNotOpened},
        {"no bytes", [](const QString& library) { EXPECT_TRUE(QFile::resize(library, 0)); },
         kNoDatabase, kNoDatabase, kNotOpened},
        {"pipe", inPlace([](const QString& name) { return mkfifo(qPrintable(name), 0600) == 0; }),
         kNoFile, kNoFile, kNotOpened},
        {"endless device",
         inPlace([](const QString& name) { return QFile::link(u"/dev/zero"_s, name); }), kNoFile,
         kNoFile, kNotOpened},
        {"folder", inPlace([](const QString& name) { return QDir().mkdir(name); }), kNoFile,
         kNoFile, kNotOpened},
    };
    for (const auto& [what, make, checked, dumped, shown] : cases) {
        SCOPED_TRACE(what);
        QFile::remove(path(u"a.mdb"_s));
        write(u"a.mdb"_s, sound_);
        make(path(u"a.mdb"_s));
        const QStringList before = everything();
        expect(checked, run(VARO_LIBRARY_PROGRAM, {u"check"_s, u"a.mdb"_s}), "check");
        expect(dumped, run(VARO_LIBRARY_PROGRAM, {u"dump"_s, u"a.mdb"_s}), "dump");
        EXPECT_EQ(everything(), before);
        expect(shown, host(), "host");
        EXPECT_EQ(everything(), before);
        QDir(folder_.path()).rmdir(u"a.mdb"_s);
    }
}

TEST_F(HostileFiles, TextsAreRefusedAtTheirPlaceAndNothingIsBuilt) {
    const auto drawing = [](const QByteArray& content) {
        return "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>" + content + "</svg>";
    };
    const QByteArray draws =
        "[[formula]]\nname = 'a'\npicture = { file = 'a.svg', format = 'jpg' }";
    const auto shows = [](const QByteArray& file) {
        return "[[formula]]\nname = 'a'\npicture = { file = '" + file + "' }";
    };
    const struct {
        const char* what;
        QByteArray text;
        QByteArray drawing;
        const char* said;
    } cases[] = {
        {"key of 400,000 parts",
         QByteArray("a.").repeated(400'000) + "a = 1",
         {},
         "t.toml:1:32: a name has more"},
        {"400,000 brackets", "a = " + QByteArray(400'000, '['), {}, "t.toml:1:21: brackets"},
        {"name beyond ASCII",
         "[[folder]]\n名 = 'a'",
         {},
         "t.toml:2:1: a name or text with characters beyond ASCII"},
        {"bytes", QByteArray(100'000, '\0'), {}, "t.toml:"},
        {"picture without end", shows("/dev/zero"), {}, "this is no regular file"},
        {"picture from a pipe", shows("pipe"), {}, "this is no regular file"},
        {"picture that is the victim",
         shows("victim"),
         {},
         "the file is no bmp, jpg, png or wmf picture"},
        {"folders in a circle that names itself",
         "[[folder]]\nid = 1\nname = 'a'\nid = 1",
         {},
         "t.toml:4:"},
        {"drawing of a device", draws, drawing("<image href='/dev/zero' width='9' height='9'/>"),
         "lies outside the drawing"},
        {"drawing of entities", draws, "<!DOCTYPE svg [<!ENTITY a 'aaaa'>]>" + drawing("&a;"),
         "declares no entities"},
        {"drawing of itself", draws, drawing("<g id='a'><use href='#a'/></g>"),
         "references draw more than 20000 elements"},
        {"drawing of 40,000 rules", draws,
         drawing("<style>" + QByteArray("a{fill:red}").repeated(40'000) + "</style>"),
         "at most 500 style rules"},
        {"drawing of 30,000 levels", draws,
         drawing(QByteArray("<g>").repeated(30'000) + QByteArray("</g>").repeated(30'000)),
         "100 within one another"},
        {"compressed drawing", draws, "\x1f\x8b\x08", "not compressed"},
    };
    ASSERT_EQ(mkfifo(qPrintable(path(u"pipe"_s)), 0600), 0);
    for (const auto& [what, text, svg, said] : cases) {
        SCOPED_TRACE(what);
        write(u"t.toml"_s, text);
        write(u"a.svg"_s, svg);
        for (const QString& target : {u"a.mdb"_s, u"new.mdb"_s}) {
            const QStringList before = everything();
            expect({1, said}, run(VARO_LIBRARY_PROGRAM, {u"build"_s, u"t.toml"_s, target}),
                   "build");
            EXPECT_EQ(everything(), before);
        }
    }
}

TEST_F(HostileFiles, AConfigurationAndATableAreReadToAnEndOrRefused) {
    const QByteArray entry = "RootNodeText%1=t\nRootNodeName%1=a.mdb\nRootNodePath%1=/nowhere\n";
    QByteArray many = "[Access]\nNodeCount=20000\n";
    for (int i = 1; i <= 20'000; ++i) {
        many += QByteArray(entry).replace("%1", QByteArray::number(i));
    }
    const std::tuple<const char*, QByteArray, Answer> configurations[] = {
        {"more libraries than it names", "[Access]\nNodeCount=2147483647\n", {1, "RootNodeText1"}},
        {"negative count", "[Access]\nNodeCount=-1\n", {0, "library: \n"}},
        {"20,000 libraries that are not there", many, {1, "无法打开用户选择的数据库！"}},
        {"lone bracket", "[Access]\nNodeCount=0\n[", {0, "library: \n"}},
        {"device as library",
         "[Access]\nNodeCount=1\nRootNodeText1=t\nRootNodeName1=zero\nRootNodePath1=/dev\n",
         {1, "无法打开用户选择的数据库！"}},
        {"line without end", "[Access]\nNodeCount=" + QByteArray(20'000'000, '1'), {1, "太大！"}},
    };
    for (const auto& [what, content, answer] : configurations) {
        SCOPED_TRACE(what);
        configuration_.write(content);
        const QStringList before = everything();
        expect(answer,
               run(VARO_HOST_PROGRAM, {u"--deploy"_s, configuration_.folder(), u"--quit"_s}),
               "host");
        EXPECT_EQ(everything(), before);
        EXPECT_EQ(fileContent(configuration_.folder() + u"/Varo-Pelm.ini"_s), content);
    }
    const std::tuple<const char*, QByteArray, Answer> tables[] = {
        {"20,000 columns",
         "F" + QByteArray(20'000, ',') + "\n1\n",
         {1, "t.csv:1: 这一行的单元格超过16384个！"}},
        {"quote without end", "F\n\"" + QByteArray(18 << 20, 'a'), {1, "t.csv:2: "}},
        {"wide header and short rows",
         "F" + QByteArray(16'000, ',') + "\n" + QByteArray("1\n").repeated(200),
         {0, ",2\n"}},
        {"zeros", "F\n" + QByteArray(3 << 20, '\0'), {1, "有一个单元格超过1 MiB"}},
    };
    for (const auto& [what, content, answer] : tables) {
        SCOPED_TRACE(what);
        write(u"t.csv"_s, content);
        const QStringList before = everything();
        expect(answer, run(VARO_CALC_PROGRAM, {u"--table"_s, u"t.csv"_s, u"F*2"_s}), "calc");
        EXPECT_EQ(everything(), before);
    }
    expect({1, "这一行超过16 MiB"},
           run(VARO_CALC_PROGRAM, {u"--table"_s, u"/dev/zero"_s, u"F*2"_s}), "calc");
}

TEST_F(HostileFiles, PicturesThatShareTheirPagesAreNotWrittenOutOneByOne) {
    const qint64 together = sharePictures(path(u"a.mdb"_s));
    const qint64 size = QFileInfo(path(u"a.mdb"_s)).size();
    ASSERT_GT(together, 20 * size);
    expect({1, "damage"}, run(VARO_LIBRARY_PROGRAM, {u"check"_s, u"a.mdb"_s}), "check");
    expect({0, "deflection"}, host(), "host");

    colFormulaDB libraries;
    addTo(libraries, folder_.path() + u'/', u"a.mdb"_s);
    RecordingQuestions questions;
    CurrentLibrary library(libraries, questions);
    ASSERT_TRUE(library.open(1));
    WorkingFiles files;
    files.setFolder(path(u"temporary/"_s), {});
    Clipboard clipboard(files);
    HeldMessages messages;
    EXPECT_TRUE(clipboard.captureFolders(library, 1, messages));
    qint64 written = 0;
    for (const QFileInfo& file : QDir(path(u"temporary"_s)).entryInfoList(QDir::Files)) {
        written += file.size();
    }
    EXPECT_GT(written, 0);
    EXPECT_LT(written, 2 * size);
    EXPECT_FALSE(messages.isEmpty());
}

}  // namespace
}  // namespace varo::test
