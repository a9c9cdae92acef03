#include "platform/data/connection.h"
#include "platform/data/copy_database.h"
#include "platform/data/create_database.h"
#include "support/access_files.h"
#include "support/test_library.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace varo::data {
namespace {

using namespace Qt::StringLiterals;
using access::FieldType;

/// A file with the tables Item and Note.
class AccessWrite : public testing::TestWithParam<access::Version> {
  protected:
    AccessWrite() {
        const access::NewTable item{
            .name = u"Item"_s,
            .columns = {{.name = u"ID"_s, .type = FieldType::Long, .isAutoNumber = true},
                        {.name = u"Name"_s, .size = 20},
                        {.name = u"PID"_s, .type = FieldType::Long},
                        {.name = u"Memo"_s, .type = FieldType::Memo},
                        {.name = u"Pic"_s, .type = FieldType::Ole}},
            .indexes = {{.name = u"PrimaryKey"_s,
                         .columns = {u"ID"_s},
                         .isUnique = true,
                         .isPrimary = true},
                        {.name = u"ByName"_s, .columns = {u"Name"_s}, .isUnique = true},
                        {.name = u"ByParent"_s, .columns = {u"PID"_s}}}};
        createAccessDatabase(path(), GetParam(), {item}, [](const QString&) {});
        connection.open(path());
    }

    QString path() const { return folder.filePath(u"file.mdb"_s); }

    static QStringList names(Connection& from) {
        QStringList found;
        for (auto rows = from.query(u"Select ID,Name From Item Order By ID"_s); !rows.atEnd();
             rows.moveNext()) {
            found.append(rows.text(0) + rows.text(1));
        }
        return found;
    }

    qint32 add(const QString& name, qint32 parent = 0) {
        connection.execute(u"Insert Into Item(Name,PID) Values(?,?)"_s, {name, parent});
        return connection.lastInsertedId();
    }

    void requireSound() {
        EXPECT_EQ(connection.damages(), QStringList());
        Connection again;
        again.open(path(), Access::Read);
        EXPECT_EQ(names(again), names(connection));
    }

    QByteArray picture(qint32 id) {
        BlobField field = connection.field(u"Item"_s, u"Pic"_s, id);
        QByteArray bytes(field.size(), '\0');
        field.getChunk({bytes.data(), static_cast<std::size_t>(bytes.size())});
        return bytes;
    }

    void replacePicture(qint32 id, const QByteArray& bytes, qsizetype count) {
        BlobField field = connection.field(u"Item"_s, u"Pic"_s, id);
        field.replace(bytes.size());
        for (qsizetype at = 0; at < count; at += 1000) {
            const QByteArray piece = bytes.mid(at, std::min<qsizetype>(1000, count - at));
            field.appendChunk({piece.constData(), static_cast<std::size_t>(piece.size())});
        }
    }

