#include "platform/data/item_database.h"

#include <gtest/gtest.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;

TEST(Transaction, IsSeenWhenCommittedAndKeepsOtherWritersOutUntilThen) {
    ItemDatabase items;
    Connection other;
    other.open(items.path());
    const auto seen = [&] { return other.query(u"Select Count(*) From Item"_s).integer(0); };
    Transaction transaction(items.connection);
    items.add(u"one"_s);
    EXPECT_EQ(seen(), 0);
    EXPECT_THROW(Transaction{other}, Error);
    transaction.commit();
    EXPECT_EQ(seen(), 1);
    EXPECT_NO_THROW(Transaction{other});
}

TEST(Transaction, NestsSoThatAnInnerOneIsUndoneAlone) {
    ItemDatabase items;
    Transaction outer(items.connection);
    items.add(u"outer"_s);
    {
        Transaction kept(items.connection);
        items.add(u"kept"_s);
        {
            const Transaction undone(items.connection);
            items.add(u"undone"_s);
        }
        kept.commit();
    }
    outer.commit();
    EXPECT_EQ(items.names(), (QStringList{u"outer"_s, u"kept"_s}));
}

TEST(Transaction, TakesInnerOnesWithItWhenUndone) {
    ItemDatabase items;
    {
        const Transaction outer(items.connection);
        Transaction inner(items.connection);
        items.add(u"inner"_s);
        inner.commit();
    }
    EXPECT_TRUE(items.names().isEmpty());
    EXPECT_NO_THROW(Transaction(items.connection).commit());
}

TEST(Transaction, IsNotCommittedTwiceOrBeforeAnInnerOne) {
    ItemDatabase items;
    Transaction outer(items.connection);
    items.add(u"one"_s);
    {
        const Transaction inner(items.connection);
        EXPECT_THROW(outer.commit(), Error);
    }
    outer.commit();
    EXPECT_THROW(outer.commit(), Error);
    EXPECT_EQ(items.names(), QStringList{u"one"_s});
}

TEST(Transaction, IsUndoneWhenTheConnectionCloses) {
    ItemDatabase items;
    Transaction transaction(items.connection);
    items.add(u"one"_s);
    items.connection.close();
    EXPECT_THROW(transaction.commit(), Error);
    items.connection.open(items.path());
    EXPECT_TRUE(items.names().isEmpty());
}

TEST(Transaction, IsUndoneWhenItCannotBeCommitted) {
    ItemDatabase items;
    Connection reader;
    reader.open(items.path());
    items.add(u"before"_s);
    {
        const Recordset reading = reader.query(u"Select * From Item"_s);
        Transaction transaction(items.connection);
        items.add(u"one"_s);
        EXPECT_THROW(transaction.commit(), Error);
    }
    EXPECT_EQ(items.names(), QStringList{u"before"_s});
}

TEST(Transaction, LetsNothingThroughAfterTheDatabaseHasUndoneIt) {
    ItemDatabase items;
    items.connection.execute(u"Create Unique Index OneName On Item(Name)"_s);
    items.add(u"before"_s);
    {
        Transaction transaction(items.connection);
        items.add(u"one"_s);
        EXPECT_THROW(
            items.connection.execute(u"Insert Or Rollback Into Item(Name) Values('before')"_s),
            Error);
        EXPECT_THROW(items.add(u"two"_s), Error);
        EXPECT_THROW(Transaction{items.connection}, Error);
        EXPECT_THROW(transaction.commit(), Error);
    }
    EXPECT_EQ(items.names(), QStringList{u"before"_s});
    items.add(u"after"_s);
    EXPECT_EQ(items.names(), (QStringList{u"before"_s, u"after"_s}));
}

}  // namespace
}  // namespace varo::data
