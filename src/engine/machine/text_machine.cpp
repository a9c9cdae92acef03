#include "engine/machine/text_machine.h"

#include <utility>
#include <variant>

namespace varo::engine {
namespace {

constexpr std::size_t kFreeBudget = std::size_t{16} << 20;
constexpr std::size_t kBudgetPerByte = 64;

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
    result = infoOf(op).ofTexts(left, right) ? 1 : 0;
    return spend(left.size() + right.size()) ? ErrorCode::None : ErrorCode::OutOfRange;
}

ErrorCode TextMachine::call(Function function, std::uint32_t arguments, const double* numbers,
                            double& result, std::string& subject) {
    const FunctionInfo& info = infoOf(function);
    const std::size_t textCount = arguments - info.numberCount;
    const auto texts = std::span<const std::string_view>(stack_).last(textCount);
    for (const std::string_view text : texts) {
        if (!spend(text.size())) {
            return ErrorCode::OutOfRange;
        }
    }
    TextAnswer answer = info.computation.ofTexts({texts, numbers, budget_});
    if (std::holds_alternative<std::monostate>(answer)) {
        if (info.failure == ErrorCode::NotANumber) {
            subject = texts[0];
        }
        return info.failure;
    }
    stack_.resize(stack_.size() - textCount);
    if (const double* const number = std::get_if<double>(&answer)) {
        result = *number;
    } else if (const auto* const part = std::get_if<std::string_view>(&answer)) {
        stack_.push_back(*part);
    } else {
        stack_.push_back(keep(std::get<std::string>(std::move(answer))));
        return spend(stack_.back().size()) ? ErrorCode::None : ErrorCode::OutOfRange;
    }
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
