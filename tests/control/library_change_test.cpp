#include "control/library_change.h"

#include "library/library_list.h"
#include "support/file_limit.h"
#include "support/killed_process.h"
#include "support/test_library.h"

#include <QDir>
#include <QSet>
#include <QStringEncoder>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A configuration of the libraries 甲 and 乙, in the encoding and with the line ends of an editor
/// of long ago, which becomes one of 丙 and 甲.
class ChangingLibraries : public testing::Test {
  protected:
    ChangingLibraries() {
        write(path(), before_);
        QString error;
        configuration_.ReadConfigFile(folder(), error);
    }

    QString folder() const { return folder_.path() + u'/'; }
    QString path() const { return folder() + u"Varo-Pelm.ini"_s; }
    QString backup() const { return folder() + u"backupfile.def"_s; }
    static QByteArray gb(const QString& text) { return QStringEncoder("GB18030")(text); }
    static void write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    static QString texts(const colFormulaDB& libraries) {
        QStringList result;
        for (const clsFormulaDB& each : libraries) {
            result.append(each.FormulaNodeText + pathOf(each));
        }
        return result.join(u' ');
    }
    QString oldTexts() const { return u"甲%1库/a.mdb 乙/lib/b.mdb"_s.arg(folder()); }
    QString newTexts() const { return u"丙/lib/c.mdb 甲%1库/a.mdb"_s.arg(folder()); }

    void replace() {
        const QString first = libraries_.Item(1).FormulaDBPath;
        libraries_.Clear();
        addTo(libraries_, u"/lib/"_s, u"c.mdb"_s, text_);
        addTo(libraries_, first, u"a.mdb"_s, u"甲"_s);
    }
    LibraryChange change(const std::function<bool()>& build) {
        return changeLibraries(
            configuration_, libraries_, folder(), [this] { replace(); }, build);
    }
    /// What a program that is started finds.
    QString found() const {
        colFormulaDB read;
        QString error;
        return Configuration::recover(folder()) &&
                       Configuration(read).ReadConfigFile(folder(), error)
                   ? texts(read)
                   : error;
    }

    const QTemporaryDir folder_;
    const QByteArray before_ =
        gb(u"; 说明\r\n[Host]\r\n上次=1\r\n\r\n[Access]\r\n; 个数\r\nNodeCount=2\r\n"
           "RootNodeText1=甲\r\nRootNodeName1=a.mdb\r\nRootNodePath1=库\\\r\n"
           "RootNodeText2=乙\r\nRootNodeName2=b.mdb\r\nRootNodePath2=/lib/\r\n\r\n"
           "[Window]\r\n宽=100\r\n"_s);
    QString text_ = u"丙"_s;
    colFormulaDB libraries_;
    Configuration configuration_{libraries_};
};

TEST_F(ChangingLibraries, ReachesCollectionFileAndTreeAndKeepsTheRestOfTheFile) {
    QStringList built;
    const auto build = [&] {
        built.append(texts(libraries_));
        return true;
    };
    EXPECT_EQ(change(build), LibraryChange::Done);
    EXPECT_EQ(built, QStringList{newTexts()});
    EXPECT_EQ(found(), newTexts());
    EXPECT_FALSE(QFile::exists(backup()));
    const QByteArray written = fileContent(path());
    EXPECT_EQ(written.count('\n'), written.count("\r\n"));
    EXPECT_EQ(written.simplified(),
              gb(u"; 说明 [Host] 上次=1 [Access] ; 个数 NodeCount=2 "
                 "RootNodeText1=丙 RootNodeName1=c.mdb RootNodePath1=/lib/ "
                 "RootNodeText2=甲 RootNodeName2=a.mdb RootNodePath2=库\\ [Window] 宽=100"_s));
}

TEST_F(ChangingLibraries, ReachesNoneOfThemWhenAStepFails) {
    std::optional<FileLimit> fullDisk;
    const struct {
        const char* step;
        std::function<void()> obstruct;
        LibraryChange outcome;
        QStringList built;
    } cases[] = {
        {"putting the old file aside",
         [&] { ASSERT_TRUE(QDir(folder()).mkpath(u"backupfile.def/x"_s)); },
         LibraryChange::NotWritten,
         {oldTexts()}},
        {"writing the new file",
         [&] { text_ = u"two\nlines"_s; },
         LibraryChange::NotWritten,
         {oldTexts()}},
        {"writing it to the disk",
         [&] { fullDisk.emplace(50); },
         LibraryChange::NotWritten,
         {oldTexts()}},
        {"building the tree", [] {}, LibraryChange::NotBuilt, {newTexts(), oldTexts()}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.step);
        each.obstruct();
        QStringList built;
        const auto build = [&] {
            built.append(texts(libraries_));
            return each.outcome != LibraryChange::NotBuilt;
        };
        EXPECT_EQ(change(build), each.outcome);
        fullDisk.reset();
        EXPECT_EQ(built, each.built);
        EXPECT_EQ(fileContent(path()), before_);
        EXPECT_EQ(texts(libraries_), oldTexts());
        QDir(backup()).removeRecursively();
        EXPECT_FALSE(QFile::exists(backup()));
        text_ = u"丙"_s;
    }
    QFile::remove(path());
    EXPECT_EQ(change([] { return false; }), LibraryChange::NotBuilt);
    EXPECT_FALSE(QFile::exists(path())) << "there was none before";
}

TEST_F(ChangingLibraries, KilledAtAnyPointItLeavesTheOldOrTheNewList) {
    QSet<QString> lists;
    for (int n = 1;; ++n) {
        QFile::remove(backup());
        write(path(), before_);
        QString error;
        ASSERT_TRUE(configuration_.ReadConfigFile(folder(), error));
        const auto isKilled = killedBeforeChange(n, [this] { change([] { return true; }); });
        if (!isKilled) {
            GTEST_SKIP() << "a process cannot be watched here";
        }
        lists.insert(found());
        // What it left beside the file is in nobody's way.
        EXPECT_EQ(change([] { return true; }), LibraryChange::Done);
        EXPECT_EQ(found(), newTexts());
        EXPECT_FALSE(QFile::exists(backup()));
        if (!*isKilled) {
            EXPECT_GT(n, 4);
            break;
        }
    }
    EXPECT_EQ(lists, (QSet<QString>{oldTexts(), newTexts()}));
}

}  // namespace
}  // namespace varo::test
