#include "library_test.h"
#include "support/process.h"

#include <QDir>

#include <random>
#include <unistd.h>

namespace varo {
namespace {

using Survival = LibraryTest;

TEST_F(Survival, EveryReportedEditIsInTheLibraryAfterTheEditorWasKilled) {
    std::mt19937 random(5);
    QStringList reported;
    for (int round = 0; round < 25; ++round) {
        connection.close();
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
        connection.open(library.path());
        EXPECT_EQ(connection.damages(), QStringList());
        EXPECT_EQ(rows(u"Select ID From Formula Where (Select Count(*) From RecentVar "
                       "Where FormulaID = ID And Value = Name) <> 2"_s),
                  u""_s)
            << "a formula without both of its values";
        const QStringList present = library.rows(u"Select Name From Formula"_s);
        for (const QString& name : reported) {
            EXPECT_TRUE(present.contains(name)) << qPrintable(name);
        }
        EXPECT_LE(present.size(), reported.size() + round + 1);
    }
    library.addFolder(0, u"next"_s);
    EXPECT_EQ(QDir(library.folder()).entryList(QDir::Files), QStringList{library.fileName()});
}

}  // namespace
}  // namespace varo
