#include "platform/data/item_database.h"

#include <gtest/gtest.h>
#include <optional>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

class TransactionTest : public testing::Test {
  protected:
    TransactionTest() { other.open(items.path()); }

    BlobField begun(qint64 total, std::size_t written) {
        BlobField field = connection.field(u"Item"_s, u"Bytes"_s, 1);
        field.replace(total);
        field.appendChunk(std::span("0123456789").first(written));
        return field;
    }

    QString stored() { return connection.query(u"Select Bytes From Item"_s).text(0); }
    QString names() { return items.names().join(u' '); }

    ItemDatabase items;
    Connection& connection = items.connection;
    Connection other;
};

TEST_F(TransactionTest, IsSeenWhenCommittedAndKeepsOtherWritersOutUntilThen) {
    const auto seen = [&] { return other.query(u"Select Count(*) From Item"_s).integer(0); };
    Transaction transaction(connection);
    items.add(u"one"_s);
    EXPECT_EQ(seen(), 0);
    EXPECT_THROW(Transaction{other}, Error);
    transaction.commit();
    EXPECT_EQ(seen(), 1);
    EXPECT_NO_THROW(Transaction{other});
    EXPECT_THROW(transaction.commit(), Error);
}

TEST_F(TransactionTest, NestsSoThatAnInnerOneIsUndoneAloneAndWithTheOuter) {
    for (const bool committed : {true, false}) {
        Transaction outer(connection);
        items.add(u"outer"_s);
        {
            Transaction kept(connection);
            items.add(u"kept"_s);
            {
                const Transaction undone(connection);
                items.add(u"undone"_s);
                EXPECT_THROW(outer.commit(), Error) << "before an inner one";
            }
            kept.commit();
        }
        if (committed) {
            outer.commit();
        }
    }
    EXPECT_EQ(names(), u"outer kept"_s);
}

TEST_F(TransactionTest, IsUndoneWhenItCannotBeCommittedOrTheConnectionCloses) {
    items.add(u"before"_s);
    {
        const Recordset reading = other.query(u"Select * From Item"_s);
        Transaction transaction(connection);
        items.add(u"one"_s);
        EXPECT_THROW(transaction.commit(), Error);
    }
    Transaction transaction(connection);
    items.add(u"two"_s);
    connection.close();
    EXPECT_THROW(transaction.commit(), Error);
    connection.open(items.path());
    EXPECT_EQ(names(), u"before"_s);
}

TEST_F(TransactionTest, LetsNothingThroughAfterTheDatabaseHasUndoneIt) {
    connection.execute(u"Create Unique Index OneName On Item(Name)"_s);
    items.add(u"before"_s);
    {
        Transaction transaction(connection);
        items.add(u"one"_s);
        EXPECT_THROW(connection.execute(u"Insert Or Rollback Into Item(Name) Values('before')"_s),
                     Error);
        EXPECT_THROW(items.add(u"two"_s), Error);
        EXPECT_THROW(Transaction{connection}, Error);
        EXPECT_THROW(transaction.commit(), Error);
    }
    items.add(u"after"_s);
    EXPECT_EQ(names(), u"before after"_s);
}

TEST_F(TransactionTest, DoesNotCommitAFieldBeforeItsLastByte) {
    items.add(u"one"_s);
    begun(3, 3);
    EXPECT_THROW(begun(-1, 0), Error);
    for (const std::size_t written : {0U, 1U, 9U}) {
        Transaction transaction(connection);
        begun(10, written);
        EXPECT_THROW(transaction.commit(), Error) << written;
        EXPECT_EQ(stored(), u"012"_s);
    }
    {
        Transaction outer(connection);
        std::optional<Transaction> inner(std::in_place, connection);
        BlobField field = begun(3, 1);
        inner.reset();
        EXPECT_THROW(field.appendChunk(std::span("99").first(2)), Error);
        outer.commit();
        EXPECT_EQ(stored(), u"012"_s);
    }
    Transaction transaction(connection);
    begun(10, 9).appendChunk(std::span("9").first(1));
    transaction.commit();
    EXPECT_EQ(stored(), u"0123456789"_s);
}

TEST_F(TransactionTest, IsNotBegunInAReadSnapshotThatReadsOneState) {
    items.add(u"one"_s);
    {
        const ReadSnapshot snapshot(connection);
        EXPECT_THROW(other.execute(u"Delete From Item"_s), Error);
        EXPECT_THROW(items.add(u"two"_s), Error);
        EXPECT_THROW(Transaction{connection}, Error);
        EXPECT_EQ(names(), u"one"_s);
    }
    EXPECT_EQ(other.execute(u"Delete From Item"_s), 1);
    items.add(u"two"_s);
    EXPECT_EQ(names(), u"two"_s);
}

}  // namespace
}  // namespace varo::data
