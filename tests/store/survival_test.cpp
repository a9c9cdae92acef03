// What a library holds after the worst: the editing program is killed, the disk is full, another
// program has the library.

#include "store/db_funcs.h"
#include "store/library_connection.h"
#include "support/process.h"
#include "support/test_library.h"

#include <QDir>

#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

/// A library that other processes change, looked at with connections of its own.
class Survival : public testing::Test {
  protected:
    Survival() { library.connection().close(); }

    QStringList formulas() {
        library.connection().open(library.path());
        QStringList names = library.rows(u"Select Name From Formula Order By ID"_s);
        library.connection().close();
        return names;
    }

    /// Every formula is in with both of its values, and the file is sound.
    void expectSound() {
        library.connection().open(library.path());
        EXPECT_EQ(library.rows(u"PRAGMA integrity_check"_s), QStringList{u"ok"_s});
        EXPECT_EQ(library.rows(u"Select ID From Formula Where (Select Count(*) From RecentVar "
                               "Where FormulaID = ID And Value = Name) <> 2"_s),
                  QStringList{});
        EXPECT_TRUE(library.funcs().CheckNewDB(library.connection()));
        library.connection().close();
    }

    void expectOneFileAfterTheNextEdit() {
        library.connection().open(library.path());
        library.addFolder(0, u"next"_s);
        EXPECT_EQ(QDir(library.folder()).entryList(QDir::Files), QStringList{library.fileName()});
        library.connection().close();
    }

    test::TestLibrary library;
};

TEST_F(Survival, EveryReportedEditIsInTheLibraryAfterTheEditorWasKilled) {
    std::mt19937 random(5);
    QStringList reported;
    for (int round = 0; round < 25; ++round) {
        test::LibraryProcess editor({u"edit"_s, library.path()});
        for (auto edits = 1 + random() % 4; edits > 0; --edits) {
            reported.append(editor.readLine());
        }
        usleep(static_cast<useconds_t>(random() % 3000));
        editor.kill();
        editor.wait();
        for (QString line = editor.readLine(); !line.isEmpty(); line = editor.readLine()) {
            reported.append(line);
        }
        const QStringList present = formulas();
        for (const QString& name : reported) {
            EXPECT_TRUE(present.contains(name)) << qPrintable(name);
        }
        EXPECT_LE(present.size(), reported.size() + round + 1);
        expectSound();
    }
    EXPECT_FALSE(reported.contains(u"refused"_s));
    EXPECT_GE(reported.size(), 25);
    expectOneFileAfterTheNextEdit();
}

TEST_F(Survival, AFullDiskRefusesOneEditAndKeepsTheOthers) {
    const qint64 size = QFileInfo(library.path()).size();
    test::LibraryProcess editor({u"fill"_s, library.path(), QString::number(size + 200000)});
    QStringList reported;
    for (QString line = editor.readLine(); !line.isEmpty(); line = editor.readLine()) {
        reported.append(line);
    }
    EXPECT_EQ(editor.wait(), 0);
    ASSERT_GT(reported.size(), 10);
    EXPECT_EQ(reported.takeLast(), u"refused"_s);
    EXPECT_EQ(formulas(), reported);
    expectSound();
    expectOneFileAfterTheNextEdit();
}

TEST_F(Survival, ALibraryLockedByAnotherProgramFailsWithoutHarm) {
    library.connection().open(library.path());
    const qint32 folder = library.addFolder(0, u"folder"_s);
    {
        test::LibraryProcess other({u"lock"_s, library.path()});
        ASSERT_EQ(other.readLine(), u"locked"_s);
        data::Recordset rs;
        EXPECT_FALSE(library.funcs().GetNodeInfo(rs, library.connection()));
        EXPECT_FALSE(library.funcs().RenameFolder(folder, u"new"_s, library.connection()));
        data::Connection connection;
        EXPECT_FALSE(ConnectLibrary(library.folder(), library.fileName(), connection, {}));
    }
    EXPECT_EQ(library.rows(u"Select Name From Tree"_s), QStringList{u"folder"_s});
    EXPECT_TRUE(library.funcs().RenameFolder(folder, u"new"_s, library.connection()));
}

}  // namespace
}  // namespace varo