    QTemporaryDir folder;
    Connection connection;
};

INSTANTIATE_TEST_SUITE_P(Versions, AccessWrite,
                         testing::Values(access::Version::Jet4, access::Version::Ace12));

TEST_P(AccessWrite, AStatementDoesAllOrNothing) {
    EXPECT_EQ(add(u"a"_s, 1), 1);
    EXPECT_EQ(add(u"b"_s, 1), 2);
    EXPECT_EQ(connection.execute(u"Update Item Set PID = PID + 1, Memo = ? Where PID = 1"_s,
                                 {QString(9000, u'长')}),
              2);
    for (const char* refused :
         {"Update Item Set Name = 'c'",                     // is to be unique
          "Update Item Set ID = rowid, PID = 'x' Where 1",  // is no number
          "Insert Into Item(Name) Select Name || 'x' From Item Union All Select 'x'",
          "Insert Into Item(rowid,Name) Values(7,'d')", "Update Item Set rowid = 7 Where ID = 1",
          "Insert Into Item(Name) Values('a name of more than 20')",
          "Insert Into Item(ID) Values(1)", "Insert Into Item(Name) Values('一。')"}) {
        const QStringList before = names(connection);
        if (QByteArrayView(refused).contains("Union")) {
            add(u"x"_s);
            EXPECT_THROW(connection.execute(QString::fromUtf8(refused)), Error) << refused;
            connection.execute(u"Delete From Item Where Name = 'x'"_s);
        } else {
            EXPECT_THROW(connection.execute(QString::fromUtf8(refused)), Error) << refused;
        }
        EXPECT_EQ(names(connection), before) << refused;
    }
    EXPECT_EQ(connection.query(u"Select length(Memo) From Item Where PID = 2"_s).integer(0), 9000);
    EXPECT_EQ(connection.execute(u"Delete From Item Where PID = 2"_s), 2);
    connection.open(path());
    EXPECT_EQ(add(u"later"_s), 4) << "a number never comes again";
    requireSound();
}

/// The index of PID descends, and one has no rows with NULL.
TEST_P(AccessWrite, RowsAreFoundByEachIndexAsByAScan) {
    const QString file = folder.filePath(u"indexed"_s);
    const access::NewTable table{
        .name = u"T"_s,
        .columns = {{.name = u"A"_s, .type = FieldType::Long},
                    {.name = u"B"_s, .type = FieldType::Integer},
                    {.name = u"C"_s, .type = FieldType::Byte}},
        .indexes = {{.name = u"ByA"_s, .columns = {u"A"_s, u"C"_s}},
                    {.name = u"ByB"_s, .columns = {{u"B"_s, true}}},
                    {.name = u"ByC"_s, .columns = {u"C"_s}, .ignoresNulls = true}}};
    createAccessDatabase(file, GetParam(), {table}, [](const QString&) {});
    connection.open(file);
    const Argument values[] = {Argument(), 0, 1, 2, 255};
    for (int i = 0; i < 125; ++i) {
        connection.execute(u"Insert Into T Values(?,?,?)"_s,
                           {values[i % 5], values[i / 5 % 5], values[i / 25]});
    }
    for (const QString& column : {u"A"_s, u"B"_s, u"C"_s}) {
        for (const char* condition :
             {"Is ?", "Is Not ?", "= ?", "> ?", "<= ?", "Is Null", "Is ? And %1 Is Null",
              "Is ? And %1 = 1", "Is ? And %1 > 0"}) {
            for (const Argument& argument :
                 {Argument(), Argument(0), Argument(1), Argument(70000), Argument(u"1"_s),
                  Argument(u"1.5"_s), Argument(u"x"_s)}) {
                const auto count = [&](const QString& name) {
                    const QString where = name + u' ' + QString::fromLatin1(condition);
                    const QString query = u"Select Count(*), Sum(rowid) From T Where "_s +
                                          (where.contains(u"%1") ? where.arg(name) : where);
                    const auto row = where.contains(u'?') ? connection.query(query, {argument})
                                                          : connection.query(query);
                    return row.text(0) + u' ' + row.text(1);
                };
                EXPECT_EQ(count(column), count(u"Cast(%1 As Integer)"_s.arg(column)))
                    << column.toStdString() << condition;
            }
        }
    }
}

TEST_P(AccessWrite, AMemoInAnIndexIsChanged) {
    const QString file = folder.filePath(u"indexed"_s);
    const access::NewTable table{
        .name = u"T"_s,
        .columns = {{.name = u"ID"_s, .type = FieldType::Long},
                    {.name = u"Memo"_s, .type = FieldType::Memo}},
        .indexes = {{.name = u"ByMemo"_s, .columns = {u"Memo"_s}, .isUnique = true}}};
    createAccessDatabase(file, GetParam(), {table}, [](const QString&) {});
    connection.open(file);
    const QString longText = QString(90, u'a');
    connection.execute(u"Insert Into T Values(1,?)"_s, {longText});
    connection.execute(u"Insert Into T Values(2,'b')"_s);
    EXPECT_THROW(connection.execute(u"Update T Set Memo = ? Where ID = 2"_s, {longText}), Error);
    for (const QString& text : {longText + u'x', u"c"_s, longText + u'y'}) {
        connection.execute(u"Update T Set Memo = ? Where ID = 1"_s, {text});
        EXPECT_EQ(connection.query(u"Select Memo From T Where ID = 1"_s).text(0), text);
    }
    connection.execute(u"Update T Set Memo = ? Where ID = 2"_s, {longText});
    connection.execute(u"Delete From T Where ID = 1"_s);
    EXPECT_EQ(connection.damages(), QStringList());
}

TEST_P(AccessWrite, TransactionsAreUndoneAloneAndWhole) {
    add(u"a"_s);
    {
        Transaction outer(connection);
        add(u"b"_s);
        {
            const Transaction inner(connection);
            add(u"c"_s);
            connection.execute(u"Delete From Item Where Name = 'a'"_s);
        }
        EXPECT_EQ(names(connection), QStringList({u"1a"_s, u"2b"_s}));
        outer.commit();
    }
    {
        const Transaction undone(connection);
        connection.execute(u"Delete From Item"_s);
        Connection other;
        other.open(path());
        EXPECT_EQ(names(other).size(), 2) << "others see what was committed";
        other.setLockWait(0);
        EXPECT_THROW(other.execute(u"Delete From Item"_s), Error) << "one writes at a time";
    }
    EXPECT_EQ(names(connection), QStringList({u"1a"_s, u"2b"_s}));
    requireSound();
}

TEST_P(AccessWrite, APictureIsReplacedInPieces) {
    const QByteArray large(300'000, 'p');
    const qint32 id = add(u"a"_s);
    EXPECT_THROW(
        {
            Transaction transaction(connection);
            replacePicture(id, large, 5000);
            transaction.commit();
        },
        Error)
        << "bytes are missing";
    EXPECT_EQ(picture(id), QByteArray());
    qint64 size = 0;
    for (const QByteArray& bytes :
         {large, QByteArray("small"), QByteArray(), QByteArray(3000, 'q'), large}) {
        Transaction transaction(connection);
        replacePicture(id, bytes, bytes.size());
        transaction.commit();
        EXPECT_EQ(picture(id), bytes);
        EXPECT_EQ(connection
                      .query(u"Select Coalesce(%1,0) From Item"_s.arg(
                          connection.lengthOf(u"Item"_s, u"Pic"_s)))
                      .integer(0),
                  bytes.size());
        size = std::max(size, size == 0 ? QFileInfo(path()).size() : 0);
    }
    connection.execute(u"Update Item Set Pic = ''"_s);
    EXPECT_EQ(picture(id), QByteArray());
    EXPECT_LE(QFileInfo(path()).size(), size + 50'000) << "pages are used again";
    Transaction transaction(connection);
    replacePicture(id, large, large.size());
    connection.execute(u"Update Item Set Name = 'b'"_s);
    transaction.commit();
    EXPECT_EQ(picture(id), large);
    requireSound();
}

TEST_P(AccessWrite, WhatAnotherProgramChangesIsNoticed) {
    add(u"a"_s);
    const qint64 before = connection.changesOfOthers();
    Connection other;
    other.open(path());
    EXPECT_EQ(other.execute(u"Update Item Set Name = 'b'"_s), 1);
    EXPECT_EQ(names(connection), QStringList(u"1b"_s));
    EXPECT_NE(connection.changesOfOthers(), before);
    {
        const ReadSnapshot snapshot(connection);
        EXPECT_THROW(add(u"c"_s), Error);
        other.setLockWait(0);
        EXPECT_THROW(other.execute(u"Delete From Item"_s), Error);
    }
    EXPECT_EQ(other.execute(u"Delete From Item"_s), 1);
    other.close();
    createAccessDatabase(folder.filePath(u"b.mdb"_s), GetParam(), {}, [](const QString&) {});
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(test::fileContent(folder.filePath(u"b.mdb"_s)));
    file.close();
    EXPECT_THROW(names(connection), Error) << "the tables are others";
    EXPECT_FALSE(connection.isInPlace());
}

TEST_P(AccessWrite, ACopyIsTakenAndPutBack) {
    for (int i = 0; i < 50; ++i) {
        add(u"item%1"_s.arg(i));
    }
    const QStringList before = names(connection);
    const QString copy = folder.filePath(u"copy"_s);
    copyDatabase(connection, copy, [] {});
    EXPECT_EQ(differenceDigest(connection, copy), noDifference());
    connection.execute(u"Delete From Item Where ID < 40"_s);
    add(u"new"_s);
    connection.execute(u"Update Item Set Memo = ?"_s, {QString(50'000, u'x')});
    const QByteArray difference = differenceDigest(connection, copy);
    EXPECT_NE(difference, noDifference());
    EXPECT_THROW(restoreDatabase(copy, path(), noDifference()), Error);
    restoreDatabase(copy, path(), difference);
    EXPECT_EQ(names(connection), before);
    EXPECT_EQ(add(u"next"_s), 51);
    requireSound();
}

TEST(AccessWriteOfFiles, RelationshipsOfTheProgramAreKept) {
    const QString path = test::accessFile(u"relations.accdb"_s);
    if (path.isEmpty()) {
        GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with Access files";
    }
    Connection connection;
    connection.open(path);
    const auto count = [&](const QString& table) {
        return connection.query(u"Select Count(*) From "_s + table).integer(0);
    };
    for (const char* refused :
         {"Delete From 厂家 Where ID = 1", "Update 厂家 Set ID = 9 Where ID = 2",
          "Insert Into 检验(型材ID) Values(31)", "Update 检验 Set 型材ID = 0",
          "Update 型材 Set 高度 = 1", "Insert Into 型材(ID) Values(31)"}) {
        EXPECT_THROW(connection.execute(QString::fromUtf8(refused)), Error) << refused;
    }
    EXPECT_EQ(connection.execute(u"Delete From 厂家 Where ID = 3"_s), 1);
    EXPECT_EQ(connection.execute(u"Delete From 型材 Where 厂家ID = 2"_s), 15);
    EXPECT_EQ(connection.execute(u"Delete From 厂家 Where ID = 2"_s), 1);
    EXPECT_EQ(connection.execute(u"Insert Into 检验(型材ID) Values(2)"_s), 1);
    EXPECT_EQ(count(u"型材"_s), 15);
    EXPECT_EQ(count(u"检验"_s), 16);
    EXPECT_EQ(connection.damages(), QStringList());
}

}  // namespace
}  // namespace varo::data
