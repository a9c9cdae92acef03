// Rows that are long, damaged or spelt in another way than asked for.

#include "library_test.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

namespace varo {
namespace {

using Rows = LibraryTest;

TEST_F(Rows, TakeALongPictureWithoutHoldingItInMemory) {
    const qint32 formula = library.addFormula(1, u"f"_s);
    const QString file = library.addFile(u"long.bmp"_s, QByteArray(30'000'000, 'x'));
    for (int round = 0; round < 2; ++round) {
        sqlite3_memory_highwater(1);
        ASSERT_TRUE(funcs.AddNewPicture(formula, file, connection));
        EXPECT_LT(sqlite3_memory_highwater(0), 8'000'000);
    }
    EXPECT_EQ(rows(u"Select PicType,length(Pic) From Formula"_s), u"2|30000000"_s);
}

TEST_F(Rows, FailWithoutAFileWhenAPictureCannotBeReadOrWritten) {
    const qint32 formula = library.addFormula(1, u"f"_s);
    library.addPicture(formula, "bytes");
    EXPECT_FALSE(funcs.ExtractPicture(formula, library.folder(), connection));
    connection.execute(u"Update Formula Set Pic = 5"_s);
    EXPECT_FALSE(funcs.ExtractPicture(formula, library.pathOf(u"out"_s), connection));
    EXPECT_FALSE(QFile::exists(library.pathOf(u"out"_s)));
}

TEST_F(Rows, SayThatAPictureFileEndedEarly) {
    const QString file = u"/sys/devices/system/cpu/online"_s;  // holds less than its size says
    if (QFileInfo(file).size() == 0) {
        GTEST_SKIP() << "no such file";
    }
    const qint32 formula = library.addFormula(1, u"f"_s);
    EXPECT_FALSE(funcs.AddNewPicture(formula, file, connection));
    EXPECT_EQ(library.questions().informed, QStringList{file + u": the file ended early"_s});
    EXPECT_EQ(rows(u"Select PicType,length(Pic) From Formula"_s), u"0|"_s);
}

TEST_F(Rows, OfAVariableAreFoundInAnyLetterCase) {
    library.addValue(u"σ"_s, 7, u"stress"_s);
    library.addValue(u"Δx"_s, 0, u"step"_s);
    ASSERT_TRUE(funcs.GetVarInfoOfFormula(u"Σ"_s, 7, rs, connection));
    EXPECT_EQ(listed(u"Value"_s), u"stress"_s);
    ASSERT_TRUE(funcs.GetVarInfoOfFormula(u"δX"_s, 7, rs, connection));
    EXPECT_EQ(listed(u"VarName"_s), u"Δx"_s);
}

}  // namespace
}  // namespace varo
