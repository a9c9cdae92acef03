#include "calc/calc_process.h"

#include <algorithm>
#include <cmath>

namespace varo::test {
namespace {

struct Case {
    const char* arguments;  ///< after --table -
    std::string table;
    std::string out;
    std::string err;
};

/// Expects a status of 0 if nothing is complained of, else 1.
void check(std::initializer_list<Case> cases) {
    for (const auto& [arguments, table, out, err] : cases) {
        const Outcome outcome = runCalc((std::string("--table - ") + arguments).c_str(), table);
        EXPECT_EQ(outcome.out, out) << table;
        EXPECT_EQ(outcome.err, err) << table;
        EXPECT_EQ(outcome.status, err.empty() ? 0 : 1) << table;
    }
}

TEST(Table, GetsAColumnOfResults) {
    check({{"b*h b=2", "名称,H\n甲,3\n乙, -4 \n", "名称,H,Result\n甲,3,6\n乙,-4,-8\n", ""},
           {"-p 2 x/3", "x\n2\n", "x,Result\n2,0.67\n", ""},
           {"StrLen(R2S(x,0))", "x\n100\n", "x,Result\n100,3\n", ""},
           {"StrLen(StrCat(s,t)) t=xy", "s\n梁柱\n\"\"\n", "s,Result\n梁柱,4\n,2\n", ""},
           {"StrCat(s,',',R2S(x,n)) n=1", "x,s\n2,a\n", "x,s,Result\n2,a,\"a,2.0\"\n", ""}});
}

TEST(Table, KeepsItsContentAndForm) {
    check({{"x", "x,注\n1,\"a,b\"\n2,\"say \"\"hi\"\"\"\n3,\" a\"\n4,\"b \"\n5,3/4\" pipe\n",
            "x,注,Result\n1,\"a,b\",1\n2,\"say \"\"hi\"\"\",2\n3,\" a\",3\n4,\"b \",4\n5,\"3/4\"\" "
            "pipe\",5\n",
            ""},
           {"x", "x,注\r\n1,\"a\r\nb\"\r\n2,c", "x,注,Result\r\n1,\"a\r\nb\",1\r\n2,c,2\r\n", ""},
           {"x", "x\r1\r2\r", "x,Result\r\n1,1\r\n2,2\r\n", ""},
           {"x", "\xEF\xBB\xBF\"X\"\n1\n", "\xEF\xBB\xBFX,Result\n1,1\n", ""},
           {"1", "\n\xEF\xBB\xBFx\n2\n", "\"\xEF\xBB\xBFx\",Result\n2,1\n", ""},
           {"x", "\n\nx,y\n\n1,2\n\n\n", "x,y,Result\n1,2,1\n", ""},
           {"x", "x,y,,y,Result\n1,2,3,4,5\n", "x,y,,y,Result,Result\n1,2,3,4,5,1\n", ""},
           {"x", "y,x,z\n1,2\n3,4,5,,\n", "y,x,z,Result\n1,2,,2\n3,4,5,4\n", ""},
           {"x", "x,\xD6\xD0\n1,\xCE\xC4\n", "x,\xD6\xD0,Result\n1,\xCE\xC4,1\n", ""},
           {"1+1", "x,y", "x,y,Result\n", ""}});
}

TEST(Table, ARowWithoutResultIsNamedByItsLine) {
    check({{"1/x", "x,y\r\n\r\n0,\"a\nb\r\nc\"\r\n4,\r\nm,\r\n\" \",\r\n,\r\n1,2,3,\r\n",
            "x,y,Result\r\n0,\"a\nb\r\nc\",\r\n4,,0.25\r\nm,,\r\n\" \",,\r\n,,\r\n1,2,,3,\r\n",
            "标准输入:3: 除数不能为零！\n标准输入:7: 变量“x”的值“m”不是数值！\n标准输入:8: "
            "变量“x”没有值！\n标准输入:9: 变量“x”没有值！\n标准输入:10: "
            "这一行有4个单元格，表头只有2个！\n"},
           {"x", "y,x\n1\n", "y,x,Result\n1,,\n", "标准输入:2: 变量“x”没有值！\n"},
           {"If(x>0,s,'')", "x,s\r1,a\r2\r3,\xD6\xD0\r4,b\r",
            "x,s,Result\r\n1,a,a\r\n2,,\r\n3,\xD6\xD0,\r\n4,b,b\r\n",
            "标准输入:3: 变量“s”没有值！\n标准输入:4: 变量“s”的值不是UTF-8编码的文本！\n"},
           {"x", "x,y\n1,2\n3,\"4\n5,6\n", "x,y,Result\n1,2,1\n",
            "标准输入:3: 单元格缺少后面的引号！\n"},
           {"x", "x\n1\n" + std::string(16384, ',') + "\n2\n", "x,Result\n1,1\n",
            "标准输入:3: 这一行的单元格超过16384个！\n"},
           {"x", "x\n1\n2," + std::string((1 << 20) + 1, 'a') + "\n3\n", "x,Result\n1,1\n",
            "标准输入:3: 有一个单元格超过1 MiB，可能缺少引号！\n"},
           {"x", "x\n\"" + std::string((16 << 20) + (1 << 20), '\n'), "x,Result\n",
            "标准输入:2: 这一行超过16 MiB，可能缺少引号！\n"}});
}

TEST(Table, TheFirstTenRowsWithoutResultAreToldThenTheirNumber) {
    std::string table = "x\n";
    for (int i = 0; i < 12; ++i) {
        table += "0\n2\n";
    }
    for (const char* formula : {"--table - 1/x", "--table - R2S(1/x,1)"}) {
        const Outcome outcome = runCalc(formula, table);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 25);
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 11) << outcome.err;
        EXPECT_TRUE(
            outcome.err.ends_with("标准输入:20: 除数不能为零！\n"
                                  "标准输入: 共有12行没有结果，以上是前10行。\n"))
            << outcome.err;
    }
}

