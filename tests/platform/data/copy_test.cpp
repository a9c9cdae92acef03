#include "platform/data/copy_database.h"
#include "platform/data/item_database.h"
#include "support/file_limit.h"
#include "support/test_library.h"

#include <QDir>

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
    EXPECT_TRUE(test::fileContent(copy) == test::fileContent(items.path()));
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

}  // namespace
}  // namespace varo::data
