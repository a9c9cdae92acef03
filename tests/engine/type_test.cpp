#include "engine/calculation.h"

#include <gtest/gtest.h>
#include <string_view>

namespace {

struct Case {
    std::string_view formula;
    std::string_view variables;
};

}  // namespace

TEST(Types, OfVariablesFollowFromTheirUse) {
    const std::initializer_list<Case> cases = {
        {"a", "a:number"},
        {"a+b", "a:number b:number"},
        {"StrLen(a)+b", "a:text b:number"},
        {"a=\"x\"", "a:text"},
        {"\"x\">=a", "a:text"},
        {"a Like b", "a:text b:text"},
        {"a Equal b", "a:text b:text"},
        {"a=b", "a:number b:number"},
        {"If(c,a,\"x\")", "c:number a:text"},
        {"If(c,\"x\",a)", "c:number a:text"},
        {"If(c,a,b)", "c:number a:number b:number"},
        {"If(c,a,2)", "c:number a:number"},
        {"StrSub(s,i,n,r)", "s:text i:number n:number r:number"},
        {"R2S(x,n)", "x:number n:number"},
        {"If(a,1,2)", "a:number"},
        {"Not a And b Or c", "a:number b:number c:number"},
        {"-a", "a:number"},
        {"a!", "a:number"},
        {"(a)", "a:number"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(variables(c.formula), c.variables) << c.formula;
    }
}

TEST(Types, TravelThroughRelationsAndBranches) {
    const std::initializer_list<Case> cases = {
        {"a=b And b=\"x\"", "a:text b:text"},
        {"a=b And b=c And c=d And StrLen(d)", "a:text b:text c:text d:text"},
        {"StrLen(If(c,a,b))", "c:number a:text b:text"},
        {"If(c,a,b)=\"x\"", "c:number a:text b:text"},
        {"If(c,If(c,a,b),d)=e And e Like \"x\"", "c:number a:text b:text d:text e:text"},
        {"If(c,a,b)+1", "c:number a:number b:number"},
        {"a=b And c=d And a=c And StrTrimS(d)=\"\"", "a:text b:text c:text d:text"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(variables(c.formula), c.variables) << c.formula;
    }
}

TEST(Types, TheFirstUseDecidesAndALaterOneIsTheError) {
    const std::initializer_list<Case> cases = {
        {"a+StrLen(a)", "函数“StrLen”的第1参量只能被赋予文本型参数。"},
        {"StrLen(a)+a", "运算符“+”不能用于文本！"},
        {"a=\"x\" And sin(a)", "函数“sin”的第1参量只能被赋予数值型参数。"},
        {"sin(a) And a=\"x\"", "运算符“=”两边的类型不同！"},
        {"a=b And sin(a) And StrLen(b)", "函数“StrLen”的第1参量只能被赋予文本型参数。"},
        {"If(a Like \"x\",a,1)", "函数“If”的第3参量只能被赋予文本型参数。"},
        {"If(1,a+1,\"x\")", "函数“If”的第3参量只能被赋予数值型参数。"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(answer(c.formula), c.variables) << c.formula;
    }
}

TEST(Types, OfTheResultFollowFromTheFormula) {
    const auto typeOf = [](std::string_view text) {
        return varo::engine::Formula::parse(text).resultType();
    };
    using varo::engine::Type;
    EXPECT_EQ(typeOf("1+1"), Type::Number);
    EXPECT_EQ(typeOf("a"), Type::Number);
    EXPECT_EQ(typeOf("\"a\"=\"b\""), Type::Number);
    EXPECT_EQ(typeOf("StrLen(a)"), Type::Number);
    EXPECT_EQ(typeOf("\"a\""), Type::Text);
    EXPECT_EQ(typeOf("Left(a,1)"), Type::Text);
    EXPECT_EQ(typeOf("If(c,a,\"x\")"), Type::Text);
    EXPECT_EQ(typeOf("If(StrLen(a),a,b)"), Type::Text);
    EXPECT_EQ(typeOf("1+"), Type::Number);
}
