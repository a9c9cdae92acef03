#include "platform/data/connection.h"

#include "platform/data/create_database.h"
#include "platform/data/item_database.h"
#include "support/process.h"
#include "support/test_library.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <unistd.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

QStringList filesIn(const QTemporaryDir& directory) {
    return QDir(directory.path()).entryList(QDir::Files | QDir::Hidden);
}

TEST(Connection, OpensAnExistingFileAndLeavesNothingBesideIt) {
    ItemDatabase items;
    EXPECT_TRUE(items.connection.isOpen());
    EXPECT_EQ(items.connection.path(), items.path());
    items.add(u"one"_s);
    EXPECT_EQ(filesIn(items.directory), QStringList{u"items.db"_s});
}

TEST(Connection, IsClosedAtFirstAndAfterClose) {
    Connection connection;
    EXPECT_FALSE(connection.isOpen());
    EXPECT_EQ(connection.path(), QString());
    EXPECT_THROW(connection.query(u"Select 1"_s), Error);
    EXPECT_THROW(connection.execute(u"Delete From Item"_s), Error);
    EXPECT_THROW(connection.lastInsertedId(), Error);
    EXPECT_THROW(Transaction{connection}, Error);

    ItemDatabase items;
    items.connection.close();
    EXPECT_FALSE(items.connection.isOpen());
    EXPECT_THROW(items.names(), Error);
}

TEST(Connection, CreatesNoFileWhenThereIsNone) {
    const QTemporaryDir directory;
    Connection connection;
    EXPECT_THROW(connection.open(directory.filePath(u"missing.db"_s)), Error);
    EXPECT_THROW(connection.open(directory.path()), Error);
    EXPECT_THROW(connection.open(QString()), Error);
    EXPECT_FALSE(connection.isOpen());
    EXPECT_TRUE(filesIn(directory).isEmpty());
}

TEST(Connection, OpeningAnotherFileClosesWhatWasOpen) {
    ItemDatabase first;
    ItemDatabase second;
    first.add(u"first"_s);
    second.add(u"second"_s);
    Recordset old = first.connection.query(u"Select Name From Item"_s);
    first.connection.open(second.path());
    EXPECT_FALSE(old.isOpen());
    EXPECT_EQ(first.names(), QStringList{u"second"_s});
}

TEST(Connection, IsClosedWhenOpeningAnotherFileFails) {
    ItemDatabase items;
    EXPECT_THROW(items.connection.open(items.path() + u".missing"_s), Error);
    EXPECT_FALSE(items.connection.isOpen());
}

TEST(Connection, KeepsItsFileWhenMoved) {
    ItemDatabase items;
    items.add(u"one"_s);
    Connection moved = std::move(items.connection);
    EXPECT_EQ(moved.query(u"Select Name From Item"_s).text(0), u"one"_s);
    items.connection = std::move(moved);
    EXPECT_EQ(items.names(), QStringList{u"one"_s});
}

TEST(Connection, TakesOddFileNames) {
    const QTemporaryDir directory;
    for (const QString& name : {u"公式库 %20 ?mode=memory#.db"_s, u"it's; -- a \"name\".db"_s,
                                u":memory:"_s, u"file:x.db"_s, u"😀.db"_s}) {
        const QString path = directory.path() + u'/' + name;
        createDatabase(path, u"Create Table T (A); Insert Into T Values (7);"_s);
        ASSERT_TRUE(QFile::exists(path)) << qPrintable(name);
        Connection connection;
        connection.open(path);
        EXPECT_EQ(connection.query(u"Select A From T"_s).integer(0), 7);
    }
}

TEST(Connection, StoresAndFindsTextsAsTheyAreTyped) {
    const QString texts[] = {
        u""_s,
        u"it's"_s,
        u"say \"hello\""_s,
        u"100 % _ \\ [a] * ?"_s,
        u"'; Drop Table Item; --"_s,
        u"two\nlines\r\nand\ttabs"_s,
        u"公式 ΔΣ 😀𝛼"_s,
        QString(255, u'x'),
        QString(256, u'y'),
        QString(100000, u'长'),
    };
    ItemDatabase items;
    for (const QString& text : texts) {
        const qint32 id = items.add(text);
        const Recordset found =
            items.connection.query(u"Select ID,Name From Item Where Name = ?"_s, {text});
        ASSERT_FALSE(found.atEnd()) << qPrintable(text);
        EXPECT_EQ(found.integer(0), id);
        EXPECT_EQ(found.text(1), text);
    }
    EXPECT_EQ(items.names(), QStringList(std::begin(texts), std::end(texts)));
}

