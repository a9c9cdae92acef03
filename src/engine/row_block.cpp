#include "engine/row_block.h"

#include "engine/kernels.h"
#include "engine/steps.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

// The rows of a loop do not depend on one another. (Other compilers find out when it runs.)
#if defined(__GNUC__) && !defined(__clang__)
#define VARO_EACH_ROW _Pragma("GCC ivdep") for
#else
#define VARO_EACH_ROW for
#endif

namespace varo::engine {
namespace {

using Registers = RowBlock::Registers;

/// One row of a block, as the meaning of the instructions sees it.
struct Row {
    const Registers& registers;
    std::size_t index;

    double accumulator() const { return registers.accumulator[index]; }
    double temporary(std::uint16_t number) const {
        return registers.temporaries[number * RowBlock::kRows + index];
    }
    Leaf variable(std::uint32_t number) const { return {registers.variables[number][index]}; }

    template <Operator op, class X, class Y>
    double apply(X x, Y y) const {
        if constexpr (hidesInfinity(op)) {
            require(y);
            if constexpr (op != Operator::Divide) {
                require(x);
            }
        }
        return engine::apply<op>(engine::valueOf(x), engine::valueOf(y));
    }
    template <Unary operation, class X>
    double apply(X x) const {
        if constexpr (hidesInfinity(operation)) {
            require(x);
        }
        return engine::apply<operation>(engine::valueOf(x));
    }
    template <Function function>
    double apply(double x, double y) const {
        require(y);
        return engine::apply<function>(x, y);
    }

    void require(Leaf) const {}
    void require(double value) const { registers.poison[index] += value - value; }
};

template <Opcode opcode>
[[gnu::always_inline]] inline void computeRows(const Registers& registers, const Instruction& at) {
    const Registers known = registers;
    VARO_EACH_ROW(std::size_t i = 0; i < known.rows; ++i) {
        const Row row{known, i};
        known.accumulator[i] = valueOf<opcode>(row, at);
    }
}

template <Opcode opcode>
void plainStep(Registers& registers, const Instruction& at) {
    computeRows<opcode>(registers, at);
}

template <Opcode opcode>
VARO_FUSED void wideStep(Registers& registers, const Instruction& at) {
    computeRows<opcode>(registers, at);
}

/// The values of a kernel for all rows; false when some of the arguments need the library.
template <Unary operation, class Arithmetic>
[[gnu::always_inline]] inline bool computeRows(const double* arguments, double* values,
                                               std::size_t rows) {
    std::uint64_t unusable = 0;
    VARO_EACH_ROW(std::size_t i = 0; i < rows; ++i) {
        double value = 0;
        const bool usable = compute<operation, Arithmetic>(arguments[i], value);
        values[i] = value;
        unusable |= usable ? std::uint64_t{0} : std::uint64_t{1};
    }
    return unusable == 0;
}

template <Unary operation, class Arithmetic>
[[gnu::always_inline]] inline void useKernel(Registers& registers, const double* arguments) {
    double* const values = registers.spare;
    if (!computeRows<operation, Arithmetic>(arguments, values, registers.rows)) {
        std::transform(arguments, arguments + registers.rows, values, kernelValue<operation>);
    }
    std::swap(registers.accumulator, registers.spare);
}

template <Opcode opcode>
const double* argumentsOf(const Registers& registers, const Instruction& at) {
    return isOfVariable(opcode) ? registers.variables[at.a] : registers.accumulator;
}

template <Opcode opcode>
void plainKernelStep(Registers& registers, const Instruction& at) {
    useKernel<unaryOf(opcode), PlainArithmetic>(registers, argumentsOf<opcode>(registers, at));
}

template <Opcode opcode>
VARO_FUSED void fusedKernelStep(Registers& registers, const Instruction& at) {
    useKernel<unaryOf(opcode), FusedArithmetic>(registers, argumentsOf<opcode>(registers, at));
}

template <bool fused>
struct MakeStep {
    using Step = void (*)(Registers& registers, const Instruction& at);

