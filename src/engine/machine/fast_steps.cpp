#include "engine/machine/fast_steps.h"

#include "engine/machine/kernels.h"
#include "engine/machine/steps.h"

namespace varo::engine {
namespace {

/// The registers of the machine, which one step passes to the next.
struct Registers : WatchedRow<Registers> {
    const Instruction* at;
    const double* variables;
    double* temporaries;
    double accumulatorValue;
    double poison;  // NaN as soon as something hidden was not finite, else 0
    double kept;    // temporary 0

    Registers(const Instruction* instruction, const double* numbers, double* memory,
              double accumulator, double poisoned, double first)
        : at(instruction),
          variables(numbers),
          temporaries(memory),
          accumulatorValue(accumulator),
          poison(poisoned),
          kept(first) {}

    double accumulator() const { return accumulatorValue; }
    double temporary(std::uint16_t index) const { return index == 0 ? kept : temporaries[index]; }
    Leaf variable(std::uint32_t index) const { return {variables[index]}; }

    void store(std::uint32_t index) {
        if (index == 0) {
            kept = accumulatorValue;
        } else {
            temporaries[index] = accumulatorValue;
        }
    }

    void require(double value) { poison += value - value; }

    /// The value of the program when it has come to its end. Taking 0 away keeps even the sign of a
    /// zero.
    double result() const { return accumulatorValue - poison; }

    /// The value of the program from instruction `at` on.
    [[gnu::always_inline]] double dispatchNext() const {
        return at->step(at, variables, temporaries, accumulatorValue, poison, kept);
    }
};

enum class Kind { Ordinary, StoresFirst, Last, LastStoresFirst };

constexpr bool isLast(Kind kind) {
    return kind == Kind::Last || kind == Kind::LastStoresFirst;
}

constexpr bool storesFirst(Kind kind) {
    return kind == Kind::StoresFirst || kind == Kind::LastStoresFirst;
}

template <Kind kind>
[[gnu::always_inline]] inline double finishStep(Registers& registers, double value) {
    registers.accumulatorValue = value;
    if constexpr (isLast(kind)) {
        return registers.result();
    } else {
        ++registers.at;
        return registers.dispatchNext();
    }
}

template <Opcode opcode, Kind kind>
double step(const Instruction* at, const double* variables, double* temporaries, double accumulator,
            double poison, double kept) {
    Registers registers(at, variables, temporaries, accumulator, poison, kept);
    if constexpr (storesFirst(kind)) {
        registers.store(storedTemporary(opcode, *at));
    }
    return finishStep<kind>(registers, resultOf<opcode>(registers, *at));
}

/// For the arguments that a kernel cannot serve. A step of its own, so that the kernels have
/// nothing to save on the stack.
template <Kernel kernel, Kind kind>
[[gnu::noinline]] double libraryStep(const Instruction* at, const double* variables,
                                     double* temporaries, double argument, double poison,
                                     double kept) {
    Registers registers(at, variables, temporaries, argument, poison, kept);
    return finishStep<kind>(registers, libraryValue<kernel>(argument));
}

template <Opcode opcode, Kind kind, class Arithmetic>
[[gnu::always_inline]] inline double useKernel(Registers& registers) {
    const Instruction& at = *registers.at;
    if constexpr (storesFirst(kind)) {
        registers.store(storedTemporary(opcode, at));
    }
    constexpr Kernel kKernel = kernelOf(unaryOf(opcode));
    const double x =
        isOfVariable(opcode) ? registers.variable(at.a).value : registers.accumulatorValue;
    double value = 0;
    if (!compute<kKernel, Arithmetic>(x, value)) [[unlikely]] {
        return libraryStep<kKernel, kind>(&at, registers.variables, registers.temporaries, x,
                                          registers.poison, registers.kept);
    }
    return finishStep<kind>(registers, value);
}

template <Opcode opcode, Kind kind>
double plainKernelStep(const Instruction* at, const double* variables, double* temporaries,
                       double accumulator, double poison, double kept) {
    Registers registers(at, variables, temporaries, accumulator, poison, kept);
    return useKernel<opcode, kind, PlainArithmetic>(registers);
}

template <Opcode opcode, Kind kind>
VARO_FUSED double fusedKernelStep(const Instruction* at, const double* variables,
                                  double* temporaries, double accumulator, double poison,
                                  double kept) {
    Registers registers(at, variables, temporaries, accumulator, poison, kept);
    return useKernel<opcode, kind, FusedArithmetic>(registers);
}

template <Opcode opcode>
double control(const Instruction* at, const double* variables, double* temporaries,
               double accumulator, double poison, double kept) {
    Registers registers(at, variables, temporaries, accumulator, poison, kept);
    if constexpr (opcode == opcodeOf(Other::Store)) {
        registers.store(at->a);
        ++registers.at;
    } else if constexpr (opcode == opcodeOf(Other::Jump)) {
        registers.at += at->index;
    } else {
        constexpr bool kJumpsIfTrue = opcode == opcodeOf(Other::JumpIfTrue);
        static_assert(kJumpsIfTrue || opcode == opcodeOf(Other::JumpIfFalse));
        registers.require(accumulator);
        registers.at += (accumulator != 0) == kJumpsIfTrue ? at->index : 1;
    }
    return registers.dispatchNext();
}

double returnStep(const Instruction* at, const double* variables, double* temporaries,
                  double accumulator, double poison, double kept) {
    return Registers(at, variables, temporaries, accumulator, poison, kept).result();
}

template <Kind kind, bool fused>
struct MakeStep {
    using Step = Instruction::Step;

    template <Opcode opcode>
    static constexpr Step make() {
        constexpr bool kIsDefined = givesNumber(opcode) && (!storesFirst(kind) || isFresh(opcode));
        if constexpr (kIsDefined && isUnary(opcode) && kernelOf(unaryOf(opcode)) != Kernel::None) {
            return fused ? fusedKernelStep<opcode, kind> : plainKernelStep<opcode, kind>;
        } else if constexpr (kIsDefined) {
            return step<opcode, kind>;
        } else if constexpr (opcode >= opcodeOf(Other::Store) &&
                             opcode <= opcodeOf(Other::JumpIfTrue)) {
            return control<opcode>;
        } else {
            return opcode == opcodeOf(Other::Return) ? returnStep : nullptr;
        }
    }
};

template <bool fused>
constexpr std::array kSteps{tableOfSteps<MakeStep<Kind::Ordinary, fused>>(),
                            tableOfSteps<MakeStep<Kind::StoresFirst, fused>>(),
                            tableOfSteps<MakeStep<Kind::Last, fused>>(),
                            tableOfSteps<MakeStep<Kind::LastStoresFirst, fused>>()};

constexpr Instruction::Step stepOf(const auto& steps, Opcode opcode, Kind ordinary,
                                   Kind storesFirst) {
    const Kind kind = opcode >= kStoresFirst ? storesFirst : ordinary;
    return steps[static_cast<std::size_t>(kind)][opcode % kStoresFirst];
}

}  // namespace

void linkFastSteps(std::span<Instruction> program) {
    const auto& steps = usesFusedArithmetic() ? kSteps<true> : kSteps<false>;
    for (Instruction& instruction : program) {
        instruction.step = stepOf(steps, instruction.opcode, Kind::Ordinary, Kind::StoresFirst);
    }
    // What comes before Return returns at once.
    if (program.size() > 1) {
        Instruction& last = program[program.size() - 2];
        last.step = stepOf(steps, last.opcode, Kind::Last, Kind::LastStoresFirst);
    }
}

}  // namespace varo::engine
