// Databases from strangers, and what lies beside them: nothing else is touched, nothing runs,
// nothing hangs.

#include "platform/data/copy_database.h"
#include "platform/data/item_database.h"
#include "platform/data/side_files.h"
#include "platform/data/sqlite_copy.h"
#include "support/process.h"
#include "support/read_only_folder.h"
#include "support/test_library.h"

#include <QDir>
#include <QtEndian>

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;
using namespace std::string_view_literals;

/// Ends a test that hangs.
class HostileFile : public testing::Test {
  protected:
    HostileFile() {
        alarm(100);
        items.add(u"stored"_s);
        items.connection.close();
    }
    ~HostileFile() override { alarm(0); }

    QString path() const { return items.path(); }
    QString beside(const char* suffix) const { return path() + QLatin1StringView(suffix); }

    /// Names and contents of all files in the folder.
    QStringList everything() const {
        QStringList lines;
        const auto kinds = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
        for (const QFileInfo& file : QDir(items.directory.path()).entryInfoList(kinds)) {
            lines.append(file.fileName());
            if (file.isFile() && file.symLinkTarget() != u"/dev/zero") {
                lines.last() += QString::number(qHash(test::fileContent(file.filePath())));
            }
        }
        return lines;
    }

    void runAndKill(const char* command) const {
        test::LibraryProcess process({QLatin1StringView(command), path()});
        ASSERT_NE(process.readLine(), QString());
        process.kill();
        process.wait();
    }

    bool opens(Access access) {
        try {
            items.connection.open(path(), access);
        } catch (const Error& error) {
            cause = error.cause();
            return false;
        }
        return true;
    }

    Error::Cause cause = Error::Cause::Other;  ///< of the last failure
    ItemDatabase items;
};

QByteArray bigEndian(quint32 number) {
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

/// A journal that has to be rolled back, of a database with so many pages of this size; what it
/// ends with names another file when that is not "".
QByteArray journal(quint32 pages, quint32 pageSize, const QByteArray& named = {}) {
    const QByteArray magic = QByteArray::fromHex("d9d505f920a163d7");
    QByteArray bytes = magic + bigEndian(0) + bigEndian(1) + bigEndian(pages) + bigEndian(512) +
                       bigEndian(pageSize);
    bytes = bytes.leftJustified(512, '\0');
    if (!named.isEmpty()) {
        quint32 sum = 0;
        for (const char byte : named) {
            sum += static_cast<quint32>(byte);
        }
        bytes += bigEndian((1U << 30) / pageSize + 1) + named +
                 bigEndian(static_cast<quint32>(named.size())) + bigEndian(sum) + magic;
    }
    return bytes;
}

QByteArray writeAheadLog(quint32 pageSize) {
    return (bigEndian(0x377f0682) + bigEndian(3007000) + bigEndian(pageSize))
        .leftJustified(32, '\0');
}

TEST_F(HostileFile, WithWhatIsNoJournalOfItIsRefusedAndNothingIsTouched) {
    const QString victim = items.directory.filePath(u"victim.txt"_s);
    ASSERT_TRUE(writeFile(victim, "the work of a year"));
    const auto linkTo = [](const QString& target) {
        return [=](const QString& name) { return QFile::link(target, name); };
    };
    const auto containing = [](const QByteArray& bytes) {
        return [=](const QString& name) { return writeFile(name, bytes); };
    };
    const std::function<bool(const QString&)> fifo = [](const QString& name) {
        return mkfifo(qPrintable(name), 0600) == 0;
    };
    const std::function<bool(const QString&)> folder = [](const QString& name) {
        return QDir().mkdir(name);
    };
    const std::function<bool(const QString&)> hardLink = [&](const QString& name) {
        std::filesystem::create_hard_link(victim.toStdString(), name.toStdString());
        return true;
    };
    struct Case {
        const char* what;
        const char* suffix;
        std::function<bool(const QString&)> put;
        Error::Cause cause = Error::Cause::NoRegularFile;
    };
    using enum Error::Cause;
    std::vector<Case> cases = {
        {"names a victim", "-journal", containing(journal(3, 4096, victim.toUtf8())),
         ForeignJournal},
        {"names a victim, unsynced", "-journal",
         containing(journal(3, 4096, victim.toUtf8()).replace(0, 12, QByteArray(12, '\0'))),
         ForeignJournal},
        {"foreign pages", "-journal", containing(journal(3, 1024)), ForeignJournal},
        {"an earlier file", "-journal",
         containing(journal(1, 4096).replace(8, 4, bigEndian(1)) + bigEndian(1) +
                    (QByteArray(24, '\0') + bigEndian(4711)).leftJustified(4096 + 4, '\0')),
         ForeignJournal},
        {"endless file", "-journal", containing(journal(1U << 31, 4096)), ForeignJournal},
        {"text", "-journal", containing("The journal of my journey to the west, in 12 chapters"),
         ForeignJournal},
        {"text", "-wal", containing("The journal of my journey to the west, in 12 chapters"),
         ForeignLog},
        {"log of another file", "-wal", containing(writeAheadLog(1024)), ForeignLog},
        {"log of a file without one", "-wal", containing(writeAheadLog(4096)), ForeignLog},
    };
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        cases.insert(cases.end(), {{"fifo", suffix, fifo},
                                   {"link to a victim", suffix, linkTo(victim)},
                                   {"link to nowhere", suffix, linkTo(u"/no/such/file"_s)},
                                   {"device", suffix, linkTo(u"/dev/zero"_s)},
                                   {"hard link", suffix, hardLink},
                                   {"folder", suffix, folder}});
    }
    const QString unfinished = items.directory.filePath(u"unfinished"_s);
    createDatabase(unfinished, u"Create Table T (A)"_s);
    for (const auto& [what, suffix, put, expected] : cases) {
        SCOPED_TRACE(std::string(suffix) + ": " + what);
        ASSERT_TRUE(put(beside(suffix)));
        const QStringList before = everything();
        EXPECT_FALSE(opens(Access::Write));
        EXPECT_EQ(cause, expected);
        EXPECT_FALSE(opens(Access::Read));
        EXPECT_EQ(cause, expected);
        EXPECT_THROW(replaceDatabase(unfinished, path()), Error);
        EXPECT_EQ(everything(), before);
        std::filesystem::remove(beside(suffix).toStdString());
    }
    EXPECT_TRUE(opens(Access::Write));
    EXPECT_EQ(items.names(), QStringList{u"stored"_s});
}

