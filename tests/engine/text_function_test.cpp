#include "engine/calculation.h"

#include <gtest/gtest.h>

TEST(TextFunctions, R2SWritesANumberWithFixedDecimals) {
    expectAnswers(
        "R2S(2.675,2) → '2.68' | R2S(2,0) → '2' | R2S(-0.001,2) → '0.00' | R2S(1.25,1.9) → '1.3' | "
        "R2S(1e20,1) → '100000000000000000000.0' | StrLen(R2S(1,1e9)) → 1002 | R2S(0,2) → '0.00' | "
        "R2S(0.5,0) → '1' | R2S(-0.4,0) → '0' | R2S(-0.005,2) → '-0.01' | R2S(9.995,2) → '10.00' | "
        "R2S(123456789012345678,0) → '123456789012346000' | R2S(1e-10,12) → '0.000000000100' | "
        "R2S(1/3,20) → '0.33333333333333300000'");
}

TEST(TextFunctions, S2RReadsANumberBetweenBlanks) {
    expectAnswers(
        "S2R('  -1e3 ') → -1000 | S2R('\u3000+.5\u3000') → 0.5 | S2R('5.') → 5 | "
        "S2R('00012') → 12 | S2R('1e-999') → 0 | S2R('-0') → 0 | "
        "S2R('1e23') → 1e+23 | S2R('0e999999') → 0 | "
        "S2R('0.30000000000000004') → 0.30000000000000004 | "
        "S2R('179769313486231570000e288') → 1.7976931348623157e+308");
}

TEST(TextFunctions, StrCaseAndStrCatMakeNewTexts) {
    expectAnswers(
        "StrCase('aBc9é',1) → 'ABC9É' | StrCase('ABΣ中',0) → 'abσ中' | "
        "StrCase('straße',1) → 'STRAßE' | StrCase('',1) → '' | "
        "StrCat('1','2','3','4','5') → '12345' | "
        "StrCat(StrCat('a','b'),StrCat('c','d'),'e') → 'abcde'");
}

TEST(TextFunctions, PartsAreTakenFromEitherEndOrBetweenSeparators) {
    expectAnswers(
        "StrSub('abcdef',1,2,1) → 'ef' | StrSub('一二三四',2,2,0) → '二三' | "
        "StrSub('一二三四',1,2,1) → '三四' | StrSub('abc',0,2,0) → 'ab' | "
        "StrSub('abc',-5,2,1) → 'bc' | StrSub('abc',2,99,0) → 'bc' | StrSub('abc',2,99,1) → 'ab' | "
        "StrSub('abc',4,1,0) → '' | StrSub('abc',9,1,1) → '' | StrSub('abc',1,-1,0) → '' | "
        "StrSub('abc',2.9,1.9,0) → 'b' | StrSub('abc',1e300,1e300,0) → '' | StrSub('',1,1,1) → '' "
        "| "
        "Left('混凝土',2) → '混凝' | Right('混凝土',2) → '凝土' | Left('abc',0) → '' | "
        "Right('abc',0) → '' | Right('abc',99) → 'abc' | Left('abc',-1) → '' | "
        "Right('abc',-1) → '' | Left('abc',1.9) → 'a' | Right('😀é',1) → 'é' | "
        "StrSubN('a,b,,c',',',1) → 'a' | StrSubN('a,b,,c',',',3) → '' | "
        "StrSubN('a,b,,c',',',4) → 'c' | StrSubN('a,b,,c',',',5) → '' | StrSubN('a,b',',',0) → '' "
        "| "
        "StrSubN('a--b--c','--',2) → 'b' | StrSubN('abc','',1) → 'abc' | StrSubN('abc','',2) → '' "
        "| "
        "StrSubN('',',',1) → ''");
}

TEST(TextFunctions, LengthsAndPositionsCountCharacters) {
    expectAnswers(
        "StrLen('弯矩M₁😀') → 5 | StrFind('abcabc','c',3) → 3 | StrFind('abcabc','c',7) → 0 | "
        "StrFind('abcabc','c',-9) → 3 | StrFind('一二三二','二',3) → 4 | StrFind('','a',1) → 0 | "
        "StrFindN('一二一','一') → 2 | StrFindN('abc','x') → 0 | "
        "StrMismatch('abcd','abxd',1,1,0) → 2 | StrMismatch('abcd','bcd',2,1,0) → 3 | "
        "StrMismatch('ABc','abC',1,1,0) → 0 | StrMismatch('ABc','abC',1,1,1) → 3 | "
        "StrMismatch('Σ一','ς一二',1,1,1) → 2 | StrMismatch('abc','abc',-3,0,0) → 3 | "
        "StrMismatch('abc','abc',4,1,0) → 0 | StrMismatch('','',1,1,0) → 0");
}

TEST(TextFunctions, TrimmingReplacingAndInsertingChangeTexts) {
    expectAnswers(
        "StrTrim('xxaxx','x',1) → 'axx' | StrTrim('xxaxx','x',0) → 'xxa' | "
        "StrTrim('aaab','aa',1) → 'ab' | StrTrim('xxx','x',0) → '' | StrTrim('abc','',1) → 'abc' | "
        "StrTrimS('  a b ') → 'a b' | StrTrimS('\u3000 \u3000') → '' | StrTrimS('\ta') → 'a' | "
        "StrReplace('a-b-c','-','+',3,0) → 'a-b-c' | StrReplace('a-b-c','-','+',-1,0) → 'a-b-c' | "
        "StrReplace('a-b-c','-','+',1.9,0) → 'a+b-c' | StrReplace('aaa','aa','b',0,0) → 'ba' | "
        "StrReplace('aAa','A','x',0,0) → 'axa' | StrReplace('aAa','A','x',0,1) → 'xxx' | "
        "StrReplace('aAa','A','x',3,1) → 'aAx' | StrReplace('K一\u212A二k','k','',0,1) → '一二' | "
        "StrReplace('abc','','x',0,1) → 'abc' | StrReplace('a','a','aa',0,0) → 'aa' | "
        "StrDelete('a-b-c','-') → 'abc' | StrDelete('abc','') → 'abc' | "
        "StrInsert('abc','-',1) → '-abc' | StrInsert('abc','-',4) → 'abc-' | "
        "StrInsert('abc','-',0) → '-abc' | StrInsert('abc','-',99) → 'abc-' | "
        "StrInsert('','-',1) → '-'");
}

TEST(TextFunctions, FindLongTextsThatRepeatThemselves) {
    const std::string wanted = repeated("ab", 12) + "c";
    expectAnswers("StrFind(s,t,1) → 57 | StrFind(s,t,58) → 82 | StrFind(s,t,83) → 0",
                  {{"s", repeated("ab", 40) + "c" + wanted}, {"t", wanted}});
}
