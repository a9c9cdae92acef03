#include "engine/calculation.h"

#include <gtest/gtest.h>
#include <string_view>

namespace {

struct Case {
    std::string_view formula;
    std::string_view expected;
};

void expectAll(std::initializer_list<Case> cases) {
    for (const Case& c : cases) {
        EXPECT_EQ(answer(c.formula), c.expected) << c.formula;
    }
}

}  // namespace

TEST(Lexical, NumbersAreReadInEveryForm) {
    expectAll({
        {"12", "12"},
        {".5", "0.5"},
        {"1.", "1"},
        {"1.+.5", "1.5"},
        {"2.06E11", "2.06e+11"},
        {"1e-3", "0.001"},
        {"1E+2", "100"},
        {"007", "7"},
        {"0.1", "0.1"},
        {"123456789.123456789", "123456789.12345679"},
        {"9007199254740993", "9007199254740992"},
        {"1.7976931348623157e308", "1.7976931348623157e+308"},
        {"5e-324", "5e-324"},
    });
}

TEST(Lexical, TextsStandBetweenQuotesAndDoubledOnesStandForOne) {
    expectAll({
        {"\"abc\"", "\"abc\""},
        {"'abc'", "\"abc\""},
        {"\"\"", "\"\""},
        {"''", "\"\""},
        {"\"say \"\"hi\"\"\"", "\"say \"hi\"\""},
        {"'it''s'", "\"it's\""},
        {"\"it's\"", "\"it's\""},
        {"'“引号”，（）'", "\"“引号”，（）\""},
        {"\"a + (\"", "\"a + (\""},
    });
}

TEST(Lexical, BlanksOnlySeparate) {
    expectAll({
        {"  1 +\t2\r\n* 3 ", "7"},
        {"sin ( 0 )", "0"},
        {"1\u3000+\u00A01", "2"},
        {"1 2", "公式第3个字符“2”处有语法错误！"},
        {"1 > = 0", "公式第5个字符“=”处有语法错误！"},
    });
}

TEST(Lexical, FullWidthFormsReadAsTheirAsciiForms) {
    expectAll({
        {"（１＋２）×３", "9"},
        {"６÷２－１", "2"},
        {"2·3＊4／6", "4"},
        {"2＾3＝8", "1"},
        {"3！", "6"},
        {"mod（7，4）", "3"},
        {"1＜2 And 2＞1", "1"},
        {"2≥2 And 1≤2 And 1≠2", "1"},
        {"1＜＝1 And 1＜＞2 And 2＞＝1", "1"},
        {"1<＝1", "1"},
        {"5\u22122", "3"},
        {"１．５ｅ２", "150"},
        {"1e＋2", "100"},
        {"１2３", "123"},
        {"“abc”", "\"abc\""},
        {"“混凝土\"", "\"混凝土\""},
        {"\"混凝土“", "\"混凝土\""},
        {"“a””b”", "\"a\"b\""},
        {"‘abc’", "\"abc\""},
        {"\"（１）\"", "\"（１）\""},
        {"ｓｑｒｔ(４)", "2"},
        {"１ ａｎｄ ０", "0"},
    });
}

TEST(Lexical, NamesAreLettersOfAnyScriptWithDigitsAndSubscripts) {
    EXPECT_EQ(variables("σ+弯矩+d₁+_x+a1_b+Ⅱ+é"),
              "σ:number 弯矩:number d₁:number _x:number a1_b:number Ⅱ:number é:number");
    EXPECT_EQ(variables("d1+d₁"), "d1:number d₁:number");
    EXPECT_EQ(answer("₁a"), "公式第1个字符“₁”处有语法错误！");
    EXPECT_EQ(answer("x²"), "公式第2个字符“²”处有语法错误！");
}

TEST(Lexical, NamesCompareWithoutLetterCaseAndKeepTheirFirstSpelling) {
    EXPECT_EQ(variables("Fy+fY+FY"), "Fy:number");
    EXPECT_EQ(variables("Σ+σ+ς"), "Σ:number");
    EXPECT_EQ(variables("Ａb+aB"), "Ab:number");
    EXPECT_EQ(variables("\u212A+k"), "\u212A:number");
    EXPECT_EQ(variables("straße+STRASSE"), "straße:number STRASSE:number");
    EXPECT_EQ(answer("Fy*2", {{"FY", 3.0}}), "6");
}

TEST(Lexical, ConstantsAndOperatorWordsAreNoVariables) {
    EXPECT_EQ(variables("pi+PI+π+Π+exp+Exp"), "");
    EXPECT_EQ(variables("a AND b or NOT c LIKE d equal e"),
              "a:number b:number c:text d:text e:text");
    EXPECT_EQ(answer("exp"), "2.718281828459045");
    EXPECT_EQ(answer("π"), "3.141592653589793");
}

TEST(Lexical, NamesOfFunctionsWithoutParenthesesAreVariables) {
    EXPECT_EQ(variables("int+log+If"), "int:number log:number If:number");
    EXPECT_EQ(answer("int*int(int)", {{"int", 2.5}}), "5");
}

TEST(Lexical, BytesThatAreNotUtf8AreBadCharacters) {
    EXPECT_EQ(answer("1+\xff"), "公式第3个字符“\uFFFD”处有语法错误！");
    EXPECT_EQ(answer("1+\xe4\xb8"), "公式第3个字符“\uFFFD”处有语法错误！");
    EXPECT_EQ(answer("StrLen(\"\xe4\xb8z\")"), "3");
    const std::string zero(1, '\0');
    EXPECT_EQ(answer("1" + zero), "公式第2个字符“" + zero + "”处有语法错误！");
}
