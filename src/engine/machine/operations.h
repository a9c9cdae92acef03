#pragma once

#include "engine/error.h"
#include "engine/language/vocabulary.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

/// What the operators and functions do to numbers. Wherever the language has no value, the result
/// is not finite; explain() then tells why. Arguments are finite unless said otherwise.
namespace varo::engine {

/// The operations on one number. Those of operators have names; the functions follow.
enum class Unary : std::uint8_t {
    Factorial,
    Not,
    Truth,       ///< 1 for true, 0 for false
    Square,      ///< x^2
    Cube,        ///< x^3
    Fourth,      ///< x^4
    SquareRoot,  ///< x^0.5
    PowerOfE,    ///< e^x, where e is the constant that `exp` stands for
};

inline constexpr std::size_t kUnaryFunctions = static_cast<std::size_t>(Unary::PowerOfE) + 1;
inline constexpr std::size_t kUnaryCount = kUnaryFunctions + kFunctionCount;

constexpr Unary unaryOf(Function function) {
    return static_cast<Unary>(kUnaryFunctions + static_cast<std::size_t>(function));
}

/// The function that an operation is; Function::Unknown for those of operators.
constexpr Function functionOf(Unary operation) {
    const auto index = static_cast<std::size_t>(operation);
    return index < kUnaryFunctions ? Function::Unknown
                                   : static_cast<Function>(index - kUnaryFunctions);
}

constexpr bool isOfNumber(Function function) {
    return infoOf(function).computation.kind == Computation::Kind::OfNumber;
}
constexpr bool isOfTwoNumbers(Function function) {
    return infoOf(function).computation.kind == Computation::Kind::OfTwoNumbers;
}

/// False for the numbers of Unary that belong to functions of anything but one number.
constexpr bool exists(Unary operation) {
    return static_cast<std::size_t>(operation) < kUnaryFunctions ||
           isOfNumber(functionOf(operation));
}

constexpr Kernel kernelOf(Unary operation) {
    return operation == Unary::Fourth     ? Kernel::Fourth
           : operation == Unary::PowerOfE ? Kernel::PowerOfE
                                          : infoOf(functionOf(operation)).computation.kernel;
}

/// By how much the natural logarithm of kE, which is a double, falls short of 1.
inline constexpr double kLogarithmShortfall = 5.3182377066058914e-17;

double factorial(double value);
double power(double base, double exponent);

/// The value of a kernel, from the C library where the kernel has none; see kernels.h.
template <Kernel kernel>
double kernelValue(double x);

/// `x op y` for the operators from Operator::Add to Operator::GreaterOrSame.
template <Operator op>
double apply(double x, double y) {
    if constexpr (op == Operator::Add) {
        return x + y;
    } else if constexpr (op == Operator::Subtract) {
        return x - y;
    } else if constexpr (op == Operator::Multiply) {
        return x * y;
    } else if constexpr (op == Operator::Divide) {
        return x / y;
    } else if constexpr (op == Operator::Power) {
        return power(x, y);
    } else if constexpr (op == Operator::Same) {
        return x == y ? 1 : 0;
    } else if constexpr (op == Operator::Different) {
        return x != y ? 1 : 0;
    } else if constexpr (op == Operator::Less) {
        return x < y ? 1 : 0;
    } else if constexpr (op == Operator::LessOrSame) {
        return x <= y ? 1 : 0;
    } else if constexpr (op == Operator::Greater) {
        return x > y ? 1 : 0;
    } else {
        static_assert(op == Operator::GreaterOrSame);
        return x >= y ? 1 : 0;
    }
}

template <Unary operation>
double apply(double x) {
    if constexpr (operation == Unary::Factorial) {
        return factorial(x);
    } else if constexpr (operation == Unary::Not) {
        return x == 0 ? 1 : 0;
    } else if constexpr (operation == Unary::Truth) {
        return x != 0 ? 1 : 0;
    } else if constexpr (operation == Unary::Square) {
        return x * x;
    } else if constexpr (operation == Unary::Cube) {
        return x * x * x;
    } else if constexpr (operation == Unary::SquareRoot) {
        return std::sqrt(x) + 0.0;  // the power of -0 is 0
    } else if constexpr (kernelOf(operation) != Kernel::None) {
        return kernelValue<kernelOf(operation)>(x);
    } else {
        return infoOf(functionOf(operation)).computation.ofNumber(x);
    }
}

/// A function of two numbers.
template <Function function>
double apply(double x, double y) {
    return infoOf(function).computation.ofTwoNumbers(x, y);
}

/// True for the operations whose result may be finite although an argument is not, so that the
/// argument has to be looked at.
constexpr bool hidesInfinity(Operator op) {
    return op == Operator::Divide || op == Operator::Power || isRelation(op);
}
constexpr bool hidesInfinity(Unary operation) {
    if (functionOf(operation) == Function::Unknown) {
        return operation == Unary::Not || operation == Unary::Truth;
    }
    return kernelOf(operation) == Kernel::None && !infoOf(functionOf(operation)).needsFinite;
}

/// The same for an operation that is known only when the program runs.
double apply(Operator op, double x, double y);
double apply(Unary operation, double x);

/// Why an operation has no finite value for finite arguments.
ErrorCode explain(Operator op, double x, double y);
ErrorCode explain(Unary operation);

}  // namespace varo::engine
