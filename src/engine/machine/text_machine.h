#pragma once

#include "engine/error.h"
#include "engine/machine/instruction.h"

#include <cstddef>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varo::engine {

/// The stack of texts beside the accumulator of numbers, for one evaluation.
///
/// It limits the work: an evaluation that handles more text than a generous multiple of its input
/// (nested replacing can multiply it without end) fails with ErrorCode::OutOfRange.
class TextMachine {
  public:
    /// `values` holds the texts of the text variables by their index. Both must outlive the
    /// machine.
    TextMachine(const Code& code, std::span<const std::string> values);

    void pushLiteral(std::uint32_t index);
    void pushVariable(std::uint32_t index) { stack_.push_back(values_[index]); }

    /// Takes two texts away; the value of their relation.
    ErrorCode relation(Operator op, double& result);

    /// Calls a text function with so many arguments: its texts are taken away, its numbers stand at
    /// `numbers`. A text result is pushed, a number is put into `result`. `subject` becomes the
    /// text of ErrorCode::NotANumber.
    ErrorCode call(Function function, std::uint32_t arguments, const double* numbers,
                   double& result, std::string& subject);

    /// True when a text is left on the stack.
    bool hasResult() const { return !stack_.empty(); }

    /// The text on top.
    std::string_view top() const { return stack_.back(); }

  private:
    bool spend(std::size_t bytes);
    std::string_view keep(std::string text);
    std::string_view pop();

    const Code& code_;
    std::span<const std::string> values_;
    std::vector<std::string_view> stack_;
    std::deque<std::string> results_;  // what the stack points to, besides literals and values
    std::size_t budget_;
};

}  // namespace varo::engine
