#include "platform/data/copy_database.h"
#include "platform/data/item_database.h"
#include "support/file_limit.h"
#include "support/no_waiting.h"
#include "support/test_library.h"

#include <QDir>

#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

/// While it lives, a writer asks for the database each time that one is opened.
struct WriterAtEachOpening {
    explicit WriterAtEachOpening(const QString& path) {
        sqlite3_open(path.toUtf8().constData(), &writer);
        files.zName = "with a writer";
        files.xOpen = [](sqlite3_vfs*, auto* name, auto* file, int flags, int* out) {
            if ((flags & SQLITE_OPEN_MAIN_DB) != 0) {
                answers.push_back(
                    sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr));
                sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
            }
            return usual->xOpen(usual, name, file, flags, out);
        };
        sqlite3_vfs_register(&files, 1);
    }
    ~WriterAtEachOpening() {
        sqlite3_vfs_unregister(&files);
        sqlite3_close(writer);
    }
    Q_DISABLE_COPY_MOVE(WriterAtEachOpening)

    static inline sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
    static inline sqlite3* writer = nullptr;
    static inline std::vector<int> answers;
    sqlite3_vfs files = *usual;
};

TEST(Copy, NobodyWritesToTheSourceWhileItsBytesAreRead) {
    ItemDatabase items;
    items.add(QString(3'000'000, u'a'));
    const QString copy = items.directory.filePath(u"copy.db"_s);
    {
        const WriterAtEachOpening writer(items.path());
        copyDatabase(items.path(), copy);
        ASSERT_FALSE(writer.answers.empty());
        EXPECT_EQ(writer.answers.front(), SQLITE_OK);
        EXPECT_EQ(writer.answers.back(), SQLITE_BUSY) << "the bytes are read last";
    }
    const QByteArray source = test::fileContent(items.path());
    EXPECT_TRUE(test::fileContent(copy).replace(60, 4, source.mid(60, 4)) == source)
        << "all but the mark";
    // What the process has locked before stays locked.
    const Transaction transaction(items.connection);
    copyDatabase(items.path(), copy);
    sqlite3* other = nullptr;
    sqlite3_open(items.path().toUtf8().constData(), &other);
    EXPECT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_BUSY);
    sqlite3_close(other);
}

TEST(Copy, FailsWholeOnAFullDisk) {
    ItemDatabase items;
    items.add(QString(100'000, u'a'));
    const QString copy = items.directory.filePath(u"copy.db"_s);
    {
        const test::FileLimit full(50'000);
        EXPECT_THROW(copyDatabase(items.path(), copy), Error);
    }
    EXPECT_TRUE(QDir(items.directory.path()).entryList({u"copy*"_s}, QDir::Files).isEmpty());
}

TEST(Restore, GivesTheSameFileItsContentBackUnlessItIsNotWhatWasNoted) {
    enum class Expected { InPlace, Replaced, Refused };
    const auto write = [](ItemDatabase& items, const QByteArray& content) {
        items.connection.close();
        EXPECT_TRUE(writeFile(items.path(), content));
    };
    const struct {
        const char* what;
        std::function<void(ItemDatabase&)> meanwhile;
        Expected expected;
    } cases[] = {
        {"nothing", [](auto&) {}, Expected::InPlace},
        {"changed since", [](auto& items) { items.add(u"late"_s); }, Expected::Refused},
        {"locked", [](auto& items) { items.connection.execute(u"Begin Immediate"_s); },
         Expected::Refused},
        {"another format", [&](auto& items) { write(items, "another"); }, Expected::Refused},
        {"gone",
         [](auto& items) {
             items.connection.close();
             QFile::remove(items.path());
         },
         Expected::Replaced},
        {"damaged",
         [&](auto& items) {
             write(items, QByteArray("SQLite format 3", 16) + QByteArray(5000, 'x'));
         },
         Expected::Replaced},
        {"empty", [&](auto& items) { write(items, {}); }, Expected::Replaced},
    };
    const test::NoWaiting noWaiting;
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        ItemDatabase items;
        items.add(u"before"_s);
        const QString copy = items.directory.filePath(u"copy.db"_s);
        copyDatabase(items.connection, copy, [] {});
        EXPECT_EQ(differenceDigest(items.connection, copy), noDifference());
        const QByteArray before = test::fileContent(copy);
        items.add(QString(2'000'000, u'x'));
        const QByteArray difference = differenceDigest(items.connection, copy);
        EXPECT_NE(difference, noDifference());
        each.meanwhile(items);
        const QByteArray found =
            QFile::exists(items.path()) ? test::fileContent(items.path()) : QByteArray();
        if (each.expected == Expected::Refused) {
            EXPECT_THROW(restoreDatabase(copy, items.path(), difference), Error);
            EXPECT_TRUE(test::fileContent(items.path()) == found);
        } else {
            restoreDatabase(copy, items.path(), difference);
            const bool isSameFile = items.connection.isOpen();
            EXPECT_EQ(isSameFile, each.expected == Expected::InPlace);
            EXPECT_EQ(test::fileContent(items.path()) == before, !isSameFile);
            if (!isSameFile) {
                items.connection.open(items.path());
            }
            EXPECT_EQ(items.names(), QStringList{u"before"_s});
        }
        EXPECT_TRUE(test::fileContent(copy) == before);
    }
}

}  // namespace
}  // namespace varo::data
