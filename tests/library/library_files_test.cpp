#include "library/library_files.h"

#include "library/library_list.h"
#include "library/new_library.h"
#include "platform/shared_folder/shared_folder.h"
#include "store/template.h"
#include "support/file_limit.h"
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

void add(colFormulaDB& libraries, const QString& text) {
    QString key;
    bool added = false;
    libraries.Add(text + u".mdb"_s, u"/"_s, text, key, text.toUpper(), added);
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
            add(libraries, text);
        }
        moveLibraries(libraries, each.moved, each.before);
        EXPECT_EQ(texts(libraries), each.expected);
        EXPECT_EQ(pathOf(libraries.Item(1)), u"/%1.mdb"_s.arg(each.expected[1]));
        colFormulaDB copy;
        add(copy, u"x"_s);
        copyLibraries(libraries, copy);
        copyLibraries(copy, libraries);
        EXPECT_EQ(texts(libraries).replace(u'5', u'1').left(3), each.expected.left(3));
        EXPECT_EQ(libraries.Item(1).NodeKey, u"DBNode5"_s);
        EXPECT_EQ(copy.Item(1).NodeKey, u"DBNode2"_s);
    }
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
    const NoWaiting atOnce;
    TestLibrary library(u"a.mdb"_s);
    TestLibrary noTree(u"b.mdb"_s);
    noTree.connection().execute(u"Drop Table Tree"_s);
    TestLibrary trigger(u"c.mdb"_s);
    trigger.refuse("Insert", "Tree");
    const QString text = library.addFile(u"text.mdb"_s, "no database");
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
        {text, notOpened, u"文件不是公式库，或者已经损坏"_s},
        {library.folder(), notOpened, u"文件不是公式库，或者已经损坏"_s},
        {noTree.path(), wrong, {}},
        {trigger.path(), notOpened, u"文件的结构不符合公式库的要求"_s},
        {library.path(), notOpened, u"文件正被其他程序占用"_s},
    };
    LibraryProcess other({u"lock"_s, library.path()});
    ASSERT_EQ(other.readLine(), u"locked"_s);
    colFormulaDB libraries;
    for (const auto& each : cases) {
        EXPECT_EQ(AddExistingLibrary(each.path, u"甲"_s, libraries).refusal, each.refusal);
        colFormulaDB listed;
        QString key;
        bool added = false;
        listed.Add(each.path, {}, {}, key, {}, added);
        EXPECT_EQ(whyNotOpened(listed.Item(1)), each.reason) << each.path.toStdString();
    }
    EXPECT_EQ(libraries.Count(), 0);
}

class NewLibrary : public testing::Test {
  protected:
    NewLibrary() { qputenv(kSharedFolderVariable, shared.folder().toLocal8Bit()); }
    ~NewLibrary() override { qunsetenv(kSharedFolderVariable); }

    QString create(const QString& chosen) {
        questions.file = ChosenFile{chosen, 0};
        return CreateLibraryFromTemplate(questions,
                                         [this](const QString& path) { return path == inUse; });
    }
    QString told() { return std::exchange(questions.informed, {}).join(u'|'); }
    /// The path of the new library, or what the user was told.
    QString outcome(const QString& chosen) {
        const QString made = create(chosen);
        return made + told();
    }
    void setVersion(const QString& value) {
        shared.connection().execute(u"Update TableInfo Set PrptyVal = %1"_s.arg(value));
    }
    QByteArray templateBytes() const { return fileContent(shared.path()); }

    TestLibrary shared{QString::fromLatin1(kTemplateFileName)};
    const QTemporaryDir folder;
    const QString target = folder.filePath(u"新 库.mdb"_s);
    const QString inUse = folder.filePath(u"used.mdb"_s);
    RecordingQuestions questions;
};

