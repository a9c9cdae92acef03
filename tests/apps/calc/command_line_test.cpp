#include "calc/calc_process.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

const std::string usageHint = "用“varo-calc --help”查看用法。\n";

struct Case {
    const char* arguments;
    std::string expected;  ///< what is printed, or complained of
};

TEST(CommandLine, PrintsTheResult) {
    for (const Case& test : {
             Case{"b*h^2/6 b=0.3 H=.6", "0.018\n"},
             Case{"1/3", "0.3333333333333333\n"},
             Case{"-p 2 2.675", "2.68\n"},
             Case{"x+1 x=-1e2 -p3", "-99.000\n"},
             Case{"-- -2^2", "-4\n"},
             Case{"StrCat(s,'|',t) \"s= a=b \" t=", " a=b |\n"},
             Case{"-p 3 R2S(x,1) x=2", "2.0\n"},
             Case{"σ≥f Σ=215 f=210", "1\n"},
             Case{"--vars If(c,s,'-')", "c\t数值\ns\t文本\n"},
             Case{"--vars 1+2", ""},
             Case{"--version", "varo-calc " VARO_VERSION "\n"},
         }) {
        const CalcOutcome outcome = runCalc(test.arguments);
        EXPECT_EQ(outcome.out, test.expected) << test.arguments;
        EXPECT_EQ(outcome.status, 0) << test.arguments << '\n' << outcome.err;
        EXPECT_EQ(outcome.err, "") << test.arguments;
    }
}

TEST(CommandLine, ComplainsOfFormulaAndValues) {
    for (const Case& test : {
             Case{"3#4", "公式第2个字符“#”处有语法错误！\n"},
             Case{"1+foo(2)", "没有函数“foo”！（公式第3个字符）\n"},
             Case{"2*", "公式不完整！（公式第3个字符）\n"},
             Case{"a/(b-b) a=1 b=2", "除数不能为零！\n"},
             Case{"a+b+c b=1", "变量“a”没有值！\n变量“c”没有值！\n"},
             Case{"a+b x=1 a=1m b=2 B=3",
                  "公式没有变量“x”！\n变量“a”的值“1m”不是数值！\n变量“B”的值给了两次！\n"},
             Case{"S2R(s) s=\x1B[2J", "文本“\uFFFD[2J”不能转换成数值！\n"},
             Case{"--table missing.csv a+b c=1", "公式没有变量“c”！\n"},
             Case{"--table missing.csv a+b", "无法打开“missing.csv”：没有这个文件！\n"},
             Case{"--table / a+b", "无法读取“/”：这是一个文件夹！\n"},
         }) {
        const CalcOutcome outcome = runCalc(test.arguments);
        EXPECT_EQ(outcome.err, test.expected) << test.arguments;
        EXPECT_EQ(outcome.status, 1) << test.arguments;
        EXPECT_EQ(outcome.out, "") << test.arguments;
    }
    const CalcOutcome outcome = runCalc("--vars a+b*");
    EXPECT_EQ(outcome.out, "a\t数值\nb\t数值\n") << "the variables of a wrong formula, too";
    EXPECT_EQ(outcome.err, "公式不完整！（公式第5个字符）\n");
    EXPECT_EQ(outcome.status, 1);
}

TEST(CommandLine, WrongUsageEndsWithTwo) {
    for (const Case& test : {
             Case{"", "缺少公式！\n"},
             Case{"-p", "选项“-p”后面缺少内容！\n"},
             Case{"-p 1.5 1", "“-p”要一个0到1000的整数，不是“1.5”！\n"},
             Case{"-p -1 1", "“-p”要一个0到1000的整数，不是“-1”！\n"},
             Case{"--table", "选项“--table”后面缺少内容！\n"},
             Case{"--bogus 1", "不认识的选项“--bogus”！\n"},
             Case{"--help=x", "不认识的选项“--help=x”！\n"},
             Case{"--vars -π", "不认识的选项！公式以“-”开头时，请在它前面加“--”。\n"},
             Case{"--vars -2^2", "不认识的选项“-2”！公式以“-”开头时，请在它前面加“--”。\n"},
             Case{"a+1 a", "“a”不是“变量=值”的形式！\n"},
             Case{"a+1 =2", "“=2”不是“变量=值”的形式！\n"},
             Case{"--vars a a=1", "“--vars”后面只能有公式！\n"},
             Case{"--vars --table x.csv a", "“--vars”和“--table”不能同时使用！\n"},
         }) {
        const CalcOutcome outcome = runCalc(test.arguments);
        EXPECT_EQ(outcome.err, test.expected + usageHint) << test.arguments;
        EXPECT_EQ(outcome.status, 2) << test.arguments;
        EXPECT_EQ(outcome.out, "") << test.arguments;
    }
}

TEST(CommandLine, TheHelpFitsAScreen) {
    const CalcOutcome outcome = runCalc("--help");
    EXPECT_EQ(outcome.status, 0);
    QStringList lines = QString::fromStdString(outcome.out).split(u'\n');
    EXPECT_EQ(lines.takeLast(), QString()) << "the last line must end";
    EXPECT_GT(lines.size(), 10);
    EXPECT_LE(lines.size(), 24);
    for (const QString& line : lines) {
        const auto isWide = [](QChar c) { return c.unicode() > 0xFF; };
        EXPECT_LE(line.size() + std::count_if(line.begin(), line.end(), isWide), 80)
            << line.toStdString();
    }
}

TEST(CommandLine, AResultThatCannotBeWrittenFails) {
    for (const char* arguments : {"1+1", "--vars a", "--help", "--table - a"}) {
        QProcess program;
        program.setStandardOutputFile(QStringLiteral("/dev/full"));
        program.start(QStringLiteral(VARO_CALC_PROGRAM),
                      QProcess::splitCommand(QString::fromUtf8(arguments)));
        program.write("a\n1\n");
        program.closeWriteChannel();
        const CalcOutcome outcome = outcomeOf(program);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_EQ(outcome.err, "无法写出结果：磁盘已满！\n") << arguments;
    }
}

}  // namespace
}  // namespace varo::test
