#include "calc/calc_process.h"

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

struct Case {
    const char* arguments;
    std::string expected;  ///< what is printed, or complained of
    int status = 0;
};

/// Expects each run to print what is expected when its status is 0, else to complain of it.
void check(std::initializer_list<Case> cases) {
    for (const Case& test : cases) {
        const Outcome outcome = runCalc(test.arguments);
        const std::string hint = test.status == 2 ? "用“varo-calc --help”查看用法。\n" : "";
        EXPECT_EQ(outcome.status, test.status) << test.arguments;
        EXPECT_EQ(outcome.out, test.status == 0 ? test.expected : "") << test.arguments;
        EXPECT_EQ(outcome.err, test.status == 0 ? "" : test.expected + hint) << test.arguments;
    }
}

TEST(CommandLine, PrintsTheResult) {
    check({{"1/3", "0.3333333333333333\n"},
           {"x+1 x=-1e2 -p3", "-99.000\n"},
           {"-- -2^2", "-4\n"},
           {"StrCat(s,'|',t) \"s= a=b \" t=", " a=b |\n"},
           {"-p 3 R2S(x,1) x=2", "2.0\n"},
           {"σ≥f Σ=215 f=210", "1\n"},
           {"--vars 1+2", ""},
           {"--version", "varo-calc " VARO_VERSION "\n"}});
}

TEST(CommandLine, ComplainsOfFormulaAndValues) {
    check({{"3#4", "公式第2个字符“#”处有语法错误！\n", 1},
           {"a+b+c b=1", "变量“a”没有值！\n变量“c”没有值！\n", 1},
           {"a+b x=1 a=1m b=2 B=3",
            "公式没有变量“x”！\n变量“a”的值“1m”不是数值！\n变量“B”的值给了两次！\n", 1},
           {"S2R(s) s=\x1B[2J", "文本“\uFFFD[2J”不能转换成数值！\n", 1},
           {"--table missing.csv a+b c=1", "公式没有变量“c”！\n", 1},
           {"--table missing.csv a+b", "无法打开“missing.csv”：没有这个文件！\n", 1},
           {"--table / a+b", "无法读取“/”：这是一个文件夹！\n", 1}});
    const Outcome outcome = runCalc("--vars a+b*");
    EXPECT_EQ(outcome.out, "a\t数值\nb\t数值\n") << "the variables of a wrong formula, too";
    EXPECT_EQ(outcome.err, "公式不完整！（公式第5个字符）\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST(CommandLine, WrongUsageEndsWithTwo) {
    check({{"", "缺少公式！\n", 2},
           {"-p", "选项“-p”后面缺少内容！\n", 2},
           {"-p 1.5 1", "“-p”要一个0到1000的整数，不是“1.5”！\n", 2},
           {"-p -1 1", "“-p”要一个0到1000的整数，不是“-1”！\n", 2},
           {"--table", "选项“--table”后面缺少内容！\n", 2},
           {"--bogus 1", "不认识的选项“--bogus”！\n", 2},
           {"--help=x", "不认识的选项“--help=x”！\n", 2},
           {"--vars -π", "不认识的选项！公式以“-”开头时，请在它前面加“--”。\n", 2},
           {"--vars -2^2", "不认识的选项“-2”！公式以“-”开头时，请在它前面加“--”。\n", 2},
           {"a+1 a", "“a”不是“变量=值”的形式！\n", 2},
           {"a+1 =2", "“=2”不是“变量=值”的形式！\n", 2},
           {"--vars a a=1", "“--vars”后面只能有公式！\n", 2},
           {"--vars --table x.csv a", "“--vars”和“--table”不能同时使用！\n", 2}});
}

TEST(CommandLine, AResultThatCannotBeWrittenFails) {
    for (const char* arguments : {"1+1", "--vars a", "--help", "--table - a"}) {
        const Outcome outcome = runCalc(arguments, "a\n1\n", u"/dev/full"_s);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_EQ(outcome.err, "无法写出结果：磁盘已满！\n") << arguments;
    }
}

}  // namespace
}  // namespace varo::test
