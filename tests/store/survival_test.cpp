#include "library_test.h"
#include "store/library_connection.h"
#include "support/process.h"

#include <QDir>

#include <random>
#include <unistd.h>

namespace varo {
namespace {

/// What a library holds after the worst that other processes can do to it.
class Survival : public LibraryTest {
  protected:
    Survival() { connection.close(); }

    static QStringList linesUntilTheEnd(test::LibraryProcess& process) {
        QStringList lines;
        for (QString line = process.readLine(); !line.isEmpty(); line = process.readLine()) {
            lines.append(line);
        }
        return lines;
    }

    /// The formulas' names. Every formula is in with both of its values, and the file is sound.
    QStringList formulasOfASoundLibrary() {
        connection.open(library.path());
        EXPECT_EQ(rows(u"PRAGMA integrity_check"_s), u"ok"_s);
        EXPECT_EQ(rows(u"Select ID From Formula Where (Select Count(*) From RecentVar "
                       "Where FormulaID = ID And Value = Name) <> 2"_s),
                  u""_s);
        const QStringList names = library.rows(u"Select Name From Formula Order By ID"_s);
        connection.close();
        return names;
    }
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
        reported += linesUntilTheEnd(editor);
        const QStringList present = formulasOfASoundLibrary();
        for (const QString& name : reported) {
            EXPECT_TRUE(present.contains(name)) << qPrintable(name);
        }
        EXPECT_LE(present.size(), reported.size() + round + 1);
    }
    EXPECT_FALSE(reported.contains(u"refused"_s));
    connection.open(library.path());
    library.addFolder(0, u"next"_s);
    EXPECT_EQ(QDir(library.folder()).entryList(QDir::Files), QStringList{library.fileName()});
}

TEST_F(Survival, AFullDiskRefusesOneEditAndKeepsTheOthers) {
    const qint64 size = QFileInfo(library.path()).size();
    test::LibraryProcess editor({u"fill"_s, library.path(), QString::number(size + 200000)});
    QStringList reported = linesUntilTheEnd(editor);
    EXPECT_EQ(editor.wait(), 0);
    ASSERT_GT(reported.size(), 10);
    EXPECT_EQ(reported.takeLast(), u"refused"_s);
    EXPECT_EQ(formulasOfASoundLibrary(), reported);
}

TEST_F(Survival, ALibraryLockedByAnotherProgramFailsWithoutHarm) {
    connection.open(library.path());
    {
        test::LibraryProcess other({u"lock"_s, library.path()});
        ASSERT_EQ(other.readLine(), u"locked"_s);
        EXPECT_FALSE(funcs.GetNodeInfo(rs, connection));
        EXPECT_FALSE(ConnectLibrary(library.folder(), library.fileName(), connection, {}));
    }
    EXPECT_TRUE(ConnectLibrary(library.folder(), library.fileName(), connection, {}));
}

}  // namespace
}  // namespace varo