    template <Opcode opcode>
    static constexpr Step make() {
        if constexpr (isUnary(opcode) && hasKernel(unaryOf(opcode))) {
            return fused ? fusedKernelStep<opcode> : plainKernelStep<opcode>;
        } else if constexpr (givesNumber(opcode)) {
            return fused ? wideStep<opcode> : plainStep<opcode>;
        } else {
            return nullptr;
        }
    }
};

template <bool fused>
constexpr auto kSteps = tableOfSteps<MakeStep<fused>>();

void store(const Registers& registers, std::uint32_t temporary) {
    std::copy_n(registers.accumulator, registers.rows,
                registers.temporaries + temporary * RowBlock::kRows);
}

/// The instruction after a jump; null when the rows part there.
const Instruction* jump(const Registers& registers, const Instruction& at) {
    const Instruction* const target = &at + at.index;
    if (at.opcode == opcodeOf(Other::Jump)) {
        return target;
    }
    std::size_t trueRows = 0;
    for (std::size_t i = 0; i < registers.rows; ++i) {
        const double condition = registers.accumulator[i];
        registers.poison[i] += condition - condition;
        trueRows += condition != 0 ? 1 : 0;
    }
    if (trueRows != 0 && trueRows != registers.rows) {
        return nullptr;
    }
    const bool jumps = (trueRows != 0) == (at.opcode == opcodeOf(Other::JumpIfTrue));
    return jumps ? target : &at + 1;
}

/// Puts the results where they belong; false when some are not finite.
[[gnu::always_inline]] inline bool finishRows(const Registers& registers, double* results) {
    const Registers known = registers;
    double failures = 0;
    VARO_EACH_ROW(std::size_t i = 0; i < known.rows; ++i) {
        const double result = known.accumulator[i] - known.poison[i];
        results[i] = result;
        failures = result - result == 0 ? failures : 1;
    }
    return failures == 0;
}

bool finishPlainly(const Registers& registers, double* results) {
    return finishRows(registers, results);
}

VARO_FUSED bool finishWide(const Registers& registers, double* results) {
    return finishRows(registers, results);
}

}  // namespace

RowBlock::RowBlock(const Code& code, std::span<const Column> columns)
    : code_(code), columns_(columns) {
    const auto constants = static_cast<std::size_t>(std::count_if(
        columns.begin(), columns.end(), [](const Column& column) { return !column.varies(); }));
    memory_.resize(kRows * (3 + code.temporaries + constants));
    double* at = memory_.data();
    const auto take = [&at](std::size_t numbers) { return std::exchange(at, at + numbers); };
    registers_.accumulator = take(kRows);
    registers_.spare = take(kRows);
    registers_.poison = take(kRows);
    registers_.temporaries = take(kRows * code.temporaries);
    for (const Column& column : columns) {
        if (!column.varies()) {
            std::fill_n(at, kRows, column[0]);
        }
        variables_.push_back(column.varies() ? nullptr : take(kRows));
    }
    registers_.variables = variables_.data();
}

RowBlock::Outcome RowBlock::run(std::size_t first, std::span<double> results) {
    registers_.rows = results.size();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i].varies()) {
            variables_[i] = columns_[i].numbers().data() + first;
        }
    }
    std::fill_n(registers_.poison, results.size(), 0);
    const auto& steps = usesFusedArithmetic() ? kSteps<true> : kSteps<false>;
    const Instruction* at = code_.instructions.data();
    while (at->opcode != opcodeOf(Other::Return)) {
        const Opcode opcode = at->opcode % kStoresFirst;
        if (opcode != at->opcode) {
            store(registers_, storedTemporary(opcode, *at));
        }
        if (givesNumber(opcode)) {
            steps[opcode](registers_, *at);
            ++at;
        } else if (opcode == opcodeOf(Other::Store)) {
            store(registers_, at->a);
            ++at;
        } else {
            at = jump(registers_, *at);
            if (at == nullptr) {
                return Outcome::Parted;
            }
        }
    }
    const auto finish = usesFusedArithmetic() ? finishWide : finishPlainly;
    return finish(registers_, results.data()) ? Outcome::Complete : Outcome::SomeFailed;
}

}  // namespace varo::engine