TEST(Table, OneThatDoesNotFitTheFormulaIsRefused) {
    check({{"x+y+z z=1", "a,X,x,Z\n1,2,3,4\n", "",
            "表格中变量“x”的列不止一个！\n变量“Z”在表格中有一列，不能再给值！\n"
            "表格中没有变量“y”的列，也没有给出它的值！\n"},
           {"中", "\xD6\xD0,b\n1,2\n", "",
            "表格中没有变量“中”的列，也没有给出它的值！\n"
            "表头不是UTF-8编码！请把表格另存为UTF-8编码的CSV文件。\n"},
           {"x", "", "", "“标准输入”是空的，没有表头！\n"},
           {"x", "\xEF\xBB\xBF\n\n", "", "“标准输入”是空的，没有表头！\n"}});
}

TEST(Table, ManyRowsAtATimeGiveWhatRowByRowGives) {
    constexpr int kCount = 30'000;
    int failing = 0;
    std::string table = "a,注,b\n";
    for (int i = 0; i < kCount; ++i) {
        const bool isNumber = i % 1000 != 7;
        const int divisor = i % 31;
        failing += isNumber && divisor != 0 ? 0 : 1;
        table += isNumber ? std::to_string(i * 0.25) : "x";
        table += ",\"第" + std::to_string(i) + "行，\n\"\"," + std::string(i % 50, '-') + "\",";
        table += std::to_string(divisor) + '\n';
    }
    const Outcome batches = runCalc("--table - a^1.5/b-k k=3", table);
    const Outcome rows = runCalc("--table - If(t='',a^1.5/b-k,0) k=3 t=", table);
    EXPECT_TRUE(batches.out == rows.out);
    EXPECT_EQ(batches.err, rows.err);
    EXPECT_EQ(batches.status, 1);
    EXPECT_NE(batches.err.find("共有" + std::to_string(failing) + "行"), std::string::npos);
    EXPECT_EQ(std::stod(batches.out.substr(batches.out.rfind(',') + 1)),
              std::pow((kCount - 1) * 0.25, 1.5) / ((kCount - 1) % 31) - 3);
}

}  // namespace
}  // namespace varo::test
