#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(Lexical, NumbersAreReadInEveryForm) {
    expectAnswers({"12 → 12", ".5 → 0.5", "1. → 1", "1.+.5 → 1.5", "2.06E11 → 2.06e+11",
                   "1e-3 → 0.001", "1E+2 → 100", "007 → 7", "0.1 → 0.1",
                   "123456789.123456789 → 123456789.12345679",
                   "9007199254740993 → 9007199254740992",
                   "1.7976931348623157e308 → 1.7976931348623157e+308", "5e-324 → 5e-324"});
}

TEST(Lexical, TextsStandBetweenQuotesAndDoubledOnesStandForOne) {
    expectAnswers({"\"abc\" → 'abc'", "'abc' → 'abc'", "\"\" → ''", "'' → ''",
                   "\"say \"\"hi\"\"\" → 'say \"hi\"'", "'it''s' → 'it's'", "\"it's\" → 'it's'",
                   "'“引号”，（）' → '“引号”，（）'", "\"a + (\" → 'a + ('"});
}

TEST(Lexical, BlanksOnlySeparate) {
    expectAnswers({"  1 +\t2\r\n* 3  → 7", "sin ( 0 ) → 0", "1\u3000+\u00A01 → 2",
                   "1 2 → 公式第3个字符“2”处有语法错误！",
                   "1 > = 0 → 公式第5个字符“=”处有语法错误！"});
}

TEST(Lexical, FullWidthFormsReadAsTheirAsciiForms) {
    expectAnswers({"（１＋２）×３ → 9", "６÷２－１ → 2", "2·3＊4／6 → 4", "2＾3＝8 → 1", "3！ → 6",
                   "mod（7，4） → 3", "1＜2 And 2＞1 → 1", "2≥2 And 1≤2 And 1≠2 → 1",
                   "1＜＝1 And 1＜＞2 And 2＞＝1 → 1", "1<＝1 → 1", "5\u22122 → 3",
                   "１．５ｅ２ → 150"});
    expectAnswers({"1e＋2 → 100", "１2３ → 123", "“abc” → 'abc'", "“混凝土\" → '混凝土'",
                   "\"混凝土“ → '混凝土'", "“a””b” → 'a\"b'", "‘abc’ → 'abc'",
                   "\"（１）\" → '（１）'", "ｓｑｒｔ(４) → 2", "１ ａｎｄ ０ → 0"});
}

TEST(Lexical, NamesAreLettersOfAnyScriptWithDigitsAndSubscripts) {
    expectVariables({"σ+弯矩+d₁+_x+a1_b+Ⅱ+é → σ 弯矩 d₁ _x a1_b Ⅱ é", "d1+d₁ → d1 d₁"});
    expectErrors({"▸₁a → 公式第1个字符“₁”处有语法错误！", "x▸² → 公式第2个字符“²”处有语法错误！"});
}

TEST(Lexical, NamesCompareWithoutLetterCaseAndKeepTheirFirstSpelling) {
    expectVariables({"Fy+fY+FY → Fy", "Σ+σ+ς → Σ", "Ａb+aB → Ab", "\u212A+k → \u212A",
                     "straße+STRASSE → straße STRASSE"});
    expectAnswers({"Fy*2 → 6"}, {{"FY", 3.0}});
}

TEST(Lexical, ConstantsOperatorWordsAndFunctionsAreNoVariables) {
    expectVariables({"pi+PI+π+Π+exp+Exp → ",
                     "a AND b or NOT c LIKE d equal e → a b c:text d:text e:text",
                     "int+log+If → int log If"});
    expectAnswers({"exp → 2.718281828459045", "π → 3.141592653589793", "int*int(int) → 5"},
                  {{"int", 2.5}});
}

TEST(Lexical, BytesThatAreNotUtf8AreBadCharacters) {
    expectAnswers({"1+\xff → 公式第3个字符“\uFFFD”处有语法错误！",
                   "1+\xe4\xb8 → 公式第3个字符“\uFFFD”处有语法错误！", "StrLen('\xe4\xb8z') → 3"});
    const std::string zero(1, '\0');
    EXPECT_EQ(answer("1" + zero), "公式第2个字符“" + zero + "”处有语法错误！");
}
