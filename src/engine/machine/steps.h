#pragma once

#include "engine/machine/instruction.h"
#include "engine/machine/operations.h"

#include <array>
#include <cstddef>
#include <utility>

/// The meaning of the instructions on numbers, once for every machine that executes them.
namespace varo::engine {

/// A number that is finite because it was given so: a variable or a constant.
struct Leaf {
    double value;
};

constexpr double valueOf(double computed) {
    return computed;
}
constexpr double valueOf(Leaf leaf) {
    return leaf.value;
}

/// True for the instructions that resultOf() can tell the result of.
constexpr bool givesNumber(Opcode opcode) {
    if (opcode < opcodeOf(Shape::AVV, {}, {})) {
        return opcode % kOpcodesPerShape <= static_cast<Opcode>(Operator::GreaterOrSame);
    }
    if (isUnary(opcode)) {
        return exists(unaryOf(opcode));
    }
    if (isCall(opcode)) {
        return isOfTwoNumbers(functionOf(opcode));
    }
    return opcode <= opcodeOf(Other::LoadTemporary);
}

/// The apply() of rows that do not look at every result: what may be hidden by a finite one is
/// passed to `Row::require`, which takes note when it is not finite.
template <class Row>
struct WatchedRow {
    template <Operator op, class X, class Y>
    double apply(X x, Y y) {
        if constexpr (hidesInfinity(op)) {
            watch(y);
            if constexpr (op != Operator::Divide) {
                watch(x);
            }
        }
        return engine::apply<op>(valueOf(x), valueOf(y));
    }
    template <Unary operation, class X>
    double apply(X x) {
        if constexpr (hidesInfinity(operation)) {
            watch(x);
        }
        return engine::apply<operation>(valueOf(x));
    }
    template <Function function>
    double apply(double x, double y) {
        watch(x);
        watch(y);
        return engine::apply<function>(x, y);
    }

