#include "library/folders.h"
#include "library/open_libraries.h"
#include "library/stored_values.h"

namespace varo::test {
namespace {

class Current : public testing::Test, protected OpenLibraries {
  protected:
    Current() {
        first.addValue(u"x"_s, 1, u"1"_s);
        second.addValue(u"x"_s, 1, u"2"_s);
    }
    /// The value of x for formula 1 of the current library.
    QString x() { return StoredValues(library).valuesOf({u"x"_s}, 1).front().value; }
};

TEST_F(Current, ConnectionNumberFolderAndValuesChangeTogether) {
    for (const int number : {1, 2, 1}) {
        ASSERT_TRUE(library.open(number));
        EXPECT_EQ(library.number(), number);
        EXPECT_EQ(library.folder(), (number == 1 ? first : second).folder());
        EXPECT_EQ(x(), QString::number(number));
        FolderRows rows;
        EXPECT_TRUE(readFolders(library, rows));
        EXPECT_EQ(rows.rows().size(), number == 1 ? 5U : 1U);
    }
}

TEST_F(Current, AFileThatIsConfiguredTwiceStaysOpen) {
    configure(first);
    EXPECT_EQ(x(), u"1"_s);
    const data::Transaction open(library.connection());
    ASSERT_TRUE(library.open(3));
    EXPECT_EQ(library.number(), 3);
    EXPECT_EQ(library.variables().Count(), 1);
    library.connection().execute(u"Delete From Tree"_s);
    EXPECT_EQ(outline(first).section(u'(', 0, 0), u"梁"_s) << "the transaction goes on";
}

TEST_F(Current, WhatCannotBeOpenedLeavesNothingOpenAndNothingRead) {
    TestLibrary missing;
    configure(missing);
    ASSERT_TRUE(QFile::remove(missing.path()));
    for (const int number : {0, 3, 4, -1}) {
        ASSERT_TRUE(library.open(1));
        EXPECT_EQ(x(), u"1"_s);
        EXPECT_FALSE(library.open(number));
        EXPECT_FALSE(library.isOpen());
        EXPECT_EQ(library.number(), 0);
        EXPECT_EQ(library.variables().Count(), 0);
    }
    EXPECT_TRUE(questions.informed.isEmpty());
}

}  // namespace
}  // namespace varo::test
