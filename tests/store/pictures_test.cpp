#include "store/db_funcs.h"
#include "store/picture_transfer.h"
#include "support/test_library.h"

#include <QFile>

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

class Pictures : public testing::Test {
  protected:
    data::BlobField field() { return connection.field(u"Formula"_s, u"Pic"_s, formula); }

    /// The bytes that are stored, taken out through a file.
    QByteArray stored() {
        const QString file = library.pathOf(u"out.bmp"_s);
        EXPECT_TRUE(funcs.ExtractPicture(formula, file, connection));
        return test::fileContent(file);
    }

    QString picType() { return library.rows(u"Select PicType From Formula"_s).value(0); }

    test::TestLibrary library;
    clsDBFuncs& funcs = library.funcs();
    data::Connection& connection = library.connection();
    test::RecordingQuestions& questions = library.questions();
    qint32 formula = library.addFormula(1, u"f"_s, u"a+b"_s, u"m"_s);
};

TEST_F(Pictures, ComeBackByteForByte) {
    for (const int size : {1, 16383, 16384, 16385, 32768, 100000, 2}) {
        const QByteArray bytes = test::pictureBytes(size);
        const QString file = library.addFile(u"in.bmp"_s, bytes);
        ASSERT_TRUE(funcs.AddNewPicture(formula, file, connection)) << size;
        EXPECT_EQ(stored(), bytes) << size;
        EXPECT_EQ(picType(), u"2"_s);
    }
    EXPECT_TRUE(questions.informed.isEmpty());
    EXPECT_EQ(library.rows(u"Select Name,Formula,Memo,PID,OrderID From Formula"_s),
              QStringList{u"f|a+b|m|1|1"_s});
}

TEST_F(Pictures, AreLeftAsTheyWereByAnEmptyFile) {
    const QString empty = library.addFile(u"empty.bmp"_s, {});
    ASSERT_TRUE(funcs.AddNewPicture(formula, empty, connection));
    EXPECT_EQ(picType(), u"2"_s);
    EXPECT_EQ(stored(), QByteArray());
    library.addPicture(formula, "old");
    ASSERT_TRUE(funcs.AddNewPicture(formula, empty, connection));
    EXPECT_EQ(stored(), "old");
}

TEST_F(Pictures, AreNotStoredWithoutTheirFormula) {
    const QString file = library.addFile(u"in.bmp"_s, "bytes");
    EXPECT_FALSE(funcs.AddNewPicture(99, file, connection));
    EXPECT_FALSE(funcs.InserFieldFromFile(file, 99, connection));
    EXPECT_FALSE(funcs.ExtractPicture(99, library.pathOf(u"out.bmp"_s), connection));
    EXPECT_FALSE(QFile::exists(library.pathOf(u"out.bmp"_s)));
    EXPECT_TRUE(questions.informed.isEmpty());
    EXPECT_EQ(picType(), u"0"_s);
}

TEST_F(Pictures, StayAsTheyWereWhenTheFileCannotBeRead) {
    library.addPicture(formula, "old");
    for (const QString& file : {library.pathOf(u"missing.bmp"_s), library.folder()}) {
        questions.informed.clear();
        EXPECT_FALSE(funcs.AddNewPicture(formula, file, connection));
        ASSERT_EQ(questions.informed.size(), 1);
        EXPECT_TRUE(questions.informed[0].contains(file));
        EXPECT_EQ(stored(), "old");
        EXPECT_TRUE(funcs.InserFieldFromFile(file, formula, connection));
        EXPECT_EQ(questions.informed.size(), 2);
        EXPECT_EQ(stored(), "old");
    }
}

TEST_F(Pictures, AreInsertedWithoutTouchingTheirType) {
    const QString file = library.addFile(u"in.bmp"_s, "bytes");
    ASSERT_TRUE(funcs.InserFieldFromFile(file, formula, connection));
    EXPECT_EQ(stored(), "bytes");
    EXPECT_EQ(picType(), u"0"_s);
}

