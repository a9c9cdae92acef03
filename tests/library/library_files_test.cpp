#include "library/library_files.h"

#include "library/library_list.h"
#include "library/new_library.h"
#include "platform/shared_folder/shared_folder.h"
#include "store/template.h"
#include "support/no_waiting.h"
#include "support/process.h"
#include "support/test_library.h"

#include <QDir>
#include <QFile>

#include <filesystem>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

QString texts(const colFormulaDB& libraries) {
    QStringList result;
    for (const clsFormulaDB& each : libraries) {
        result.append(each.NodeKey.mid(6) + each.FormulaNodeText + each.Tag);
    }
    return result.join(u' ');
}

TEST(LibraryList, MovesWhatRecordsSayAndLeavesTheirKeys) {
    const struct {
        QList<int> moved;
        int before;
        QString expected;
    } cases[] = {
        {{2}, 1, u"1bB 2aA 3cC 4dD"_s},    {{1}, 3, u"1bB 2aA 3cC 4dD"_s},
        {{1, 3}, 5, u"1bB 2dD 3aA 4cC"_s}, {{4, 2}, 1, u"1bB 2dD 3aA 4cC"_s},
        {{2}, 2, u"1aA 2bB 3cC 4dD"_s},    {{}, 1, u"1aA 2bB 3cC 4dD"_s},
    };
    for (const auto& each : cases) {
        colFormulaDB libraries;
        for (const QString& text : {u"a"_s, u"b"_s, u"c"_s, u"d"_s}) {
            addTo(libraries, u"/"_s, text + u".mdb"_s, text, text.toUpper());
        }
        moveLibraries(libraries, each.moved, each.before);
        EXPECT_EQ(texts(libraries), each.expected);
        EXPECT_EQ(pathOf(libraries.Item(1)), u"/%1.mdb"_s.arg(each.expected[1]));
    }
}

TEST(LibraryList, ACopyGoesOnCountingItsOwnKeys) {
    colFormulaDB libraries;
    colFormulaDB copy;
    addTo(libraries, u"/"_s, u"a.mdb"_s, u"a"_s, u"A"_s);
    addTo(copy, u"/"_s, u"x.mdb"_s);
    copyLibraries(libraries, copy);
    EXPECT_EQ(texts(copy) + pathOf(copy.Item(1)), u"2aA/a.mdb"_s);
    copyLibraries(copy, libraries);
    EXPECT_EQ(texts(libraries), u"2aA"_s);
}

TEST(LibraryFiles, ASecondSpellingOfAFileIsTheSameLibrary) {
    const TestLibrary library(u"a.mdb"_s);
    colFormulaDB libraries;
    const AddedLibrary added = AddExistingLibrary(library.path(), u"甲"_s, libraries);
    EXPECT_EQ(added.key + added.refusal, u"DBNode1"_s);
    const QString link = library.pathOf(u"link.mdb"_s);
    const QString hardLink = library.pathOf(u"hard.mdb"_s);
    ASSERT_TRUE(QFile::link(library.path(), link));
    std::filesystem::create_hard_link(library.path().toStdU16String(), hardLink.toStdU16String());
    for (const QString& path :
         {library.path(), QDir::current().relativeFilePath(library.path()), link, hardLink,
          library.folder() + u"./../"_s + library.folder().section(u'/', -2, -2) + u"//a.mdb"_s}) {
        EXPECT_EQ(AddExistingLibrary(path, u"乙"_s, libraries).refusal,
                  u"用户选择的公式库已经被加入！"_s)
            << path.toStdString();
    }
    EXPECT_EQ(texts(libraries), u"1甲"_s);
}

TEST(LibraryFiles, RefusesWhatIsNoLibraryThatOpensAndSaysWhy) {
    requireSqlite();
    const NoWaiting atOnce;
    TestLibrary library(u"a.mdb"_s);
    TestLibrary noTree(u"b.mdb"_s);
    noTree.connection().execute(u"Drop Table Tree"_s);
    TestLibrary trigger(u"c.mdb"_s);
    trigger.connection().execute(
        u"Create Trigger T Before Insert On Tree Begin Select Raise(Abort, 'no'); End"_s);
    const QString text = library.addFile(u"text.mdb"_s, "no database");
    TestLibrary beside(u"d.mdb"_s);
    beside.connection().close();
    const QString journal = beside.addFile(u"d.mdb-journal"_s, "my journal");
    const auto saying = [](const QString& description, const QString& sentence = {}) {
        return u"文件不是公式库，或者已经损坏%1\n数据库的说明：%2"_s.arg(sentence, description);
    };
    const QByteArray writesAhead = fileContent(library.path()).replace(18, 2, "\2\2");
    const QString ahead = library.addFile(u"ahead.mdb"_s, writesAhead);
    // What is wrong with it would be found in the copy.
    const QString large = library.addFile(
        u"large.mdb"_s,
        QByteArray(writesAhead).replace(100, 8, "damaged!").leftJustified(17 << 20));
    const QString missing = library.pathOf(u"missing.mdb"_s);
    const QString notThere = u"用户选择的数据库文件不存在\n不能添加到本程序！"_s;
    const QString wrong = u"用户选择了错误结构的数据库文件\n不能添加到本程序！"_s;
    const QString notOpened = u"无法打开用户选择的数据库！"_s;
    const struct {
        QString path;
        QString refusal;
        QString reason;
    } cases[] = {
        {missing, notThere, u"文件不存在"_s},
        {text, notOpened, saying(u"%1: not a database file"_s.arg(text))},
        {library.folder(), notOpened, saying(u"%1: no such file"_s.arg(library.folder()))},
        {beside.path(), notOpened,
         saying(
             u"%1: lies in the place of a journal but is none; move it away to open the database "
             "without it"_s.arg(journal),
             u"\n文件旁边的日志（-journal）不是这个公式库的"_s)},
        {noTree.path(), wrong, {}},
        {trigger.path(), notOpened, u"文件的结构不符合公式库的要求"_s},
        {library.path(), notOpened, u"文件正被其他程序占用"_s},
        {large, notOpened, {}},
        {ahead, {}, {}},
    };
    LibraryProcess other({u"lock"_s, library.path()});
    ASSERT_EQ(other.readLine(), u"locked"_s);
    colFormulaDB libraries;
    for (const auto& each : cases) {
        colFormulaDB listed;
        addTo(listed, {}, each.path);
        EXPECT_EQ(whyNotOpened(listed.Item(1)), each.reason) << each.path.toStdString();
        EXPECT_EQ(fileContent(ahead), writesAhead) << "to ask has changed a file";
        EXPECT_EQ(AddExistingLibrary(each.path, u"甲"_s, libraries).refusal, each.refusal);
    }
    EXPECT_EQ(libraries.Count(), 1);
}