TEST(Connection, RefusesTextThatCannotBeStoredAsItStands) {
    ItemDatabase items;
    const QString halfPair(QChar(0xD83D));
    for (const QString& text : {u"a\0b"_s, halfPair}) {
        EXPECT_THROW(items.add(text), Error);
    }
    EXPECT_TRUE(items.names().isEmpty());
}

TEST(Connection, ComparesTextWithoutRegardToAsciiLetterCase) {
    ItemDatabase items;
    items.add(u"Beam"_s);
    const auto finds = [&](const QString& name) {
        return !items.connection.query(u"Select * From Item Where Name = ?"_s, {name}).atEnd();
    };
    EXPECT_TRUE(finds(u"bEAM"_s));
    EXPECT_FALSE(finds(u"Bean"_s));
}

TEST(Connection, ReportsHowManyRowsAStatementChanged) {
    ItemDatabase items;
    items.add(u"a"_s);
    items.add(u"b"_s);
    EXPECT_EQ(items.connection.execute(u"Update Item Set Amount = 1"_s), 2);
    EXPECT_EQ(items.connection.execute(u"Delete From Item Where Name = ?"_s, {u"a"_s}), 1);
    EXPECT_EQ(items.connection.execute(u"Delete From Item Where ID = ?"_s, {99}), 0);
}

TEST(Connection, RefusesWhatIsNotOneStatementWithItsValues) {
    ItemDatabase items;
    items.add(u"a"_s);
    EXPECT_THROW(items.connection.execute(u"Delete From Item; Delete From Item"_s), Error);
    EXPECT_THROW(items.connection.execute(u""_s), Error);
    EXPECT_THROW(items.connection.execute(u"Delete From Item Where ID = ?"_s), Error);
    EXPECT_THROW(items.connection.execute(u"Delete From Item"_s, {1}), Error);
    EXPECT_THROW(items.connection.query(u"Select \"Nothing\" From Item"_s), Error);
    EXPECT_THROW(items.connection.query(u"Select * From Nowhere"_s), Error);
    EXPECT_EQ(items.names(), QStringList{u"a"_s});
}

TEST(Connection, NeverGivesAnIdentifierTwice) {
    ItemDatabase items;
    const qint32 first = items.add(u"a"_s);
    const qint32 second = items.add(u"b"_s);
    items.connection.execute(u"Delete From Item"_s);
    EXPECT_GT(second, first);
    EXPECT_GT(items.add(u"c"_s), second);
}

TEST(Connection, ReportsThatIdentifiersHaveRunOut) {
    ItemDatabase items;
    items.connection.execute(u"Insert Into Item(ID) Values(2147483647)"_s);
    EXPECT_EQ(items.connection.lastInsertedId(), 2147483647);
    items.connection.execute(u"Insert Into Item(Name) Values('beyond')"_s);
    EXPECT_THROW(items.connection.lastInsertedId(), Error);
}

TEST(Connection, GivesUpOnALockOfAnotherProgramAfterTwoSeconds) {
    ItemDatabase items;
    items.connection.close();
    test::LibraryProcess other({u"lock"_s, items.path()});
    ASSERT_EQ(other.readLine(), u"locked"_s);

    QElapsedTimer timer;
    timer.start();
    EXPECT_THROW(items.connection.open(items.path()), Error);
    EXPECT_GE(timer.elapsed(), 1800);
    EXPECT_LE(timer.elapsed(), 10000);

    other.kill();
    other.wait();
    items.connection.open(items.path());
    items.add(u"after"_s);
    EXPECT_EQ(items.names(), QStringList{u"after"_s});
}

