// What a transaction does not commit, and what a snapshot does not let change.

#include "platform/data/item_database.h"

#include <gtest/gtest.h>
#include <optional>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

class Replacement : public testing::Test {
  protected:
    BlobField begun(qint64 total, std::size_t written) {
        BlobField field = items.connection.field(u"Item"_s, u"Bytes"_s, id);
        field.replace(total);
        field.appendChunk(std::span("0123456789").first(written));
        return field;
    }

    QString stored() { return items.connection.query(u"Select Bytes From Item"_s).text(0); }

    ItemDatabase items;
    const qint32 id = items.add(u"one"_s);
};

TEST_F(Replacement, IsNotCommittedBeforeItsLastByte) {
    begun(3, 3);
    EXPECT_THROW(begun(-1, 0), Error);
    for (const std::size_t written : {0U, 1U, 9U}) {
        Transaction transaction(items.connection);
        begun(10, written);
        EXPECT_THROW(transaction.commit(), Error) << written;
        EXPECT_EQ(stored(), u"012"_s);
    }
    Transaction transaction(items.connection);
    begun(10, 9).appendChunk(std::span("9").first(1));
    transaction.commit();
    EXPECT_EQ(stored(), u"0123456789"_s);
}

TEST_F(Replacement, IsUndoneWithAnInnerTransaction) {
    begun(3, 3);
    Transaction outer(items.connection);
    std::optional<Transaction> inner(std::in_place, items.connection);
    BlobField field = begun(3, 1);
    inner.reset();
    EXPECT_THROW(field.appendChunk(std::span("99").first(2)), Error);
    outer.commit();
    EXPECT_EQ(stored(), u"012"_s);
}

TEST(ReadSnapshot, ReadsOneStateAndWritesNothing) {
    ItemDatabase items;
    items.add(u"one"_s);
    Connection other;
    other.open(items.path());
    {
        const ReadSnapshot snapshot(items.connection);
        EXPECT_THROW(other.execute(u"Delete From Item"_s), Error);
        EXPECT_THROW(items.add(u"two"_s), Error);
        EXPECT_THROW(Transaction{items.connection}, Error);
        EXPECT_EQ(items.names(), QStringList{u"one"_s});
    }
    EXPECT_EQ(other.execute(u"Delete From Item"_s), 1);
    items.add(u"two"_s);
    EXPECT_EQ(items.names(), QStringList{u"two"_s});
}

}  // namespace
}  // namespace varo::data
