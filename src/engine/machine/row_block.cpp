#include "engine/machine/row_block.h"

#include "engine/machine/kernels.h"
#include "engine/machine/steps.h"

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
struct Row : WatchedRow<Row> {
    const Registers& registers;
    std::size_t index;

    Row(const Registers& block, std::size_t row) : registers(block), index(row) {}

    double accumulator() const { return registers.accumulator[index]; }
    double temporary(std::uint16_t number) const { return registers.temporaries[number][index]; }
    Leaf variable(std::uint32_t number) const { return {registers.variables[number][index]}; }
    void require(double value) const { registers.poison[index] += value - value; }
};

template <Opcode opcode>
[[gnu::always_inline]] inline void computeRows(const Registers& registers, const Instruction& at) {
    const Registers known = registers;
    VARO_EACH_ROW(std::size_t i = 0; i < known.rows; ++i) {
        Row row(known, i);
        known.accumulator[i] = resultOf<opcode>(row, at);
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
template <Kernel kernel, class Arithmetic>
[[gnu::always_inline]] inline bool computeRows(const double* arguments, double* values,
                                               std::size_t rows) {
    std::uint64_t unusable = 0;
    VARO_EACH_ROW(std::size_t i = 0; i < rows; ++i) {
        double value = 0;
        const bool usable = compute<kernel, Arithmetic>(arguments[i], value);
        values[i] = value;
        unusable |= usable ? std::uint64_t{0} : std::uint64_t{1};
    }
    return unusable == 0;
}

template <Kernel kernel, class Arithmetic>
[[gnu::always_inline]] inline void useKernel(Registers& registers, const double* arguments) {
    double* const values = registers.spare;
    if (!computeRows<kernel, Arithmetic>(arguments, values, registers.rows)) {
        std::transform(arguments, arguments + registers.rows, values, kernelValue<kernel>);
    }
    std::swap(registers.accumulator, registers.spare);
}

template <Opcode opcode>
const double* argumentsOf(const Registers& registers, const Instruction& at) {
    return isOfVariable(opcode) ? registers.variables[at.a] : registers.accumulator;
}

template <Opcode opcode>
void plainKernelStep(Registers& registers, const Instruction& at) {
    useKernel<kernelOf(unaryOf(opcode)), PlainArithmetic>(registers,
                                                          argumentsOf<opcode>(registers, at));
}

template <Opcode opcode>
VARO_FUSED void fusedKernelStep(Registers& registers, const Instruction& at) {
    useKernel<kernelOf(unaryOf(opcode)), FusedArithmetic>(registers,
                                                          argumentsOf<opcode>(registers, at));
}

template <bool fused>
struct MakeStep {
    using Step = void (*)(Registers& registers, const Instruction& at);

    template <Opcode opcode>
    static constexpr Step make() {
        if constexpr (!givesNumber(opcode)) {
            return nullptr;
        } else if constexpr (isUnary(opcode) && kernelOf(unaryOf(opcode)) != Kernel::None) {
            return fused ? fusedKernelStep<opcode> : plainKernelStep<opcode>;
        } else {
            return fused ? wideStep<opcode> : plainStep<opcode>;
        }
    }
};

template <bool fused>
constexpr auto kSteps = tableOfSteps<MakeStep<fused>>();

/// The accumulator is needed no more, so that its memory and that of the temporary change places.
void store(Registers& registers, std::uint32_t temporary) {
    std::swap(registers.accumulator, registers.temporaries[temporary]);
}

/// The instruction after a jump; null when the rows diverge there.
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

/// Makes the accumulator the results; false when some are not finite.
[[gnu::always_inline]] inline bool finishRows(const Registers& registers) {
    const Registers known = registers;
    double failures = 0;
    VARO_EACH_ROW(std::size_t i = 0; i < known.rows; ++i) {
        const double result = known.accumulator[i] - known.poison[i];
        known.accumulator[i] = result;
        failures = result - result == 0 ? failures : 1;
    }
    return failures == 0;
}

bool finishPlainly(const Registers& registers) {
    return finishRows(registers);
}

VARO_FUSED bool finishWide(const Registers& registers) {
    return finishRows(registers);
}

/// Poisons the rows whose number is not finite. The first column also clears what the block before
/// left in the poison.
[[gnu::always_inline]] inline void watchRows(const Registers& registers, const double* numbers,
                                             bool isFirst) {
    double* const poison = registers.poison;
    if (isFirst) {
        VARO_EACH_ROW(std::size_t i = 0; i < registers.rows; ++i) {
            poison[i] = numbers[i] - numbers[i];
        }
        return;
    }
    VARO_EACH_ROW(std::size_t i = 0; i < registers.rows; ++i) {
        poison[i] += numbers[i] - numbers[i];
    }
}

void watchPlainly(const Registers& registers, const double* numbers, bool isFirst) {
    watchRows(registers, numbers, isFirst);
}

VARO_FUSED void watchWide(const Registers& registers, const double* numbers, bool isFirst) {
    watchRows(registers, numbers, isFirst);
}

}  // namespace

RowBlock::RowBlock(const Code& code, std::span<const Column> columns, std::size_t rows)
    : code_(code), columns_(columns) {
    const std::size_t length = std::min(rows, kRows);
    const auto constants = static_cast<std::size_t>(std::count_if(
        columns.begin(), columns.end(), [](const Column& column) { return !column.varies(); }));
    memory_.resize(length * (3 + code.temporaries + constants));
    double* at = memory_.data();
    const auto take = [&] { return std::exchange(at, at + length); };
    registers_.accumulator = take();
    registers_.spare = take();
    registers_.poison = take();
    for (std::uint32_t i = 0; i < code.temporaries; ++i) {
        temporaries_.push_back(take());
    }
    for (const Column& column : columns) {
        if (!column.varies()) {
            std::fill_n(at, length, column[0]);
        }
        variables_.push_back(column.varies() ? nullptr : take());
    }
    registers_.variables = variables_.data();
    registers_.temporaries = temporaries_.data();
}

RowBlock::Outcome RowBlock::run(std::size_t first, std::size_t rows) {
    registers_.rows = rows;
    const auto watch = usesFusedArithmetic() ? watchWide : watchPlainly;
    bool isFirst = true;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i].varies()) {
            variables_[i] = columns_[i].numbers().data() + first;
            watch(registers_, variables_[i], isFirst);
            isFirst = false;
        }
    }
    if (isFirst) {
        std::fill_n(registers_.poison, rows, 0);
    }
    const auto& steps = usesFusedArithmetic() ? kSteps<true> : kSteps<false>;
    const Instruction* at = code_.instructions.data();
    while (at->opcode != opcodeOf(Other::Return)) {
        const Opcode opcode = at->opcode % kStoresFirst;
        if (opcode != at->opcode) {
            store(registers_, storedTemporary(opcode, *at));
        }
        if (const auto step = steps[opcode]) {
            step(registers_, *at);
            ++at;
        } else if (opcode == opcodeOf(Other::Store)) {
            store(registers_, at->a);
            ++at;
        } else {
            at = jump(registers_, *at);
            if (at == nullptr) {
                return Outcome::Diverged;
            }
        }
    }
    const auto finish = usesFusedArithmetic() ? finishWide : finishPlainly;
    return finish(registers_) ? Outcome::Complete : Outcome::SomeFailed;
}

}  // namespace varo::engine
