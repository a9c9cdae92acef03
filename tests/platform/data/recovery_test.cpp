// What programs that were killed have left beside a file, and what others are doing with it.

#include "platform/data/create_database.h"
#include "platform/data/database_header.h"
#include "platform/data/item_database.h"
#include "support/process.h"
#include "support/test_library.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

class Recovery : public testing::Test {
  protected:
    Recovery() { items.add(u"old"_s); }

    /// Leaves file and journal as a program does that is killed in the middle of a transaction.
    void killAWriter() {
        items.connection.close();
        test::LibraryProcess writer({u"spill"_s, items.path()});
        ASSERT_EQ(writer.readLine(), u"spilled"_s);
        writer.kill();
        writer.wait();
        ASSERT_GT(QFileInfo(items.path()).size(), 1000000);
        ASSERT_GT(QFileInfo(items.path() + u"-journal"_s).size(), 4096);
    }

    QString newDatabase(const QString& name) const {
        const QString path = items.directory.filePath(name);
        createDatabase(path,
                       u"Create Table Other (A); Create Table Item (ID Integer Primary Key, Name);"
                       "Insert Into Item(Name) Values('new'); Create Index I On Item(Name);"_s);
        return path;
    }

    void expectOneSoundFileWith(const QString& name) {
        items.connection.open(items.path());
        EXPECT_EQ(items.names(), QStringList{name});
        EXPECT_EQ(items.connection.damages(), QStringList());
        EXPECT_EQ(QDir(items.directory.path()).entryList(QDir::Files), QStringList{u"items.db"_s});
    }

    ItemDatabase items;
};

TEST_F(Recovery, TakesAFileBackToItsLastCommitAndKeepsItsJournalOutOfANewOne) {
    killAWriter();
    expectOneSoundFileWith(u"old"_s);

    killAWriter();
    ASSERT_TRUE(QFile::remove(items.path()));
    newDatabase(u"items.db"_s);
    expectOneSoundFileWith(u"new"_s);

    killAWriter();
    replaceDatabase(newDatabase(u"unfinished"_s), items.path());
    expectOneSoundFileWith(u"new"_s);

    items.connection.close();
    ASSERT_TRUE(QFile::resize(items.path(), 5000));
    replaceDatabase(newDatabase(u"unfinished"_s), items.path());
    expectOneSoundFileWith(u"new"_s);
}

TEST_F(Recovery, LeavesAJournalThatMayBeOfAnotherFileToTheProgramThatWroteIt) {
    const struct {
        QString statement;  ///< of the commit that is not completed
        bool countsCommit;
        bool isCertain;
    } cases[] = {{u"Create Table T (A)"_s, true, true},
                 {u"Create Table U (A)"_s, false, false},
                 {u"Pragma user_version = 7"_s, true, false},
                 {u"Pragma application_id = 7"_s, true, false}};
    QStringList names{u"old"_s};
    for (const auto& [statement, countsCommit, isCertain] : cases) {
        SCOPED_TRACE(statement.toStdString());
        items.connection.close();
        test::LibraryProcess writer({u"exclusive"_s, items.path(), statement});
        ASSERT_EQ(writer.readLine(), u"exclusive"_s);
        ASSERT_NE(writer.wait(), 0);
        names.append(u"under the lock"_s);
        QByteArray left = test::fileContent(items.path());
        if (!countsCommit) {
            // As early versions of SQLite do, which count a commit once for each lock.
            const QByteArray journal = test::fileContent(items.path() + u"-journal"_s);
            const QByteArray before = journal.mid(journal.indexOf("SQLite format 3"));
            ASSERT_GT(before.size(), kDatabaseHead);
            left.replace(24, 4, before.mid(24, 4)).replace(92, 4, before.mid(92, 4));
            ASSERT_TRUE(writeFile(items.path(), left));
        }
        if (!isCertain) {
            try {
                items.connection.open(items.path());
                ADD_FAILURE() << "the journal has been applied";
            } catch (const Error& error) {
                EXPECT_EQ(error.cause(), Error::Cause::UncertainJournal) << error.what();
            }
            EXPECT_EQ(test::fileContent(items.path()), left);
            EXPECT_EQ(runElsewhere(items.path(), "Select * From Item"), SQLITE_OK);
        }
        items.connection.open(items.path());
        EXPECT_EQ(items.names(), names);
    }
}

TEST_F(Recovery, AppliesNoJournalToAFileOfAnotherFormat) {
    killAWriter();
    const QByteArray foreign = QByteArray("\0\1\0\0Standard Jet DB\0", 20).leftJustified(8192, 'x');
    ASSERT_TRUE(writeFile(items.path(), foreign));
    const QByteArray journal = test::fileContent(items.path() + u"-journal"_s);
    EXPECT_THROW(items.connection.open(items.path()), Error);
    EXPECT_EQ(test::fileContent(items.path()), foreign);
    EXPECT_EQ(test::fileContent(items.path() + u"-journal"_s), journal);
    EXPECT_THROW(replaceDatabase(items.directory.filePath(u"missing"_s), items.path()), Error);
    EXPECT_EQ(test::fileContent(items.path()), foreign);
}

TEST_F(Recovery, ReplacesNoFileThatIsInUse) {
    const QString unfinished = newDatabase(u"unfinished"_s);
    {
        const Transaction transaction(items.connection);
        EXPECT_THROW(replaceDatabase(unfinished, items.path()), Error);
    }
    items.connection.close();
    {
        test::LibraryProcess logging({u"log"_s, items.path()});
        ASSERT_EQ(logging.readLine(), u"logged"_s);
        EXPECT_THROW(replaceDatabase(unfinished, items.path()), Error);
        EXPECT_THROW(items.connection.open(items.path()), Error);
    }
    items.connection.open(items.path());
    EXPECT_EQ(items.names(), (QStringList{u"old"_s, u"in the log"_s}));
    items.connection.close();
    replaceDatabase(unfinished, items.path());
    expectOneSoundFileWith(u"new"_s);
}

TEST_F(Recovery, KeepsALockWhenTheSameProgramOpensTheFileAgain) {
    Transaction transaction(items.connection);
    items.add(u"uncommitted"_s);
    {
        Connection second;
        second.open(items.path());
        EXPECT_EQ(second.query(u"Select Count(*) From Item"_s).integer(0), 1);
    }
    EXPECT_THROW(replaceDatabase(items.directory.filePath(u"missing"_s), items.path()), Error);
    test::LibraryProcess other({u"lock"_s, items.path()});
    ASSERT_EQ(other.readLine(), QString());
    EXPECT_EQ(other.wait(), 1);
    transaction.commit();
    EXPECT_EQ(items.names(), (QStringList{u"old"_s, u"uncommitted"_s}));
}

}  // namespace
}  // namespace varo::data
