#include "engine/machine/text_machine.h"

#include "engine/numbers.h"
#include "engine/text/text_functions.h"
#include "engine/text/unicode.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace varo::engine {
namespace {

constexpr std::size_t kFreeBudget = std::size_t{16} << 20;
constexpr std::size_t kBudgetPerByte = 64;

bool holds(Operator op, std::string_view left, std::string_view right) {
    switch (op) {
        case Operator::Like:
            return contains(left, right);
        case Operator::Different:
            return left != right;
        // UTF-8 orders as its code points do.
        case Operator::Less:
            return left < right;
        case Operator::LessOrSame:
            return left <= right;
        case Operator::Greater:
            return left > right;
        case Operator::GreaterOrSame:
            return left >= right;
        default:
            return left == right;
    }
}

}  // namespace

TextMachine::TextMachine(const Code& code, std::span<const std::string> values)
    : code_(code), values_(values) {
    std::size_t input = code.literals.size() + code.instructions.size();
    for (const std::string& value : values) {
        input += value.size();
    }
    budget_ = kFreeBudget + kBudgetPerByte * input;
    stack_.reserve(code.textDepth);
}

void TextMachine::pushLiteral(std::uint32_t index) {
    const LiteralSpan& span = code_.literalSpans[index];
    stack_.push_back(code_.literals.substr(span.first, span.size));
}

ErrorCode TextMachine::relation(Operator op, double& result) {
    const std::string_view right = pop();
    const std::string_view left = pop();
    result = holds(op, left, right) ? 1 : 0;
    return spend(left.size() + right.size()) ? ErrorCode::None : ErrorCode::OutOfRange;
}

ErrorCode TextMachine::call(Function function, std::uint32_t arguments, const double* numbers,
                            double& result, std::string& subject) {
    const FunctionInfo& info = infoOf(function);
    const auto numberCount = std::count(info.parameters.begin(), info.parameters.end(), 'n');
    const std::size_t textCount = arguments - static_cast<std::size_t>(numberCount);
    const Arguments given{std::span(stack_).last(textCount), numbers};
    for (const std::string_view text : given.texts) {
        if (!spend(text.size())) {
            return ErrorCode::OutOfRange;
        }
    }
    if (info.result == 'n') {
        const ErrorCode error = callToNumber(function, given, result, subject);
        stack_.resize(stack_.size() - textCount);
        return error;
    }
    std::string_view text;
    const ErrorCode error = callToText(function, given, text);
    stack_.resize(stack_.size() - textCount);
    stack_.push_back(text);
    return error;
}

ErrorCode TextMachine::callToNumber(Function function, const Arguments& arguments, double& result,
                                    std::string& subject) {
    const auto& [texts, numbers] = arguments;
    switch (function) {
        case Function::S2R: {
            const std::optional<double> number = parseNumber(texts[0]);
            if (!number) {
                subject = texts[0];
                return ErrorCode::NotANumber;
            }
            result = *number;
            break;
        }
        case Function::StrLen:
            result = static_cast<double>(characterCount(texts[0]));
            break;
        case Function::StrFind:
            result = findText(texts[0], texts[1], numbers[0]);
            break;
        case Function::StrFindN:
            result = countText(texts[0], texts[1]);
            break;
        default:  // StrMismatch
            result = countMatching(texts[0], texts[1], numbers[0], numbers[1], numbers[2] != 0);
            break;
    }
    return ErrorCode::None;
}

ErrorCode TextMachine::callToText(Function function, const Arguments& arguments,
                                  std::string_view& result) {
    const auto& [texts, numbers] = arguments;
    switch (function) {
        case Function::StrSub:
            result = subText(texts[0], numbers[0], numbers[1], numbers[2] != 0);
            return ErrorCode::None;
        case Function::Left:
            result = leftText(texts[0], numbers[0]);
            return ErrorCode::None;
        case Function::Right:
            result = rightText(texts[0], numbers[0]);
            return ErrorCode::None;
        case Function::StrSubN:
            result = piece(texts[0], texts[1], numbers[0]);
            return ErrorCode::None;
        case Function::StrTrim:
            result = trimText(texts[0], texts[1], numbers[0] != 0);
            return ErrorCode::None;
        case Function::StrTrimS:
            result = trimBlanks(texts[0]);
            return ErrorCode::None;
        case Function::R2S:
            result = keep(formatRounded(numbers[0], numbers[1]));
            break;
        case Function::StrCase:
            result = keep(changeCase(texts[0], numbers[0] != 0));
            break;
        case Function::StrInsert:
            result = keep(insertText(texts[0], texts[1], numbers[0]));
            break;
        case Function::StrDelete:
            return replace(texts[0], texts[1], {}, 0, false, result);
        case Function::StrReplace:
            return replace(texts[0], texts[1], texts[2], numbers[0], numbers[1] != 0, result);
        default:  // StrCat
            result = concatenate(texts);
            break;
    }
    return spend(result.size()) ? ErrorCode::None : ErrorCode::OutOfRange;
}

std::string_view TextMachine::concatenate(std::span<const std::string_view> texts) {
    std::size_t size = 0;
    for (const std::string_view text : texts) {
        size += text.size();
    }
    std::string joined;
    joined.reserve(size);
    for (const std::string_view text : texts) {
        joined += text;
    }
    return keep(std::move(joined));
}

ErrorCode TextMachine::replace(std::string_view text, std::string_view wanted,
                               std::string_view replacement, double index, bool ignoreCase,
                               std::string_view& result) {
    std::string replaced;
    if (!replaceText(text, wanted, replacement, index, ignoreCase, budget_, replaced)) {
        return ErrorCode::OutOfRange;
    }
    result = keep(std::move(replaced));
    spend(result.size());
    return ErrorCode::None;
}

bool TextMachine::spend(std::size_t bytes) {
    const bool enough = bytes <= budget_;
    budget_ -= enough ? bytes : budget_;
    return enough;
}

std::string_view TextMachine::keep(std::string text) {
    return results_.emplace_back(std::move(text));
}

std::string_view TextMachine::pop() {
    const std::string_view text = stack_.back();
    stack_.pop_back();
    return text;
}

}  // namespace varo::engine
