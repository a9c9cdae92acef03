#pragma once

#include "engine/error.h"
#include "engine/language/number_functions.h"
#include "engine/numbers.h"
#include "engine/text/text_call.h"
#include "engine/text/text_functions.h"
#include "engine/text/unicode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The functions of the formula language, one row of kFunctions each. To add one, write what
/// computes it (in number_functions.h or text_functions.h) and its row.
namespace varo::engine {

/// Operations on one number that are computed faster than by the C library; see kernels.h.
enum class Kernel : std::uint8_t { None, Fourth, PowerOfE, Sine, Cosine };

/// What computes a function.
struct Computation {
    enum class Kind : std::uint8_t { None, OfNumber, OfTwoNumbers, OfTexts, Condition };
    using OfNumber = double (*)(double);
    using OfTwoNumbers = double (*)(double, double);

    Kind kind = Kind::None;
    Kernel kernel = Kernel::None;  ///< then `ofNumber` is null
    OfNumber ofNumber = nullptr;
    OfTwoNumbers ofTwoNumbers = nullptr;
    TextFunction ofTexts = nullptr;
    std::string_view parameters;  ///< these and the result as FunctionInfo has them
    char result = 'a';

    constexpr Computation() = default;
    constexpr Computation(Kernel operation)
        : kind(Kind::OfNumber), kernel(operation), parameters("n"), result('n') {}
    constexpr Computation(OfNumber function)
        : kind(Kind::OfNumber), ofNumber(function), parameters("n"), result('n') {}
    constexpr Computation(OfTwoNumbers function)
        : kind(Kind::OfTwoNumbers), ofTwoNumbers(function), parameters("nn"), result('n') {}
    constexpr Computation(Kind itsKind, TextFunction function, std::string_view letters,
                          char resultLetter)
        : kind(itsKind), ofTexts(function), parameters(letters), result(resultLetter) {}
};

template <auto function, class Result, class... Parameters>
constexpr Computation textComputation(Result (*)(Parameters...)) {
    using Caller = TextCaller<Result, Parameters...>;
    return {Computation::Kind::OfTexts, &Caller::template call<function>, Caller::kParameters,
            Caller::kResult};
}

/// What computes a function that takes or gives texts.
template <auto function>
inline constexpr Computation kTextFunction = textComputation<function>(function);

/// One of two values, of which only that one is evaluated.
inline constexpr Computation kCondition{Computation::Kind::Condition, nullptr, "naa", 'a'};

/// Of a function of one number: it has no value for an argument that is not finite, so that its
/// argument need not be watched.
inline constexpr bool kNeedsFinite = true;

enum class ParameterType : std::uint8_t { Number, Text, Any };

/// A row of kFunctions.
struct FunctionInfo {
    std::string_view name;
    /// One letter per parameter: n number, t text, a any type, but the same for every a.
    std::string_view parameters;
    ParameterType result = ParameterType::Any;
    Computation computation;
    /// Why there may be no value; ErrorCode::NotANumber is about the first text.
    ErrorCode failure = ErrorCode::None;
    bool needsFinite = false;
    bool repeatsLast = false;      ///< any number of further arguments like the last
    std::uint8_t numberCount = 0;  ///< of the parameters

    /// The row of Function::Unknown.
    constexpr FunctionInfo() = default;

    /// A `+` behind the letters of the parameters repeats the last one. A row whose letters differ
    /// from what its computation takes and gives does not compile.
    consteval FunctionInfo(std::string_view itsName, std::string_view letters, char resultLetter,
                           const Computation& itsComputation,
                           ErrorCode itsFailure = ErrorCode::OutOfRange,
                           bool needsFiniteOnes = false)
        : name(itsName),
          parameters(letters.substr(0, letters.find('+'))),
          result(typeOf(resultLetter)),
          computation(itsComputation),
          failure(itsFailure),
          needsFinite(needsFiniteOnes),
          repeatsLast(parameters.size() < letters.size()),
          numberCount(
              static_cast<std::uint8_t>(std::count(parameters.begin(), parameters.end(), 'n'))) {
        const bool takesAny = computation.parameters == "t+" && letters.ends_with("t+") &&
                              letters.find_first_not_of('t') == letters.size() - 1;
        if (resultLetter != computation.result ||
            (letters != computation.parameters && !takesAny)) {
            throw "the letters are not those of the computation";
        }
    }