TEST(Connection, FailsToReadAndWriteWhileAnotherProgramHasTheLock) {
    ItemDatabase items;
    test::LibraryProcess other({u"lock"_s, items.path()});
    ASSERT_EQ(other.readLine(), u"locked"_s);
    EXPECT_THROW(items.add(u"a"_s), Error);
    EXPECT_THROW(items.names(), Error);
    other.kill();
    other.wait();
    EXPECT_TRUE(items.names().isEmpty());
}

TEST(Connection, ReadsAndWritesAFileThatHasAWriteAheadLog) {
    ItemDatabase items;
    items.connection.execute(u"PRAGMA journal_mode = WAL"_s);
    items.add(u"one"_s);
    items.connection.close();
    EXPECT_EQ(filesIn(items.directory), QStringList{u"items.db"_s});
    items.connection.open(items.path());
    items.add(u"two"_s);
    EXPECT_EQ(items.names(), (QStringList{u"one"_s, u"two"_s}));
    items.connection.close();
    EXPECT_EQ(filesIn(items.directory), QStringList{u"items.db"_s});
}

// A folder mounted for reading only binds every user; where mounting is not allowed, permissions
// bind all but the super-user.
class ReadOnlyFolder {
  public:
    explicit ReadOnlyFolder(const QString& path) : path_(QFile::encodeName(path)) {
        mounted_ = mount(path_, path_, nullptr, MS_BIND, nullptr) == 0;
        if (mounted_) {
            readOnly_ =
                mount(nullptr, path_, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
        } else if (geteuid() != 0) {
            readOnly_ = chmodAll(QFile::ReadOwner | QFile::ExeOwner);
        }
    }
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;
    ~ReadOnlyFolder() {
        if (mounted_) {
            umount2(path_, MNT_DETACH);
        } else {
            chmodAll(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
    }
    bool readOnly() const { return readOnly_; }

  private:
    bool chmodAll(QFile::Permissions permissions) const {
        bool done = true;
        const QDir folder(QFile::decodeName(path_));
        for (const QString& name : folder.entryList(QDir::Files)) {
            done = QFile::setPermissions(folder.filePath(name), permissions) && done;
        }
        return QFile::setPermissions(folder.path(), permissions) && done;
    }

    QByteArray path_;
    bool mounted_ = false;
    bool readOnly_ = false;
};

TEST(Connection, OpensAReadOnlyFileForReading) {
    ItemDatabase items;
    items.add(u"one"_s);
    items.connection.close();
    const ReadOnlyFolder folder(items.directory.path());
    if (!folder.readOnly()) {
        GTEST_SKIP() << "no way to make a folder read-only for this user";
    }
    items.connection.open(items.path());
    EXPECT_EQ(items.names(), QStringList{u"one"_s});
    EXPECT_THROW(items.add(u"two"_s), Error);
    EXPECT_EQ(items.names(), QStringList{u"one"_s});
    EXPECT_THROW(createDatabase(items.directory.filePath(u"new.db"_s), u"Create Table T (A);"_s),
                 Error);
    EXPECT_EQ(filesIn(items.directory), QStringList{u"items.db"_s});
    items.connection.close();
}

TEST(CreateDatabase, LeavesWhatIsThereAlready) {
    const QTemporaryDir directory;
    const QString path = directory.filePath(u"there.db"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("mine") == 4);
    file.close();
    EXPECT_THROW(createDatabase(path, u"Create Table T (A);"_s), Error);
    EXPECT_EQ(test::fileContent(path), "mine");
    EXPECT_EQ(filesIn(directory), QStringList{u"there.db"_s});
}

TEST(CreateDatabase, LeavesNothingBehindWhenAStatementFails) {
    const QTemporaryDir directory;
    const QString path = directory.filePath(u"new.db"_s);
    EXPECT_THROW(createDatabase(path, u"Create Table T (A); Insert Into Nowhere Values (1);"_s),
                 Error);
    EXPECT_THROW(createDatabase(directory.filePath(u"no/such/folder.db"_s), u"Select 1;"_s), Error);
    EXPECT_TRUE(filesIn(directory).isEmpty());
}

}  // namespace
}  // namespace varo::data
