#pragma once

#include "engine/error.h"
#include "engine/language/vocabulary.h"
#include "engine/numbers.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

/// What the operators and functions do to numbers. Wherever the language has no value, the result
/// is not finite; explain() then tells why. Arguments are finite unless said otherwise.
namespace varo::engine {

/// The operations on one number. Those from Sin on are functions, in the order of Function.
enum class Unary : std::uint8_t {
    Factorial,
    Not,
    Truth,       ///< 1 for true, 0 for false
    Square,      ///< x^2
    Cube,        ///< x^3
    Fourth,      ///< x^4
    SquareRoot,  ///< x^0.5
    PowerOfE,    ///< e^x, where e is the constant that `exp` stands for
    Sin,
    Cos,
    Tan,
    Arcsin,
    Arccos,
    Arctan,
    Arcctan,
    Ctan,
    Sqrt,
    Ln,
    Log,
    Int,
    Deci,
};

constexpr Unary unaryOf(Function function) {
    return static_cast<Unary>(static_cast<std::uint8_t>(Unary::Sin) +
                              static_cast<std::uint8_t>(function));
}

/// The function that an operation is; Function::Unknown for the others.
constexpr Function functionOf(Unary operation) {
    return operation < Unary::Sin ? Function::Unknown
                                  : static_cast<Function>(static_cast<std::uint8_t>(operation) -
                                                          static_cast<std::uint8_t>(Unary::Sin));
}

/// By how much the natural logarithm of kE, which is a double, falls short of 1.
inline constexpr double kLogarithmShortfall = 5.3182377066058914e-17;

double factorial(double value);
double power(double base, double exponent);
double modulo(double dividend, double divisor);

/// The value of an operation with a kernel; see kernels.h.
template <Unary operation>
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
    } else if constexpr (operation == Unary::Fourth || operation == Unary::PowerOfE ||
                         operation == Unary::Sin || operation == Unary::Cos) {
        return kernelValue<operation>(x);
    } else if constexpr (operation == Unary::Tan) {
        return std::tan(x);
    } else if constexpr (operation == Unary::Arcsin) {
        return std::asin(x);
    } else if constexpr (operation == Unary::Arccos) {
        return std::acos(x);
    } else if constexpr (operation == Unary::Arctan) {
        return std::atan(x);
    } else if constexpr (operation == Unary::Arcctan || operation == Unary::Ctan) {
        // The angle of the point (x, 1): keeps its precision for large x, and lies in (0, π).
        return std::atan2(1.0, x);
    } else if constexpr (operation == Unary::Sqrt) {
        return std::sqrt(x);
    } else if constexpr (operation == Unary::Ln) {
        return std::log(x);
    } else if constexpr (operation == Unary::Log) {
        return std::log10(x);
    } else if constexpr (operation == Unary::Int) {
        return std::trunc(x);
    } else {
        static_assert(operation == Unary::Deci);
        return x - std::trunc(x);
    }
}

/// Function::Mod and Function::Preci.
template <Function function>
double apply(double x, double y) {
    if constexpr (function == Function::Mod) {
        return modulo(x, y);
    } else {
        static_assert(function == Function::Preci);
        return roundDecimals(x, y);
    }
}

/// True for the operations whose result may be finite although an argument is not, so that the
/// argument has to be looked at.
constexpr bool hidesInfinity(Operator op) {
    return op == Operator::Divide || op == Operator::Power || isRelation(op);
}
constexpr bool hidesInfinity(Unary operation) {
    return operation == Unary::Not || operation == Unary::Truth || operation == Unary::Arctan ||
           operation == Unary::Arcctan || operation == Unary::Ctan;
}

/// The same for an operation that is known only when the program runs.
double apply(Operator op, double x, double y);
double apply(Unary operation, double x);

/// Why an operation has no finite value for finite arguments.
ErrorCode explain(Operator op, double x, double y);
ErrorCode explain(Unary operation);

}  // namespace varo::engine