class NewLibrary : public testing::Test {
  protected:
    NewLibrary() { qputenv(kSharedFolderVariable, shared.folder().toLocal8Bit()); }
    ~NewLibrary() override { qunsetenv(kSharedFolderVariable); }

    /// The path of the new library, or what the user was told.
    QString create(const std::optional<QString>& chosen) {
        questions.file = chosen ? std::optional(ChosenFile{*chosen, 0}) : std::nullopt;
        const QString made = CreateLibraryFromTemplate(
            questions, [this](const QString& path) { return path == inUse; });
        return made + std::exchange(questions.informed, {}).join(u'|');
    }

    TestLibrary shared{QString::fromLatin1(kTemplateFileName)};
    const QTemporaryDir folder;
    const QString target = folder.filePath(u"新 库.mdb"_s);
    const QString inUse = folder.filePath(u"used.mdb"_s);
    const QString failed = u"创建公式数据库失败！"_s;
    RecordingQuestions questions;
};

TEST_F(NewLibrary, IsTheTemplateByteForByteButForItsMark) {
    const auto withoutMark = [](const QString& path) { return fileContent(path).remove(60, 4); };
    EXPECT_EQ(create({}), QString()) << "the user cancels";
    EXPECT_EQ(create(folder.filePath(u"*.MDB"_s)), u"用户没有选择数据库，不能创建连接"_s);
    EXPECT_EQ(create(target.chopped(4)), target);
    EXPECT_EQ(withoutMark(target), withoutMark(shared.path()));
    EXPECT_EQ(questions.fileQuestion.title, u"新建公式库"_s);
    EXPECT_EQ(questions.fileQuestion.purpose, FileQuestion::Purpose::New);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{u"新 库.mdb"_s});
    colFormulaDB libraries;
    EXPECT_EQ(AddExistingLibrary(target, u"新"_s, libraries).refusal, QString());
    shared.addFolder(0, u"梁"_s);
    for (const bool replaces : {false, true}) {
        const QByteArray before = withoutMark(target);
        questions.answers = {replaces};
        EXPECT_EQ(create(target), replaces ? target : QString());
        EXPECT_EQ(questions.asked.takeLast(),
                  u"文件：\n%1\n已经存在，\n是否替换原有的文件！"_s.arg(target));
        EXPECT_EQ(withoutMark(target), replaces ? withoutMark(shared.path()) : before);
    }
}

TEST_F(NewLibrary, SaysWhatIsWrongWithTheTemplateBeforeItAsks) {
    const std::pair<QString, QString> cases[] = {
        {u"Update TableInfo Set PrptyVal = ' 2.0 '"_s, target},
        {u"Update TableInfo Set PrptyVal = '2.1'"_s,
         u"模板数据库的版本信息不正确，不能创建新的数据库文件！"_s},
        {u"Update TableInfo Set PrptyVal = Null"_s,
         u"模板数据库的版本信息不正确，不能创建新的数据库文件！"_s},
        {u"Drop Table TableInfo"_s, u"打开模板数据库失败，无法读取模板数据库信息！"_s},
    };
    for (const auto& [change, outcome] : cases) {
        questions.fileQuestion = {};
        if (change.startsWith(u"Drop")) {
            requireSqlite();
        }
        shared.connection().execute(change);
        EXPECT_EQ(create(target), outcome);
    }
    shared.connection().close();
    QFile::remove(shared.path());
    EXPECT_EQ(create(target), u"模板数据库文件丢失，不能创建新的数据库文件！"_s);
    qputenv(kSharedFolderVariable, "/missing");
    EXPECT_EQ(create(target), failed);
    EXPECT_EQ(questions.fileQuestion.title, QString());
}

TEST_F(NewLibrary, TakesThePlaceOfNothingThatIsInUse) {
    const QString link = folder.filePath(u"link.mdb"_s);
    ASSERT_TRUE(QFile::link(shared.path(), link) && QFile::copy(shared.path(), inUse));
    shared.addFolder(0, u"梁"_s);
    const QByteArray used = fileContent(inUse);
    const std::pair<QString, QString> cases[] = {
        {u"/missing/x.mdb"_s, failed},
        {inUse, failed + u'\n' + inUse + u"\n是正在使用的公式库，不能替换！"_s},
        {link, failed + u'\n' + link + u"\n是模板数据库文件，不能替换！"_s},
    };
    for (const auto& [path, outcome] : cases) {
        EXPECT_EQ(create(path), outcome);
        EXPECT_TRUE(questions.asked.isEmpty());
    }
    EXPECT_EQ(fileContent(inUse), used);
}

}  // namespace
}  // namespace varo::test