TEST_F(HostileFile, WithAShortJournalOpensWhenThatHoldsNothing) {
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        for (int size = 0; size <= 40; ++size) {
            for (const char byte : {'\0', 'x'}) {
                SCOPED_TRACE(QStringLiteral("%1, %2 of %3")
                                 .arg(suffix)
                                 .arg(size)
                                 .arg(int{byte})
                                 .toStdString());
                ASSERT_TRUE(writeFile(beside(suffix), QByteArray(size, byte)));
                // For SQLite a file of one byte is empty.
                const bool holdsNothing = size == 0 || suffix == "-shm"sv ||
                                          (suffix == "-journal"sv && (byte == '\0' || size == 1));
                for (const Access access : {Access::Read, Access::Write}) {
                    EXPECT_EQ(opens(access), holdsNothing);
                    items.connection.close();
                }
                QFile::remove(beside(suffix));
            }
        }
    }
}

TEST_F(HostileFile, IsReadWithoutAChangeAlsoWhenItHasToBeRecovered) {
    for (const char* command : {"", "log", "spill"}) {
        SCOPED_TRACE(command);
        if (*command != '\0') {
            runAndKill(command);
            const QString side = beside(*command == 'l' ? "-wal" : "-journal");
            const qint64 size = QFileInfo(side).size();
            constexpr qint64 kHoles = 1 << 26;
            ASSERT_TRUE(QFile::resize(side, kHoles));
            EXPECT_FALSE(opens(Access::Glance));
            EXPECT_EQ(cause, Error::Cause::NotCopied);
            const SqliteCopy copy(path(), *databaseHeader(path()), Access::Read);
            struct stat copied {};
            ASSERT_EQ(stat(qPrintable(copy.path() + side.sliced(path().size())), &copied), 0);
            EXPECT_EQ(copied.st_size, kHoles);
            EXPECT_LT(copied.st_blocks * 512, kHoles / 2) << "holes are written out";
            ASSERT_TRUE(QFile::resize(side, size));
        }
        const QStringList before = everything();
        ASSERT_TRUE(opens(Access::Read));
        EXPECT_EQ(items.names().value(0), u"stored"_s);
        EXPECT_EQ(items.connection.damages(), QStringList());
        EXPECT_THROW(items.add(u"new"_s), Error);
        items.connection.close();
        EXPECT_EQ(everything(), before);
        EXPECT_TRUE(opens(Access::Write));
        EXPECT_EQ(items.names().size(), *command == '\0' ? 1 : 2);
        items.connection.close();
    }
    EXPECT_EQ(everything().size(), 1);
    EXPECT_THROW(requireRoom(QDir::tempPath(), qint64{1} << 60), Error);
}

