#include "engine/machine/interpreter.h"

#include "engine/machine/steps.h"
#include "engine/machine/text_machine.h"

#include <cmath>

namespace varo::engine {
namespace {

class Machine {
  public:
    Machine(const double* variables, TextMachine* texts, Failure& failure)
        : variables_(variables), texts_(texts), failure_(failure) {}

    double accumulator() const { return accumulator_; }
    double temporary(std::uint16_t index) const { return temporaries_[index]; }
    Leaf variable(std::uint32_t index) const { return {variables_[index]}; }

    template <Operator op, class X, class Y>
    double apply(X x, Y y) {
        const double value = engine::apply<op>(engine::valueOf(x), engine::valueOf(y));
        if (!std::isfinite(value)) {
            fail(explain(op, engine::valueOf(x), engine::valueOf(y)));
        }
        return value;
    }
    template <Unary operation, class X>
    double apply(X x) {
        const double value = engine::apply<operation>(engine::valueOf(x));
        if (!std::isfinite(value)) {
            fail(explain(operation), functionOf(operation));
        }
        return value;
    }
    template <Function function>
    double apply(double x, double y) {
        const double value = engine::apply<function>(x, y);
        if (!std::isfinite(value)) {
            fail(infoOf(function).failure, function);
        }
        return value;
    }

    template <Opcode opcode>
    void step(const Instruction& at) {
        accumulator_ = resultOf<opcode>(*this, at);
        if (!std::isfinite(accumulator_)) {
            fail(ErrorCode::OutOfRange);
        }
    }

    /// Executes the program up to its end or the first failure.
    bool run(const Instruction* at);

  private:
    const Instruction* control(const Instruction* at);
    void fail(ErrorCode code, Function function = Function::Unknown) {
        if (failure_.code == ErrorCode::None) {
            failure_.code = code;
            failure_.function = function;
        }
    }

    double accumulator_ = 0;
    double temporaries_[kMostTemporaries];
    const double* variables_;
    TextMachine* texts_;
    Failure& failure_;
};

struct MakeStep {
    using Step = void (Machine::*)(const Instruction&);

    template <Opcode opcode>
    static constexpr Step make() {
        if constexpr (givesNumber(opcode)) {
            return &Machine::step<opcode>;
        } else {
            return nullptr;
        }
    }
};

constexpr auto kSteps = tableOfSteps<MakeStep>();

bool Machine::run(const Instruction* at) {
    while (at->opcode != opcodeOf(Other::Return)) {
        const Opcode opcode = at->opcode % kStoresFirst;
        if (opcode != at->opcode) {
            temporaries_[storedTemporary(opcode, *at)] = accumulator_;
        }
        if (const auto step = kSteps[opcode]) {
            (this->*step)(*at);
            ++at;
        } else {
            at = control(at);
        }
        if (failure_.code != ErrorCode::None) {
            return false;
        }
    }
    return true;
}

/// Executes an instruction on texts or on the flow of instructions; returns the next one.
const Instruction* Machine::control(const Instruction* at) {
    const bool isTrue = accumulator_ != 0;
    switch (static_cast<Other>(at->opcode - kOtherOpcodes)) {
        case Other::Store:
            temporaries_[at->a] = accumulator_;
            break;
        case Other::Jump:
            return at + at->index;
        case Other::JumpIfFalse:
            return at + (isTrue ? 1 : at->index);
        case Other::JumpIfTrue:
            return at + (isTrue ? at->index : 1);
        case Other::Literal:
            texts_->pushLiteral(at->index);
            break;
        case Other::TextVariable:
            texts_->pushVariable(at->index);
            break;
        case Other::TextRelation:
            fail(texts_->relation(static_cast<Operator>(at->b), accumulator_));
            break;
        case Other::CallText: {
            const auto function = static_cast<Function>(at->b);
            fail(texts_->call(function, at->index, temporaries_ + at->a, accumulator_,
                              failure_.subject),
                 function);
            break;
        }
        case Other::LoadVariable:
        case Other::LoadConstant:
        case Other::LoadTemporary:
        case Other::Return:
            break;
    }
    return at + 1;
}

}  // namespace

bool interpret(const Code& code, const double* variables, TextMachine* texts, double& result,
               Failure& failure) {
    Machine machine(variables, texts, failure);
    if (!machine.run(code.instructions.data())) {
        return false;
    }
    result = machine.accumulator();
    return true;
}

}  // namespace varo::engine
