#include "platform/data/blob_field.h"

#include "platform/data/item_database.h"
#include "support/test_library.h"

#include <gtest/gtest.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

std::span<const char> spanOf(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

class BlobFieldTest : public testing::Test {
  protected:
    BlobField field() { return items.connection.field(u"Item"_s, u"Bytes"_s, id); }

    void store(const QByteArray& bytes) {
        Transaction transaction(items.connection);
        BlobField target = field();
        target.replace(bytes.size());
        target.appendChunk(spanOf(bytes));
        transaction.commit();
    }

    QByteArray stored() {
        BlobField source = field();
        QByteArray bytes(static_cast<qsizetype>(source.size()), '\0');
        source.getChunk({bytes.data(), static_cast<std::size_t>(bytes.size())});
        return bytes;
    }

    ItemDatabase items;
    qint32 id = items.add(u"one"_s);
};

TEST_F(BlobFieldTest, HoldsBytesInChunksOfAnySize) {
    EXPECT_EQ(stored(), QByteArray());
    for (const QByteArray& bytes : {test::pictureBytes(70000), QByteArray(), QByteArray("abc")}) {
        store(bytes);
        EXPECT_EQ(stored(), bytes);
    }
    BlobField source = field();
    QByteArray read(3, '\0');
    source.getChunk({read.data(), 2});
    source.getChunk({read.data() + 2, 1});
    EXPECT_EQ(read, "abc");
    EXPECT_THROW(source.getChunk({read.data(), 1}), Error);
}

TEST_F(BlobFieldTest, TakesNoMoreThanItWasGivenRoomForAndKeepsItsBytesWhenThatIsUndone) {
    BlobField target = field();
    EXPECT_THROW(target.appendChunk(spanOf("a")), Error);
    target.replace(3);
    target.appendChunk(spanOf("ab"));
    EXPECT_THROW(target.appendChunk(spanOf("cd")), Error);
    target.appendChunk(spanOf("c"));
    {
        const Transaction transaction(items.connection);
        target.replace(50000);
        target.appendChunk(spanOf(test::pictureBytes(20000)));
    }
    EXPECT_EQ(stored(), "abc");
}

TEST_F(BlobFieldTest, IsNotThereWithoutItsRowColumnOrTable) {
    Connection& connection = items.connection;
    EXPECT_THROW(connection.field(u"Item"_s, u"Bytes"_s, id + 1), Error);
    EXPECT_THROW(connection.field(u"Item"_s, u"Weight"_s, id), Error);
    EXPECT_THROW(connection.field(u"It\"em"_s, u"Bytes"_s, id), Error);
}

TEST_F(BlobFieldTest, FailsWhenItsRowOrConnectionHasGone) {
    for (const bool row : {true, false}) {
        store("old");
        BlobField source = field();
        row ? void(items.connection.execute(u"Delete From Item"_s)) : items.connection.close();
        char byte = 0;
        EXPECT_THROW(source.getChunk({&byte, 1}), Error);
        EXPECT_THROW((source.replace(1), source.appendChunk({&byte, 1})), Error);
        id = row ? items.add(u"two"_s) : id;
    }
}

}  // namespace
}  // namespace varo::data
