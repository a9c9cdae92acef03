#include "engine/fast_steps.h"

#include "engine/kernels.h"
#include "engine/steps.h"

namespace varo::engine {
namespace {

struct FastRow {
    double accumulatorValue;
    double poison;  // NaN as soon as something hidden was not finite, else 0
    const double* variables;
    double* temporaries;

    double accumulator() const { return accumulatorValue; }
    double temporary(std::uint16_t index) const { return temporaries[index]; }
    Leaf variable(std::uint32_t index) const { return {variables[index]}; }

    template <Operator op, class X, class Y>
    double apply(X x, Y y) {
        if constexpr (hidesInfinity(op)) {
            require(y);
            if constexpr (op != Operator::Divide) {
                require(x);
            }
        }
        return engine::apply<op>(engine::valueOf(x), engine::valueOf(y));
    }
    template <Unary operation, class X>
    double apply(X x) {
        if constexpr (hidesInfinity(operation)) {
            require(x);
        }
        return engine::apply<operation>(engine::valueOf(x));
    }
    template <Function function>
    double apply(double x, double y) {
        require(y);
        return engine::apply<function>(x, y);
    }

    void require(Leaf) {}
    void require(double value) { poison += value - value; }
};

#if defined(__clang__)
#define VARO_TAIL_CALL [[clang::musttail]]
#else
#define VARO_TAIL_CALL
#endif

enum class Kind { Ordinary, StoresFirst, Last, LastStoresFirst };

/// Taking 0 away keeps even the sign of a zero.
double finish(double accumulator, double poison) {
    return accumulator - poison;
}

constexpr bool isLast(Kind kind) {
    return kind == Kind::Last || kind == Kind::LastStoresFirst;
}

constexpr bool storesFirst(Kind kind) {
    return kind == Kind::StoresFirst || kind == Kind::LastStoresFirst;
}

template <Kind kind>
[[gnu::always_inline]] inline double goOn(const Instruction* at, const double* variables,
                                          double* temporaries, double accumulator, double poison) {
    if constexpr (isLast(kind)) {
        return finish(accumulator, poison);
    } else {
        VARO_TAIL_CALL return at[1].step(at + 1, variables, temporaries, accumulator, poison);
    }
}

/// For the arguments that a kernel cannot serve. A step of its own, so that the kernels have
/// nothing to save on the stack.
template <Unary operation, Kind kind>
[[gnu::noinline]] double stepWithLibrary(const Instruction* at, const double* variables,
                                         double* temporaries, double argument, double poison) {
    return goOn<kind>(at, variables, temporaries, libraryValue<operation>(argument), poison);
}

template <Opcode opcode, Kind kind, class Arithmetic>
[[gnu::always_inline]] inline double useKernel(const Instruction* at, const double* variables,
                                               double* temporaries, double accumulator,
                                               double poison) {
    if constexpr (storesFirst(kind)) {
        temporaries[storedTemporary(opcode, *at)] = accumulator;
    }
    constexpr Unary operation = unaryOf(opcode);
    const double x = isOfVariable(opcode) ? variables[at->a] : accumulator;
    double value = 0;
    if (!compute<operation, Arithmetic>(x, value)) [[unlikely]] {
        return stepWithLibrary<operation, kind>(at, variables, temporaries, x, poison);
    }
    return goOn<kind>(at, variables, temporaries, value, poison);
}

template <Opcode opcode, Kind kind>
double plainKernelStep(const Instruction* at, const double* variables, double* temporaries,
                       double accumulator, double poison) {
    return useKernel<opcode, kind, PlainArithmetic>(at, variables, temporaries, accumulator,
                                                    poison);
}

template <Opcode opcode, Kind kind>
VARO_FUSED double fusedKernelStep(const Instruction* at, const double* variables,
                                  double* temporaries, double accumulator, double poison) {
    return useKernel<opcode, kind, FusedArithmetic>(at, variables, temporaries, accumulator,
                                                    poison);
}

template <Opcode opcode, Kind kind>
double step(const Instruction* at, const double* variables, double* temporaries, double accumulator,
            double poison) {
    if constexpr (storesFirst(kind)) {
        temporaries[storedTemporary(opcode, *at)] = accumulator;
    }
    FastRow row{accumulator, poison, variables, temporaries};
    const double value = valueOf<opcode>(row, *at);
    return goOn<kind>(at, variables, temporaries, value, row.poison);
}

template <Opcode opcode>
double control(const Instruction* at, const double* variables, double* temporaries,
               double accumulator, double poison) {
    if constexpr (opcode == opcodeOf(Other::Store)) {
        temporaries[at->a] = accumulator;
        ++at;
    } else if constexpr (opcode == opcodeOf(Other::Jump)) {
        at += at->index;
    } else {
        constexpr bool jumpsIfTrue = opcode == opcodeOf(Other::JumpIfTrue);
        static_assert(jumpsIfTrue || opcode == opcodeOf(Other::JumpIfFalse));
        poison += accumulator - accumulator;
        at += (accumulator != 0) == jumpsIfTrue ? at->index : 1;
    }
    VARO_TAIL_CALL return at->step(at, variables, temporaries, accumulator, poison);
}

double returnStep(const Instruction*, const double*, double*, double accumulator, double poison) {
    return finish(accumulator, poison);
}

template <Kind kind, bool fused>
struct MakeStep {
    template <Opcode opcode>
    static constexpr Instruction::Step make() {
        constexpr bool exists = givesNumber(opcode) && (!storesFirst(kind) || isFresh(opcode));
        if constexpr (exists && isUnary(opcode) && hasKernel(unaryOf(opcode))) {
            return fused ? fusedKernelStep<opcode, kind> : plainKernelStep<opcode, kind>;
        } else if constexpr (exists) {
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
        if (givesNumber(last.opcode % kStoresFirst)) {
            last.step = stepOf(steps, last.opcode, Kind::Last, Kind::LastStoresFirst);
        }
    }
}

}  // namespace varo::engine