    /// True when there is a parameter for argument `number` (from 1).
    constexpr bool takes(std::size_t number) const {
        return number <= parameters.size() || repeatsLast;
    }

    /// The type of that parameter.
    constexpr ParameterType parameter(std::size_t number) const {
        return typeOf(number <= parameters.size() ? parameters[number - 1] : parameters.back());
    }

    /// True when numbers are all that it takes and gives, or may be for If.
    constexpr bool isOfNumbers() const {
        return computation.kind != Computation::Kind::OfTexts &&
               computation.kind != Computation::Kind::None;
    }

  private:
    static constexpr ParameterType typeOf(char letter) {
        return letter == 'n'   ? ParameterType::Number
               : letter == 't' ? ParameterType::Text
                               : ParameterType::Any;
    }
};

/// The name, the parameters, the result, what computes it, and if that may fail in another way than
/// by a number that is too large: why.
inline constexpr auto kFunctions = std::to_array<FunctionInfo>({
    {},  // Function::Unknown
    {"sin", "n", 'n', Kernel::Sine},
    {"cos", "n", 'n', Kernel::Cosine},
    {"tan", "n", 'n', tangent, ErrorCode::OutOfRange, kNeedsFinite},
    {"arcsin", "n", 'n', arcSine, ErrorCode::OutsideDomain, kNeedsFinite},
    {"arccos", "n", 'n', arcCosine, ErrorCode::OutsideDomain, kNeedsFinite},
    {"arctan", "n", 'n', arcTangent},
    {"arcctan", "n", 'n', arcCotangent},
    {"ctan", "n", 'n', arcCotangent},
    {"sqrt", "n", 'n', squareRoot, ErrorCode::OutsideDomain, kNeedsFinite},
    {"ln", "n", 'n', naturalLogarithm, ErrorCode::OutsideDomain, kNeedsFinite},
    {"log", "n", 'n', decimalLogarithm, ErrorCode::OutsideDomain, kNeedsFinite},
    {"int", "n", 'n', integerPart, ErrorCode::OutOfRange, kNeedsFinite},
    {"deci", "n", 'n', fractionalPart, ErrorCode::OutOfRange, kNeedsFinite},
    {"preci", "nn", 'n', roundDecimals},
    {"mod", "nn", 'n', modulo, ErrorCode::DivisionByZero},
    {"R2S", "nn", 't', kTextFunction<formatRounded>},
    {"S2R", "t", 'n', kTextFunction<parseNumber>, ErrorCode::NotANumber},
    {"StrCase", "tn", 't', kTextFunction<changeCase>},
    {"StrCat", "tt+", 't', kTextFunction<concatenate>},
    {"StrSub", "tnnn", 't', kTextFunction<subText>},
    {"Left", "tn", 't', kTextFunction<leftText>},
    {"Right", "tn", 't', kTextFunction<rightText>},
    {"StrSubN", "ttn", 't', kTextFunction<piece>},
    {"StrLen", "t", 'n', kTextFunction<characterCount>},
    {"StrFind", "ttn", 'n', kTextFunction<findText>},
    {"StrFindN", "tt", 'n', kTextFunction<countText>},
    {"StrMismatch", "ttnnn", 'n', kTextFunction<countMatching>},
    {"StrTrim", "ttn", 't', kTextFunction<trimText>},
    {"StrTrimS", "t", 't', kTextFunction<trimBlanks>},
    {"StrReplace", "tttnn", 't', kTextFunction<replaceText>},
    {"StrDelete", "tt", 't', kTextFunction<deleteText>},
    {"StrInsert", "ttn", 't', kTextFunction<insertText>},
    {"If", "naa", 'a', kCondition},
});

inline constexpr std::size_t kFunctionCount = kFunctions.size();

/// The index of a row of kFunctions.
enum class Function : std::uint8_t { Unknown };

constexpr const FunctionInfo& infoOf(Function function) {
    return kFunctions[static_cast<std::size_t>(function)];
}

}  // namespace varo::engine