TEST_F(Pictures, AreRemovedWithTheirType) {
    library.addPicture(formula, "bytes");
    ASSERT_TRUE(funcs.DelPicture(formula, connection));
    EXPECT_EQ(stored(), QByteArray());
    EXPECT_EQ(library.rows(u"Select Pic,PicType From Formula"_s), QStringList{u"|0"_s});
    EXPECT_TRUE(funcs.DelPicture(99, connection));
}

TEST_F(Pictures, ReplaceALongerFileThatIsThere) {
    library.addPicture(formula, "short");
    const QString file = library.addFile(u"out.bmp"_s, QByteArray(100000, 'x'));
    ASSERT_TRUE(funcs.ExtractPicture(formula, file, connection));
    EXPECT_EQ(test::fileContent(file), "short");
}

TEST_F(Pictures, SayWhyTheyCannotBeWritten) {
    library.addPicture(formula, "bytes");
    const QString file = library.pathOf(u"no/such/folder.bmp"_s);
    EXPECT_FALSE(funcs.ExtractPicture(formula, file, connection));
    ASSERT_EQ(questions.informed.size(), 1);
    EXPECT_TRUE(questions.informed[0].contains(file));
}

TEST_F(Pictures, LeaveNoPartOfAFileWhenTheDiskIsFull) {
    if (!QFile::exists(u"/dev/full"_s)) {
        GTEST_SKIP() << "no device that is always full";
    }
    library.addPicture(formula, "bytes");
    const QString file = library.pathOf(u"out.bmp"_s);
    ASSERT_TRUE(QFile::link(u"/dev/full"_s, file));
    EXPECT_FALSE(funcs.ExtractPicture(formula, file, connection));
    EXPECT_EQ(questions.informed.size(), 1);
    EXPECT_FALSE(QFileInfo(file).isSymLink());
    EXPECT_TRUE(QFile::exists(u"/dev/full"_s));
}

TEST_F(Pictures, AreRefusedBeyondTheLargestChunkCount) {
    library.addPicture(formula, "old");
    QFile file(library.addFile(u"huge.bmp"_s, {}));
    ASSERT_TRUE(file.resize((PictureChunkLimit + 1) * PictureChunk));
    EXPECT_FALSE(funcs.AddNewPicture(formula, file.fileName(), connection));
    EXPECT_EQ(questions.informed.size(), 1);
    EXPECT_EQ(stored(), "old");
}

TEST_F(Pictures, TravelBetweenFileAndFieldInsideATransactionOfTheCaller) {
    const QByteArray bytes = test::pictureBytes(40000);
    const QString in = library.addFile(u"in.bmp"_s, bytes);
    const QString out = library.pathOf(u"out.bmp"_s);
    QString failure;
    {
        data::Transaction transaction(connection);
        data::BlobField target = field();
        ASSERT_TRUE(ReadFileToField(target, in, failure));
        transaction.commit();
    }
    data::BlobField source = field();
    ASSERT_TRUE(WriteFieldToFile(source, out, failure));
    EXPECT_EQ(test::fileContent(out), bytes);
    EXPECT_TRUE(failure.isEmpty());
    EXPECT_FALSE(ReadFileToField(source, library.pathOf(u"missing"_s), failure));
    EXPECT_FALSE(failure.isEmpty());
}

TEST_F(Pictures, FailOnAClosedConnection) {
    data::Connection closed;
    const QString file = library.addFile(u"in.bmp"_s, "bytes");
    EXPECT_FALSE(funcs.AddNewPicture(formula, file, closed));
    EXPECT_FALSE(funcs.InserFieldFromFile(file, formula, closed));
    EXPECT_FALSE(funcs.DelPicture(formula, closed));
    EXPECT_FALSE(funcs.ExtractPicture(formula, file, closed));
    EXPECT_EQ(test::fileContent(file), "bytes");
}

}  // namespace
}  // namespace varo