TEST_F(HostileFile, GetsNoJournalOfADatabaseThatWasMadeInTheSameWay) {
    ItemDatabase other;
    other.add(u"other"_s);
    other.connection.close();
    const QByteArray made = test::fileContent(other.path());
    // A copy, of which the same number of commits has made something else.
    const QString sibling = items.directory.filePath(u"sibling.db"_s);
    ASSERT_TRUE(QFile::copy(path(), sibling));
    ASSERT_EQ(runElsewhere(sibling, "Create Table More (A)"), SQLITE_OK);
    ASSERT_EQ(runElsewhere(path(), "Insert Into Item(Name) Values ('more')"), SQLITE_OK);
    runAndKill("spill");
    ASSERT_TRUE(QFile::copy(beside("-journal"), other.path() + u"-journal"_s));
    for (const QByteArray& sound : {test::fileContent(sibling), made}) {
        ASSERT_TRUE(writeFile(other.path(), sound));
        for (const Access access : {Access::Read, Access::Write}) {
            EXPECT_THROW(other.connection.open(other.path(), access), Error);
        }
        EXPECT_EQ(test::fileContent(other.path()), sound);
    }
    // Of two libraries from one template, too.
    items.connection.close();
    const QString copy = items.directory.filePath(u"copy.db"_s);
    ASSERT_TRUE(QFile::remove(other.path() + u"-journal"_s));
    copyDatabase(other.path(), copy);
    EXPECT_NE(databaseHeader(copy)->mark, databaseHeader(other.path())->mark);
    EXPECT_TRUE(opens(Access::Write));
}

