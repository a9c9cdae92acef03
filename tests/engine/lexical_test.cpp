// What stands in the reference of the language as an example is tested there.

#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Lexical, NumbersAreReadInEveryForm) {
    expectAnswers(
        "1.+.5 → 1.5 | 1E+2 → 100 | 007 → 7 | 123456789.123456789 → 123456789.12345679 | "
        "9007199254740993 → 9007199254740992 | 5e-324 → 5e-324 | 2.06E11 → 2.06e+11 | "
        "1.7976931348623157e308 → 1.7976931348623157e+308 | 0.1 → 0.1");
}

TEST(Lexical, TextsStandBetweenQuotesAndDoubledOnesStandForOne) {
    expectAnswers("'' → '' | 'it''s' → 'it's' | '“引号”，（）' → '“引号”，（）' | \"a“ → 'a'");
}

TEST(Lexical, BlanksOnlySeparate) {
    expectAnswers(
        "  1 +\t2\r\n* 3  → 7 | sin ( 0 ) → 0 | 1\u3000+\u00A01 → 2 | "
        "1 2 → 公式第3个字符“2”处有语法错误！ | 1 > = 0 → 公式第5个字符“=”处有语法错误！");
}

TEST(Lexical, FullWidthFormsReadAsTheirAsciiForms) {
    expectAnswers(
        "（１＋２）×３ → 9 | ６÷２－１ → 2 | 2·3＊4／6 → 4 | 2＾3＝8 → 1 | 1＜2 And 2＞1 → 1 | "
        "2≥2 And 1≤2 And 1≠2 → 1 | 1＜＝1 And 1＜＞2 And 2＞＝1 → 1 | 1<＝1 → 1 | 5\u22122 → 3 | "
        "1e＋2 → 100 | １2３ → 123 | 1．5Ｅ2 → 150 | \"（１）\" → '（１）' | ＂a＂＂b＂ → 'a\"b' | "
        "＇＂＇ → '＂' | ｓQｒT(４) → 2 | １ ａＮd ０ → 0 | 0 oＲ 1 → 1 | pＩ → 3.141592653589793");
}

TEST(Lexical, NamesCompareWithoutLetterCaseAndKeepTheirFirstSpelling) {
    expectVariables(
        "σ+弯矩+d₁+_x+a1_b+Ⅱ+é → σ 弯矩 d₁ _x a1_b Ⅱ é | d1+d₁ → d1 d₁ | Fy+fY+FY → Fy | "
        "Σ+σ+ς → Σ | Ａb+aB → Ab | \u212A+k → \u212A | straße+STRASSE → straße STRASSE | "
        "ｓ＿1+Ｓ_１ → s_1");
    expectAnswers("Fy*2 → 6", {{"FY", 3.0}});
}

TEST(Lexical, ConstantsOperatorWordsAndFunctionsAreNoVariables) {
    expectVariables(
        "pi+PI+π+Π+exp+Exp →  | int+log+If → int log If | "
        "Note+oR_+Andy+pi2+e5+Results → Note oR_ Andy pi2 e5 Results | "
        "a AND b or NOT c LIKE d equal e → a b c:text d:text e:text");
    const std::string name = repeated("x", 300);
    expectVariables(name + "+" + name + "1+xx → " + name + " " + name + "1 xx");
    expectAnswers("exp → 2.718281828459045 | π → 3.141592653589793");
}

TEST(Lexical, BytesThatAreNotUtf8AreBadCharacters) {
    expectAnswers(
        "1+\xff → 公式第3个字符“\uFFFD”处有语法错误！ | "
        "1+\xe4\xb8 → 公式第3个字符“\uFFFD”处有语法错误！ | StrLen('\xe4\xb8z') → 3");
    const std::string zero(1, '\0');
    EXPECT_EQ(answer("1" + zero), "公式第2个字符“" + zero + "”处有语法错误！");
}