TEST_F(NewLibrary, IsTheTemplateByteForByte) {
    EXPECT_EQ(create(target.chopped(4)), target) << told().toStdString();
    EXPECT_EQ(fileContent(target), templateBytes());
    EXPECT_EQ(questions.fileQuestion.title, u"新建公式库"_s);
    EXPECT_EQ(questions.fileQuestion.purpose, FileQuestion::Purpose::New);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    colFormulaDB libraries;
    EXPECT_EQ(AddExistingLibrary(target, u"新"_s, libraries).refusal, QString());
    shared.addFolder(0, u"梁"_s);
    for (const bool replaces : {false, true}) {
        const QByteArray before = fileContent(target);
        questions.answers = {replaces};
        EXPECT_EQ(create(target), replaces ? target : QString());
        EXPECT_EQ(questions.asked.takeLast(),
                  u"文件：\n%1\n已经存在，\n是否替换原有的文件！"_s.arg(target));
        EXPECT_EQ(fileContent(target), replaces ? templateBytes() : before);
    }
    questions.file.reset();
    EXPECT_EQ(CreateLibraryFromTemplate(questions, [](const QString&) { return false; }),
              QString());
    EXPECT_EQ(told(), QString()) << "the user cancels";
}

TEST_F(NewLibrary, SaysWhatIsWrongWithTheTemplateBeforeItAsks) {
    const QString noVersion = u"模板数据库的版本信息不正确，不能创建新的数据库文件！"_s;
    for (const QString& version : {u"'2.1'"_s, u"''"_s, u"Null"_s}) {
        setVersion(version);
        EXPECT_EQ(outcome(target), noVersion);
    }
    setVersion(u"' 2.0 '"_s);
    EXPECT_EQ(create(target), target);
    shared.connection().execute(u"Delete From TableInfo"_s);
    EXPECT_EQ(outcome(target), noVersion);
    questions.fileQuestion = {};
    shared.connection().execute(u"Drop Table TableInfo"_s);
    EXPECT_EQ(outcome(target), u"打开模板数据库失败，无法读取模板数据库信息！"_s);
    shared.connection().close();
    QFile::remove(shared.path());
    EXPECT_EQ(outcome(target), u"模板数据库文件丢失，不能创建新的数据库文件！"_s);
    qputenv(kSharedFolderVariable, "/missing");
    EXPECT_EQ(outcome(target), u"创建公式数据库失败！"_s);
    EXPECT_EQ(questions.fileQuestion.title, QString());
}

TEST_F(NewLibrary, AppearsWholeOrNotAtAllAndReplacesNothingThatIsInUse) {
    const NoWaiting atOnce;
    const QString failed = u"创建公式数据库失败！"_s;
    const auto refused = [&](const QString& path) {
        questions.answers = {true};
        const auto content = [&] {
            return QFile::exists(path) ? fileContent(path) : QByteArray("none");
        };
        const QByteArray before = content();
        const QString result = outcome(path);
        EXPECT_EQ(content(), before);
        return result;
    };
    EXPECT_EQ(refused(u"/missing/x.mdb"_s), failed);
    EXPECT_EQ(refused(inUse), failed + u'\n' + inUse + u"\n是正在使用的公式库，不能替换！"_s);
    const QString link = folder.filePath(u"link.mdb"_s);
    ASSERT_TRUE(QFile::link(shared.path(), link));
    EXPECT_TRUE(refused(link).contains(u"是模板数据库文件"_s));
    QFile::remove(link);
    {
        const FileLimit full(templateBytes().size() / 2);
        EXPECT_EQ(refused(target), failed);
    }
    const TestLibrary old(u"old.mdb"_s);
    {
        LibraryProcess other({u"lock"_s, old.path()});
        ASSERT_EQ(other.readLine(), u"locked"_s);
        EXPECT_EQ(refused(old.path()), failed);
    }
    {
        LibraryProcess other({u"spill"_s, shared.path()});
        ASSERT_EQ(other.readLine(), u"spilled"_s);
        EXPECT_NE(refused(target), target) << "the template is being written";
    }
    EXPECT_EQ(create(target), target);
    EXPECT_FALSE(fileContent(target).contains("Spilled"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{u"新 库.mdb"_s});
}

}  // namespace
}  // namespace varo::test
