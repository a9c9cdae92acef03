#include "platform/data/connection.h"
#include "platform/data/item_database.h"
#include "support/test_library.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

/// The bytes of a database with some thousand rows and a long value in it.
QByteArray soundFile() {
    ItemDatabase items;
    Transaction transaction(items.connection);
    for (int number = 0; number < 1000; ++number) {
        items.add(u"item %1 with a name that fills the page"_s.arg(number), number);
    }
    BlobField field = items.connection.field(u"Item"_s, u"Bytes"_s, 500);
    const QByteArray bytes = test::pictureBytes(50000);
    field.replace(bytes.size());
    field.appendChunk(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    transaction.commit();
    items.connection.close();
    return test::fileContent(items.path());
}

class DamagedFile : public testing::Test {
  protected:
    /// Writes the file and opens it. True when that worked.
    bool opens(const QByteArray& content) {
        EXPECT_TRUE(writeFile(path(), content));
        bool opened = true;
        try {
            Connection connection;
            connection.open(path());
        } catch (const Error&) {
            opened = false;
        }
        EXPECT_TRUE(test::fileContent(path()) == content) << "the file has been changed";
        EXPECT_EQ(QDir(directory_.path()).entryList(QDir::Files), QStringList{u"file.db"_s});
        return opened;
    }

    QString path() const { return directory_.filePath(u"file.db"_s); }

    QTemporaryDir directory_;
};

TEST_F(DamagedFile, IsRefusedWhenItIsEmptyOrRandomWithOrWithoutTheSignature) {
    EXPECT_FALSE(opens({}));
    std::mt19937 random(7);
    for (int size = 1; size < 20000; size += 1 + size / 3) {
        QByteArray bytes(size, Qt::Uninitialized);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        EXPECT_FALSE(opens(bytes)) << size;
        EXPECT_FALSE(opens(QByteArray("SQLite format 3\0", 16) + bytes)) << size;
    }
}

TEST_F(DamagedFile, IsRefusedWhereverItWasCutShort) {
    const QByteArray sound = soundFile();
    ASSERT_TRUE(opens(sound));
    for (qsizetype length = 0; length < sound.size(); length += length < 200 ? 1 : 97) {
        EXPECT_FALSE(opens(sound.left(length))) << length;
    }
    EXPECT_FALSE(opens(sound.left(sound.size() - 4096)));
    EXPECT_FALSE(opens(sound.left(sound.size() - 1)));
}

}  // namespace
}  // namespace varo::data
