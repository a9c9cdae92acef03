#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

/// Calls of functions that take or give texts, by one signature for all of them.
namespace varo::engine {

/// The arguments of a call: its texts and its numbers, each in their order.
struct TextCall {
    std::span<const std::string_view> texts;
    const double* numbers;
    std::size_t limit;  ///< the most bytes that a new text may have
};

/// What a call gives: no value, a number, a text that is part of an argument, or a new text.
using TextAnswer = std::variant<std::monostate, double, std::string_view, std::string>;

using TextFunction = TextAnswer (*)(const TextCall& call);

/// A parameter of functions that stop before their result becomes longer than that.
struct ByteLimit {
    std::size_t bytes;
};

/// Makes a TextFunction of a C++ function. Its parameters are, in this order: texts as
/// std::string_view, or all texts as one span of these; numbers as double, or as bool if they mean
/// a truth; a ByteLimit. It returns a number, a part of an argument as std::string_view, a new text
/// as std::string, or one of these as std::optional.
template <class Result, class... Parameters>
class TextCaller {
    using AllTexts = std::span<const std::string_view>;

    template <class Parameter>
    static constexpr bool kIsArgument = !std::is_same_v<Parameter, ByteLimit>;
    static constexpr std::array kLetters{std::is_arithmetic_v<Parameters> ? 'n' : 't' ...};

  public:
    /// The parameters and the result as FunctionInfo has them; "t+" for a span.
    static constexpr std::string_view kParameters =
        (std::is_same_v<Parameters, AllTexts> || ...)
            ? std::string_view("t+")
            : std::string_view(kLetters.data(), (kIsArgument<Parameters> + ...));
    static constexpr char kResult =
        std::is_arithmetic_v<Result> || std::is_same_v<Result, std::optional<double>> ? 'n' : 't';

    template <Result (*function)(Parameters...)>
    static TextAnswer call(const TextCall& call) {
        std::size_t texts = 0;
        std::size_t numbers = 0;
        // In braces, arguments are taken from left to right.
        const std::tuple<Parameters...> arguments{take<Parameters>(call, texts, numbers)...};
        return answer(std::apply(function, arguments));
    }

  private:
    template <class Parameter>
    static Parameter take(const TextCall& call, std::size_t& texts, std::size_t& numbers) {
        if constexpr (std::is_same_v<Parameter, std::string_view>) {
            return call.texts[texts++];
        } else if constexpr (std::is_same_v<Parameter, AllTexts>) {
            return call.texts;
        } else if constexpr (std::is_same_v<Parameter, bool>) {
            return call.numbers[numbers++] != 0;
        } else if constexpr (std::is_same_v<Parameter, double>) {
            return call.numbers[numbers++];
        } else {
            static_assert(std::is_same_v<Parameter, ByteLimit>);
            return {call.limit};
        }
    }

    template <class Value>
    static TextAnswer answer(Value value) {
        if constexpr (std::is_arithmetic_v<Value>) {
            return static_cast<double>(value);
        } else {
            return value;
        }
    }

    template <class Value>
    static TextAnswer answer(std::optional<Value> value) {
        return value ? TextAnswer(*std::move(value)) : TextAnswer();
    }
};

}  // namespace varo::engine
