#include "engine/error.h"

#include <string_view>

namespace varo::engine {
namespace {

/// The message of each code: `%s` stands for the subject, `%n` for the position, `%a` for the
/// argument.
constexpr std::string_view messageOf(ErrorCode code) {
    switch (code) {
        case ErrorCode::None:
            return "";
        case ErrorCode::NumberWanted:
            return "函数“%s”的第%a参量只能被赋予数值型参数。";
        case ErrorCode::TextWanted:
            return "函数“%s”的第%a参量只能被赋予文本型参数。";
        case ErrorCode::TooFewArguments:
            return "函数“%s”的参数不足。";
        case ErrorCode::TooManyArguments:
            return "函数“%s”的参数过多！";
        case ErrorCode::UnknownFunction:
            return "没有函数“%s”！";
        case ErrorCode::BadCharacter:
            return "公式第%n个字符“%s”处有语法错误！";
        case ErrorCode::Incomplete:
            return "公式不完整！";
        case ErrorCode::Parentheses:
            return "公式中的括号不匹配！";
        case ErrorCode::UnclosedText:
            return "公式中的文本缺少引号！";
        case ErrorCode::NestedTooDeeply:
            return "公式嵌套过深！";
        case ErrorCode::TextOperand:
            return "运算符“%s”不能用于文本！";
        case ErrorCode::MixedOperands:
            return "运算符“%s”两边的类型不同！";
        case ErrorCode::ResultRead:
            return "公式不能使用输出变量“Result”！";
        case ErrorCode::NoValue:
            return "变量“%s”没有值！";
        case ErrorCode::DivisionByZero:
            return "除数不能为零！";
        case ErrorCode::OutsideDomain:
            return "函数“%s”的参数超出范围！";
        case ErrorCode::Factorial:
            return "阶乘只能用于0到170的整数！";
        case ErrorCode::Power:
            return "乘方的结果不是实数！";
        case ErrorCode::OutOfRange:
            return "计算结果超出范围！";
        case ErrorCode::NotANumber:
            return "文本“%s”不能转换成数值！";
    }
    return "";
}

}  // namespace

std::string Error::text() const {
    const std::string_view message = messageOf(code);
    const std::size_t mark = message.find('%');
    std::string result(message.substr(0, mark));
    for (std::size_t at = mark; at < message.size();) {
        switch (message[at + 1]) {
            case 's':
                result += subject;
                break;
            case 'n':
                result += std::to_string(position);
                break;
            default:
                result += std::to_string(argument);
                break;
        }
        const std::size_t next = message.find('%', at + 2);
        result += message.substr(at + 2, next - (at + 2));
        at = next;
    }
    return result;
}

}  // namespace varo::engine
