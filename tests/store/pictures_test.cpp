#include "library_test.h"

#include <sqlite3.h>

namespace varo {
namespace {

class Pictures : public LibraryTest {
  protected:
    /// The bytes that are stored, taken out through a file.
    QByteArray stored() {
        EXPECT_TRUE(funcs.ExtractPicture(formula, out, connection));
        return test::fileContent(out);
    }

    QString picType() { return rows(u"Select PicType From Formula"_s); }

    const QStringList& informed = library.questions().informed;
    const qint32 formula = library.addFormula(1, u"f"_s);
    const QString in = library.addFile(u"in.bmp"_s, "bytes");
    const QString out = library.addFile(u"out.bmp"_s, QByteArray(100, 'x'));
};

TEST_F(Pictures, ComeBackByteForByteWithoutBeingHeldInMemory) {
    for (const int size : {1, 16383, 16384, 16385, 32768, 30'000'000, 30'000'000, 2}) {
        const QByteArray bytes = test::pictureBytes(size);
        library.addFile(u"in.bmp"_s, bytes);
        sqlite3_memory_highwater(1);
        ASSERT_TRUE(funcs.AddNewPicture(formula, in, connection));
        EXPECT_LT(sqlite3_memory_highwater(0), 8'000'000);
        EXPECT_TRUE(stored() == bytes) << size;
    }
    EXPECT_EQ(picType(), u"2"_s);
    EXPECT_EQ(informed, QStringList());
}

TEST_F(Pictures, AreLeftAsTheyWereByAnEmptyFile) {
    const QString empty = library.addFile(u"empty.bmp"_s, {});
    for (const QByteArray& before : {QByteArray(), QByteArray("old")}) {
        library.addPicture(formula, before);
        ASSERT_TRUE(funcs.AddNewPicture(formula, empty, connection));
        EXPECT_EQ(stored(), before);
        EXPECT_EQ(picType(), u"2"_s);
    }
}

TEST_F(Pictures, StayAsTheyWereWhenTheFormulaIsMissingOrTheFileCannotBeReadOrIsTooLarge) {
    library.addPicture(formula, "old");
    EXPECT_FALSE(funcs.AddNewPicture(99, in, connection));
    EXPECT_FALSE(funcs.InserFieldFromFile(in, 99, connection));
    EXPECT_EQ(informed, QStringList());
    QFile huge(library.addFile(u"huge.bmp"_s, {}));
    ASSERT_TRUE(huge.resize(32768LL * 16384));
    QStringList files{library.pathOf(u"none"_s), library.folder(), huge.fileName()};
    const QString early = u"/sys/devices/system/cpu/online"_s;  // holds less than its size says
    if (QFileInfo(early).size() > 0) {
        files.append(early);
    }
    for (const QString& file : files) {
        library.questions().informed.clear();
        EXPECT_FALSE(funcs.AddNewPicture(formula, file, connection));
        EXPECT_TRUE(funcs.InserFieldFromFile(file, formula, connection));
        EXPECT_EQ(informed.size(), 2);
        EXPECT_TRUE(file != early || informed[0] == early + u": the file ended early"_s);
        EXPECT_EQ(stored(), "old");
    }
}

TEST_F(Pictures, AreInsertedWithoutTheirType) {
    ASSERT_TRUE(funcs.InserFieldFromFile(in, formula, connection));
    EXPECT_EQ(stored(), "bytes");
    EXPECT_EQ(picType(), u"0"_s);
}

TEST_F(Pictures, SayWhyTheyCannotBeWrittenAndLeaveNoPartOfAFile) {
    library.addPicture(formula, "bytes");
    EXPECT_FALSE(funcs.ExtractPicture(99, library.pathOf(u"new"_s), connection));
    EXPECT_EQ(informed, QStringList());
    for (const QString& nowhere : {library.pathOf(u"no/such/folder.bmp"_s), library.folder()}) {
        EXPECT_FALSE(funcs.ExtractPicture(formula, nowhere, connection));
        EXPECT_TRUE(informed.last().contains(nowhere));
    }
    test::requireSqlite();
    connection.execute(u"Update Formula Set Pic = 5"_s);
    EXPECT_FALSE(funcs.ExtractPicture(formula, library.pathOf(u"new"_s), connection));
    EXPECT_FALSE(QFile::exists(library.pathOf(u"new"_s)));
    if (!QFile::exists(u"/dev/full"_s)) {
        GTEST_SKIP() << "no device that is always full";
    }
    library.addPicture(formula, "bytes");
    library.questions().informed.clear();
    ASSERT_TRUE(QFile::remove(out) && QFile::link(u"/dev/full"_s, out));
    EXPECT_FALSE(funcs.ExtractPicture(formula, out, connection));
    EXPECT_EQ(informed.size(), 1);
    EXPECT_FALSE(QFileInfo(out).isSymLink());
}

}  // namespace
}  // namespace varo
