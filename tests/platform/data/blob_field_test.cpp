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

TEST_F(BlobFieldTest, IsEmptyUntilSomethingIsStored) {
    EXPECT_EQ(field().size(), 0);
    EXPECT_EQ(stored(), QByteArray());
    items.connection.execute(u"Update Item Set Bytes = ''"_s);
    EXPECT_EQ(field().size(), 0);
}

TEST_F(BlobFieldTest, HoldsAnySizeOfBytes) {
    for (const int size : {1, 100, 4096, 70000, 1, 0}) {
        const QByteArray bytes = test::pictureBytes(size);
        store(bytes);
        EXPECT_EQ(field().size(), size);
        EXPECT_EQ(stored(), bytes);
    }
    EXPECT_EQ(items.names(), QStringList{u"one"_s});
}

TEST_F(BlobFieldTest, PutsChunksTogetherInTheirOrder) {
    const QByteArray bytes = test::pictureBytes(10000);
    Transaction transaction(items.connection);
    BlobField target = field();
    target.replace(bytes.size());
    target.appendChunk(spanOf(bytes.left(1)));
    target.appendChunk({});
    target.appendChunk(spanOf(bytes.mid(1)));
    transaction.commit();
    EXPECT_EQ(stored(), bytes);

    BlobField source = field();
    QByteArray first(9999, '\0');
    QByteArray last(1, '\0');
    source.getChunk({first.data(), 9999});
    source.getChunk({last.data(), 1});
    EXPECT_EQ(first + last, bytes);
    EXPECT_THROW(source.getChunk({last.data(), 1}), Error);
}

TEST_F(BlobFieldTest, TakesNoMoreThanItWasGivenRoomFor) {
    BlobField target = field();
    EXPECT_THROW(target.appendChunk(spanOf("a")), Error);
    target.replace(3);
    target.appendChunk(spanOf("ab"));
    EXPECT_THROW(target.appendChunk(spanOf("cd")), Error);
    target.appendChunk(spanOf("c"));
    EXPECT_EQ(stored(), "abc");
}

TEST_F(BlobFieldTest, KeepsItsBytesWhenTheTransactionIsUndone) {
    store("old");
    {
        const Transaction transaction(items.connection);
        BlobField target = field();
        target.replace(50000);
        target.appendChunk(spanOf(test::pictureBytes(20000)));
    }
    EXPECT_EQ(stored(), "old");
}

TEST_F(BlobFieldTest, IsNotThereWithoutItsRowColumnOrTable) {
    EXPECT_THROW(items.connection.field(u"Item"_s, u"Bytes"_s, id + 1), Error);
    EXPECT_THROW(items.connection.field(u"Item"_s, u"Weight"_s, id), Error);
    EXPECT_THROW(items.connection.field(u"It\"em"_s, u"Bytes"_s, id), Error);
}

TEST_F(BlobFieldTest, FailsWhenItsRowHasGone) {
    store("old");
    BlobField source = field();
    items.connection.execute(u"Delete From Item"_s);
    char byte = 0;
    EXPECT_THROW(source.getChunk({&byte, 1}), Error);
    EXPECT_THROW(
        {
            source.replace(1);
            source.appendChunk({&byte, 1});
        },
        Error);
}

TEST_F(BlobFieldTest, IsClosedWithItsConnection) {
    store("old");
    BlobField source = field();
    char byte = 0;
    source.getChunk({&byte, 1});
    EXPECT_EQ(byte, 'o');
    items.connection.close();
    EXPECT_THROW(source.getChunk({&byte, 1}), Error);
    EXPECT_THROW(source.replace(1), Error);
}

}  // namespace
}  // namespace varo::data