TEST_F(HostileFile, WithAWriteAheadLogTakesOnlyItsOwnAndHasNoneThen) {
    runAndKill("log");
    if (const test::ReadOnlyFolder folder(items.directory.path(), path(),
                                          test::ReadOnlyFolder::File::Writable);
        folder.readOnly()) {
        EXPECT_FALSE(opens(Access::Write));
        EXPECT_EQ(cause, Error::Cause::ReadOnlyFolder);
    }
    const QString damaged = items.directory.filePath(u"damaged.db"_s);
    ASSERT_TRUE(writeFile(damaged, test::fileContent(path()).replace(100, 8, QByteArray(8, 'x'))));
    try {
        Connection().open(damaged);
        ADD_FAILURE() << "damaged";
    } catch (const Error& error) {
        EXPECT_EQ(error.cause(), Error::Cause::Other);
    }
    std::filesystem::remove(damaged.toStdString());
    ASSERT_TRUE(QFile::resize(beside("-shm"), 100));
    ASSERT_TRUE(opens(Access::Write));
    EXPECT_EQ(items.names(), (QStringList{u"stored"_s, u"in the log"_s}));
    EXPECT_EQ(QDir(items.directory.path()).entryList(QDir::Files), QStringList{u"items.db"_s});
    runAndKill("log");
    EXPECT_THROW(items.names(), Error)
        << "its index is shared with a program that may cut it short";
    EXPECT_FALSE(items.connection.isInPlace()) << "to be opened again";
    ASSERT_TRUE(opens(Access::Write));
    EXPECT_EQ(items.names().size(), 3);
    items.connection.close();

    // A library with a log of its own is renamed over one whose log has stayed.
    const QString other = items.directory.filePath(u"other.db"_s);
    ASSERT_TRUE(QFile::copy(path(), other));
    EXPECT_EQ(runElsewhere(other, "PRAGMA journal_mode = WAL"), SQLITE_OK);
    runAndKill("log");
    usleep(20'000);  // file times advance in steps
    std::filesystem::rename(other.toStdString(), path().toStdString());
    const QStringList before = everything();
    EXPECT_FALSE(opens(Access::Write));
    EXPECT_FALSE(opens(Access::Read));
    EXPECT_EQ(everything(), before);
    ASSERT_TRUE(QFile::remove(beside("-wal")));
    ASSERT_TRUE(opens(Access::Write));
    EXPECT_EQ(items.names().size(), 3);
}

TEST_F(HostileFile, LaterThanItsLogGetsItsOwnAsFarAsThatCanBeTold) {
    constexpr auto kGrow = "Insert Into Item(Name, Bytes) Values ('grown', zeroblob(9000))";
    constexpr auto kCheckpoint = "PRAGMA wal_checkpoint";
    constexpr auto kAdd = "Insert Into Item(Name) Values ('added')";
    const auto run = [](sqlite3* database, const char* statements) {
        ASSERT_EQ(sqlite3_exec(database, statements, nullptr, nullptr, nullptr), SQLITE_OK);
    };
    const struct {
        const char* what;
        std::vector<const char*> statements;
        int pagesBehind;
        qsizetype names;  ///< 0: it is refused
    } cases[] = {
        {"nothing of it written", {kGrow}, 0, 0},
        {"all of it written", {kGrow, kCheckpoint}, 0, 2},
        {"all of it written, and it has grown", {kAdd, kCheckpoint}, 1, 0},
        {"written as far as to a commit", {kGrow, "read", kAdd, kCheckpoint}, 0, 3},
        {"the same without a first page", {kAdd, "read", kAdd, kCheckpoint}, 0, 0},
    };
    const QByteArray base = test::fileContent(path());
    for (const auto& [what, statements, pagesBehind, names] : cases) {
        SCOPED_TRACE(what);
        const ItemDatabase other;
        const QString log = other.path() + u"-wal"_s;
        ASSERT_TRUE(writeFile(other.path(), base));
        sqlite3* handles[2] = {};
        for (sqlite3*& each : handles) {
            sqlite3_open(other.path().toUtf8().constData(), &each);
            run(each, "PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0");
        }
        for (const char* each : statements) {
            each == "read"sv ? run(handles[1], "Begin; Select * From Item") : run(handles[0], each);
        }
        const QByteArray bytes = test::fileContent(log);
        const QByteArray sound =
            test::fileContent(other.path()) + QByteArray(4096 * pagesBehind, '\0');
        for (sqlite3* each : handles) {
            sqlite3_close_v2(each);
        }
        for (const Access access : {Access::Read, Access::Write}) {
            ASSERT_TRUE(writeFile(beside("-wal"), bytes));
            usleep(20'000);  // file times advance in steps
            ASSERT_TRUE(writeFile(path(), sound));
            ASSERT_EQ(opens(access), names > 0);
            EXPECT_EQ(names > 0 ? items.names().size() : 0, names);
            items.connection.close();
        }
        QFile::remove(beside("-wal"));
    }
}

TEST_F(HostileFile, ThatIsReplacedDeletedOrCutShortWhileOpenIsNoticed) {
    const QByteArray sound = test::fileContent(path());
    const QString other = items.directory.filePath(u"other.db"_s);
    ItemDatabase stranger;
    for (int commits = 0; commits < 9; ++commits) {
        stranger.add(u"strange"_s);
    }
    const auto overwriting = [&](const QByteArray& bytes) {
        return [this, bytes] { ASSERT_TRUE(writeFile(path(), bytes)); };
    };
    const struct {
        const char* what;
        std::function<void()> change;
        bool isDatabaseThen;
    } cases[] = {
        {"deleted", [&] { QFile::remove(path()); }, false},
        {"replaced", [&] { std::filesystem::rename(other.toStdString(), path().toStdString()); },
         true},
        {"emptied", [&] { EXPECT_TRUE(QFile::resize(path(), 0)); }, false},
        {"cut short", [&] { EXPECT_TRUE(QFile::resize(path(), sound.size() - 1)); }, false},
        {"overwritten", overwriting(test::fileContent(stranger.path())), true},
        {"overwritten by an earlier copy", overwriting(sound), true},
        {"overwritten by a text", overwriting(QByteArray(sound.size(), 'x')), false},
        {"given a log", [&] { EXPECT_EQ(runElsewhere(path(), "PRAGMA journal_mode = WAL"), 0); },
         true},
    };
    for (const auto& [what, change, isDatabaseThen] : cases) {
        SCOPED_TRACE(what);
        QFile::remove(path());
        ASSERT_TRUE(writeFile(path(), sound) && writeFile(other, sound));
        ASSERT_TRUE(opens(Access::Write));
        int told = 0;
        items.connection.setReplacedNotice([&] { ++told; });
        items.add(u"before"_s);
        EXPECT_TRUE(items.connection.isInPlace());
        usleep(20'000);  // file times advance in steps
        change();
        const QStringList before = everything();
        for (int attempt = 0; attempt < 2; ++attempt) {
            try {
                items.add(u"lost"_s);
                ADD_FAILURE() << "swallowed";
            } catch (const Error& error) {
                EXPECT_TRUE(error.isReplaced()) << error.what();
            }
            EXPECT_THROW(items.names(), Error);
            EXPECT_THROW(Transaction{items.connection}, Error);
        }
        EXPECT_EQ(told, 1);
        EXPECT_FALSE(items.connection.isInPlace());
        EXPECT_EQ(everything(), before);
        EXPECT_EQ(opens(Access::Write), isDatabaseThen);
        items.connection.close();
    }
    // With as many commits as before; SQLite itself takes this file for the other one.
    ASSERT_TRUE(writeFile(path(), sound) && opens(Access::Write));
    items.add(u"before"_s);
    const QByteArray before = test::fileContent(path());
    EXPECT_EQ(runElsewhere(path(), "Update Item Set Name = 'after'"), SQLITE_OK);
    const QByteArray after = test::fileContent(path());
    EXPECT_EQ(items.names().at(0), u"after"_s);
    QByteArray sibling = before;
    sibling.replace(24, 4, after.mid(24, 4)).replace(92, 4, after.mid(92, 4));
    usleep(20'000);
    ASSERT_TRUE(writeFile(path(), sibling));
    EXPECT_EQ(items.names().at(0), u"stored"_s);
}

/// The number of the root page of a table.
int rootOf(Connection& connection, const QString& table) {
    return connection.query(u"Select rootpage From sqlite_schema Where name = ?"_s, {table})
        .integer(0);
}

TEST_F(HostileFile, WhosePagesLeadToOneAnotherIsReadAndCheckedToAnEnd) {
    items.connection.open(path());
    {
        Transaction transaction(items.connection);
        for (int number = 0; number < 3000; ++number) {
            items.add(QString(100, u'a'), number);
        }
        transaction.commit();
    }
    const int root = rootOf(items.connection, u"Item"_s);
    items.connection.close();
    // Above each leaf stand five pages that each lead to the next from every one of their cells.
    constexpr int kPage = 4096;
    QByteArray bytes = test::fileContent(path());
    const QByteArray interior = bytes.mid((root - 1) * kPage, kPage);
    ASSERT_EQ(interior[0], 5);
    const quint16 cells = qFromBigEndian<quint16>(interior.constData() + 3);
    const quint32 leaf = qFromBigEndian<quint32>(
        interior.constData() + qFromBigEndian<quint16>(interior.constData() + 12));
    const auto pages = static_cast<quint32>(bytes.size() / kPage);
    constexpr quint32 kLevels = 5;
    const auto leadingTo = [&](quint32 child) {
        QByteArray page = interior;
        for (int cell = 0; cell < cells; ++cell) {
            const auto place = qFromBigEndian<quint16>(interior.constData() + 12 + 2 * cell);
            page.replace(place, 4, bigEndian(child));
        }
        return page.replace(8, 4, bigEndian(child));
    };
    bytes.replace((root - 1) * kPage, kPage, leadingTo(pages + 1));
    for (quint32 level = 1; level <= kLevels; ++level) {
        bytes += leadingTo(level == kLevels ? leaf : pages + level + 1);
    }
    bytes.replace(28, 4, bigEndian(pages + kLevels));
    ASSERT_TRUE(writeFile(path(), bytes));
    ASSERT_TRUE(opens(Access::Write));
    EXPECT_THROW(items.connection.query(u"Select max(Amount + 0) From Item"_s), Error);
    EXPECT_THROW(
        {
            int row = 0;
            for (Recordset rows = items.connection.query(u"Select ID From Item"_s); !rows.atEnd();
                 rows.moveNext()) {
                if (++row % 1000 == 0) {
                    items.connection.query(u"Select 1"_s);
                }
            }
        },
        Error);
    EXPECT_FALSE(items.connection.damages().isEmpty());
}

TEST_F(HostileFile, WhoseTextsShareTheirPagesIsNotReadManyTimesOver) {
    items.connection.open(path());
    {
        Transaction transaction(items.connection);
        items.add(QString(1'100'000, u'b'));
        for (int row = 0; row < 400; ++row) {
            items.add(QString(20'000, u'a'));
        }
        transaction.commit();
    }
    const auto read = [&](const QString& query, bool alone) {
        int row = 0;
        for (Recordset rows = items.connection.query(query); !rows.atEnd(); rows.moveNext()) {
            if (!alone && ++row % 10 == 0) {
                items.connection.query(u"Select 1"_s);
            }
        }
    };
    const auto all = u"Select ID,Name From Item"_s;
    const auto sorted = u"Select Name From Item Order By Amount"_s;
    read(all, true);
    read(sorted, true);
    items.connection.close();
    test::shareLongText(path(), 7);
    items.connection.open(path());
    EXPECT_EQ(items.connection.query(u"Select length(Name) From Item Where ID = 3"_s).integer(0),
              1'043'000);
    EXPECT_THROW(read(all, true), Error);
    EXPECT_THROW(read(all, false), Error);
    EXPECT_THROW(read(sorted, true), Error);
    items.connection.execute(u"Delete From Item Where ID = 1"_s);
    EXPECT_NO_THROW(items.connection.query(all)) << "the next statement has a budget of its own";
}

TEST_F(HostileFile, SortsInTemporaryFilesOfBoundedSize) {
    items.connection.open(path());
    for (const char* query : {"Select Distinct b From v", "Select b From v Order By b"}) {
        const auto sort = [&](int rows) {
            // Written anew for each row, as a long value that rows share is.
            items.connection.query(
                u"With Recursive n(i) As (Select 1 Union All Select i+1 From n "
                "Limit %1), v(b) As (Select randomblob(60000) From n) "
                "Select count(1) From (%2)"_s.arg(rows)
                    .arg(QLatin1StringView(query)));
        };
        EXPECT_NO_THROW(sort(300));
        try {
            sort(1300);
            ADD_FAILURE() << query;
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().startsWith(u"what the statement sorts"))
                << error.what();
        }
        EXPECT_EQ(items.names(), QStringList{u"stored"_s});
    }
}

TEST_F(HostileFile, ComputesNothingWhenItIsOpenedOrChecked) {
    ASSERT_EQ(runElsewhere(path(),
                           "Create Table X (A); Create Index XA On X (A); Insert Into X Values (1);"
                           "Pragma writable_schema = 1; Update sqlite_master "
                           "Set sql = 'Create Index XA On X (A + 1)' Where name = 'XA'"),
              SQLITE_OK);
    items.connection.open(path());
    EXPECT_EQ(items.connection.damages(), QStringList());
    items.connection.close();
    // Statistics, which SQLite reads whenever a file is opened, whose values take minutes.
    const QByteArray statements =
        "Analyze; With Recursive n(i) As (Select 1 Union All Select i + 1 From n Limit 30000) "
        "Insert Into sqlite_stat1 Select Null, Null, Null From n;"
        "Pragma writable_schema = 1; Update sqlite_master Set sql = "
        "'CREATE TABLE sqlite_stat1(tbl,idx,stat As (" +
        QByteArray("length(replace(hex(zeroblob(60000)), ''0'', ''1'')) + ").repeated(30) +
        "0))' Where name = 'sqlite_stat1'";
    ASSERT_EQ(runElsewhere(path(), statements.constData()), SQLITE_OK);
    EXPECT_FALSE(opens(Access::Read));
    EXPECT_FALSE(opens(Access::Write));
}

TEST_F(HostileFile, RunsNothingThatItsTablesSay) {
    ASSERT_EQ(
        runElsewhere(path(),
                     "Create Trigger T After Insert On Item Begin Delete From Item; End;"
                     "Create View V As Select * From Item;"
                     "Create Virtual Table W Using fts5(v);"
                     "Create Table C (A Check (A < 3));"
                     "Create Table G (A, B As (zeroblob(100000000))); Insert Into G Values (5)"),
        SQLITE_OK);
    items.connection.open(path());
    items.add(u"new"_s);
    EXPECT_EQ(items.names(), (QStringList{u"stored"_s, u"new"_s}));
    items.connection.execute(u"Insert Into C Values (5)"_s);
    EXPECT_THROW(items.connection.query(u"Select * From V"_s), Error);
    EXPECT_THROW(items.connection.query(u"Select * From W"_s), Error);
    EXPECT_THROW(items.connection.query(u"Select B From G"_s), Error) << "too long a value";
    EXPECT_THROW(items.connection.execute(u"Attach ? As Other"_s, {path()}), Error);
    EXPECT_EQ(items.connection.structure(u"G"_s)->columns.size(), 1);
    EXPECT_EQ(items.connection.structure(u"W"_s)->columns.size(), 0);
    EXPECT_EQ(items.connection.structure(u"V"_s)->columns.size(), 0);
}

}  // namespace
}  // namespace varo::data
