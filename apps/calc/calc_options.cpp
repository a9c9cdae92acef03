#include "calc/calc_options.h"

#include "calc/complaint.h"

#include <array>
#include <cctype>
#include <charconv>
#include <getopt.h>

namespace varo::calc {
namespace {

constexpr int kMostDecimals = 1000;
constexpr int kVars = 256;  // long options count on from the characters, which are short ones
constexpr int kTable = 257;
constexpr int kHelp = 258;
constexpr int kVersion = 259;

constexpr std::array kLongOptions{
    option{"vars", no_argument, nullptr, kVars},
    option{"table", required_argument, nullptr, kTable},
    option{"help", no_argument, nullptr, kHelp},
    option{"version", no_argument, nullptr, kVersion},
    option{nullptr, 0, nullptr, 0},
};

int decimalsOf(std::string_view text) {
    int decimals = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, decimals);
    if (text.empty() || end != last || error != std::errc() || decimals < 0 ||
        decimals > kMostDecimals) {
        throw UsageError("“-p”要一个0到" + std::to_string(kMostDecimals) + "的整数，不是“" +
                         excerpt(text) + "”！");
    }
    return decimals;
}

Assignment assignmentOf(std::string_view text) {
    const std::size_t separator = text.find('=');
    if (separator == std::string_view::npos || separator == 0) {
        throw UsageError("“" + excerpt(text) + "”不是“变量=值”的形式！");
    }
    return {text.substr(0, separator), text.substr(separator + 1)};
}

void setTask(CalcOptions& options, Task task) {
    if (options.task != Task::Calculate && options.task != task) {
        throw UsageError("“--vars”和“--table”不能同时使用！");
    }
    options.task = task;
}

/// `previous` is the argument before the next one to read. getopt_long() has read a long option to
/// its end; a short one, which it leaves in optopt, may have more behind it.
[[noreturn]] void refuseOption(std::string_view previous) {
    if (optopt == 0 || optopt >= kVars) {
        throw UsageError("不认识的选项“" + excerpt(previous) + "”！");
    }
    const bool printable = optopt > 0 && optopt < 0x80 && std::isgraph(optopt) != 0;
    const std::string name =
        printable ? "“-" + std::string(1, static_cast<char>(optopt)) + "”" : "";
    throw UsageError("不认识的选项" + name + "！公式以“-”开头时，请在它前面加“--”。");
}

/// Takes the options; returns false when one of them is all that counts.
bool takeOptions(int argc, char** argv, CalcOptions& options) {
    opterr = 0;
    for (;;) {
        switch (getopt_long(argc, argv, ":p:h", kLongOptions.data(), nullptr)) {
            case -1:
                return true;
            case 'p':
                options.decimals = decimalsOf(optarg);
                break;
            case kVars:
                setTask(options, Task::ListVariables);
                break;
            case kTable:
                setTask(options, Task::CalculateTable);
                options.table = optarg;
                break;
            case 'h':
            case kHelp:
                options.task = Task::Help;
                return false;
            case kVersion:
                options.task = Task::Version;
                return false;
            case ':':
                throw UsageError("选项“" + excerpt(argv[optind - 1]) + "”后面缺少内容！");
            default:
                refuseOption(argv[optind - 1]);
        }
    }
}

}  // namespace

CalcOptions parseOptions(int argc, char** argv) {
    CalcOptions options;
    if (!takeOptions(argc, argv, options)) {
        return options;
    }
    if (optind == argc) {
        throw UsageError("缺少公式！");
    }
    options.formula = argv[optind];
    for (int i = optind + 1; i < argc; ++i) {
        options.assignments.push_back(assignmentOf(argv[i]));
    }
    if (options.task == Task::ListVariables && (options.decimals || !options.assignments.empty())) {
        throw UsageError("“--vars”后面只能有公式！");
    }
    return options;
}

std::string_view helpText() {
    return R"(用法：varo-calc [-p 位数] 公式 [变量=值]...
      varo-calc [-p 位数] --table 文件.csv 公式 [变量=值]...
      varo-calc --vars 公式
计算一个公式，或者对 CSV 表格的每一行计算它。

  -p 位数         结果的小数位数，0到1000；不用它时，数值写成最短的准确形式
  --table 文件    首行的列名与变量名相同（不分大小写）的列，是变量的值；输出整个
                  表格，最后加一列 Result；文件“-”是标准输入；表格没有的变量，
                  用“变量=值”给出
  --vars          列出公式的变量和类型，每行一个
  -h, --help      显示这些说明
  --version       显示版本
  --              后面的都不是选项；公式以“-”开头时，写在公式前面

没有结果的行，Result 为空，行号和原因写到标准错误。
退出状态：0 完成；1 公式、值或文件有错误；2 用法不对。

例如：
  varo-calc -p 2 'q*L^2/8' q=10 L=6
  varo-calc --table sections.csv 'b*h^2/6' > moduli.csv
)";
}

}  // namespace varo::calc