  private:
    void watch(Leaf) {}
    void watch(double value) { static_cast<Row*>(this)->require(value); }
};

/// What an instruction with one operator puts into the accumulator.
template <Shape shape, Operator op, class Row>
double resultOfOne(Row& row, const Instruction& at) {
    if constexpr (shape == Shape::AV) {
        return row.template apply<op>(row.accumulator(), row.variable(at.a));
    } else if constexpr (shape == Shape::AK) {
        return row.template apply<op>(row.accumulator(), Leaf{at.number});
    } else if constexpr (shape == Shape::VA) {
        return row.template apply<op>(row.variable(at.a), row.accumulator());
    } else if constexpr (shape == Shape::KA) {
        return row.template apply<op>(Leaf{at.number}, row.accumulator());
    } else if constexpr (shape == Shape::TA) {
        return row.template apply<op>(row.temporary(at.a), row.accumulator());
    } else if constexpr (shape == Shape::AT) {
        return row.template apply<op>(row.accumulator(), row.temporary(at.a));
    } else if constexpr (shape == Shape::VV) {
        return row.template apply<op>(row.variable(at.a), row.variable(at.b));
    } else if constexpr (shape == Shape::VK) {
        return row.template apply<op>(row.variable(at.a), Leaf{at.number});
    } else {
        static_assert(shape == Shape::KV);
        return row.template apply<op>(Leaf{at.number}, row.variable(at.a));
    }
}

template <Operator first, Operator second, class Row, class X, class Y, class Z>
double fromLeft(Row& row, X x, Y y, Z z) {
    return row.template apply<second>(row.template apply<first>(x, y), z);
}

template <Operator first, Operator second, class Row, class X, class Y, class Z>
double fromRight(Row& row, X x, Y y, Z z) {
    return row.template apply<first>(x, row.template apply<second>(y, z));
}

/// What an instruction with two operators puts into the accumulator.
template <Shape shape, Operator f, Operator s, class Row>
double resultOfTwo(Row& row, const Instruction& at) {
    const auto k = [&at] { return Leaf{at.number}; };
    const auto v = [&row](std::uint16_t index) { return row.variable(index); };
    if constexpr (shape == Shape::AVV) {
        return fromLeft<f, s>(row, row.accumulator(), v(at.a), v(at.b));
    } else if constexpr (shape == Shape::AVK) {
        return fromLeft<f, s>(row, row.accumulator(), v(at.a), k());
    } else if constexpr (shape == Shape::AKV) {
        return fromLeft<f, s>(row, row.accumulator(), k(), v(at.a));
    } else if constexpr (shape == Shape::VVV) {
        return fromLeft<f, s>(row, v(at.a), v(at.b), v(at.c));
    } else if constexpr (shape == Shape::VVK) {
        return fromLeft<f, s>(row, v(at.a), v(at.b), k());
    } else if constexpr (shape == Shape::VKV) {
        return fromLeft<f, s>(row, v(at.a), k(), v(at.b));
    } else if constexpr (shape == Shape::KVV) {
        return fromLeft<f, s>(row, k(), v(at.a), v(at.b));
    } else if constexpr (shape == Shape::A_VV) {
        return fromRight<f, s>(row, row.accumulator(), v(at.a), v(at.b));
    } else if constexpr (shape == Shape::A_VK) {
        return fromRight<f, s>(row, row.accumulator(), v(at.a), k());
    } else if constexpr (shape == Shape::A_KV) {
        return fromRight<f, s>(row, row.accumulator(), k(), v(at.a));
    } else if constexpr (shape == Shape::V_VV) {
        return fromRight<f, s>(row, v(at.a), v(at.b), v(at.c));
    } else if constexpr (shape == Shape::V_VK) {
        return fromRight<f, s>(row, v(at.a), v(at.b), k());
    } else if constexpr (shape == Shape::V_KV) {
        return fromRight<f, s>(row, v(at.a), k(), v(at.b));
    } else if constexpr (shape == Shape::VV_A) {
        return fromLeft<f, s>(row, v(at.a), v(at.b), row.accumulator());
    } else if constexpr (shape == Shape::VK_A) {
        return fromLeft<f, s>(row, v(at.a), k(), row.accumulator());
    } else if constexpr (shape == Shape::KV_A) {
        return fromLeft<f, s>(row, k(), v(at.a), row.accumulator());
    } else {
        static_assert(shape == Shape::T_AV);
        return fromRight<f, s>(row, row.temporary(at.b), row.accumulator(), v(at.a));
    }
}

/// What the instruction `at`, whose opcode is known, puts into the accumulator of `row`.
///
/// A row has accumulator(), temporary(index), variable(index) and apply<operation>(operands...),
/// which takes a double for what was computed and a Leaf for what is known to be finite.
template <Opcode opcode, class Row>
double resultOf(Row& row, const Instruction& at) {
    static_assert(givesNumber(opcode));
    if constexpr (opcode < opcodeOf(Shape::AVV, {}, {})) {
        return resultOfOne<static_cast<Shape>(opcode / kOpcodesPerShape),
                           static_cast<Operator>(opcode % kOpcodesPerShape)>(row, at);
    } else if constexpr (opcode < kUnaryOpcodes) {
        return resultOfTwo<static_cast<Shape>(opcode / kOpcodesPerShape),
                           static_cast<Operator>(opcode % kOpcodesPerShape / 4),
                           static_cast<Operator>(opcode % 4)>(row, at);
    } else if constexpr (isOfVariable(opcode)) {
        return row.template apply<unaryOf(opcode)>(row.variable(at.a));
    } else if constexpr (isUnary(opcode)) {
        return row.template apply<unaryOf(opcode)>(row.accumulator());
    } else if constexpr (isCall(opcode)) {
        return row.template apply<functionOf(opcode)>(row.temporary(at.a), row.accumulator());
    } else if constexpr (opcode == opcodeOf(Other::LoadVariable)) {
        return row.variable(at.index).value;
    } else if constexpr (opcode == opcodeOf(Other::LoadConstant)) {
        return at.number;
    } else {
        static_assert(opcode == opcodeOf(Other::LoadTemporary));
        return row.temporary(at.a);
    }
}

/// A table of what `Maker::make<opcode>()`, a Maker::Step, is for each opcode.
template <class Maker, std::size_t... opcode>
constexpr auto tableOfSteps(std::index_sequence<opcode...>) {
    return std::array<typename Maker::Step, sizeof...(opcode)>{
        Maker::template make<static_cast<Opcode>(opcode)>()...};
}
template <class Maker>
constexpr auto tableOfSteps() {
    return tableOfSteps<Maker>(std::make_index_sequence<kOpcodeCount>());
}

}  // namespace varo::engine
