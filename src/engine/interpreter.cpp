#include "engine/interpreter.h"

#include "engine/number_functions.h"
#include "engine/text_machine.h"

#include <cmath>

namespace varo::engine {
namespace {

bool fail(ErrorCode code, const Instruction& at, Failure& failure) {
    failure.code = code;
    failure.function = at.function;
    return false;
}

constexpr double truth(bool value) {
    return value ? 1 : 0;
}

}  // namespace

bool interpret(const Code& code, const double* variables, TextMachine* texts, double& result,
               Failure& failure) {
    double stack[kNumberStackSize];
    double* top = stack;  // stack[0] stays free, so that an empty stack has a top, too
    *top = 0;
    const Instruction* const begin = code.instructions.data();
    for (const Instruction* at = begin;; ++at) {
        ErrorCode error = ErrorCode::None;
        switch (at->opcode) {
            case Opcode::Constant:
                *++top = code.constants[at->operand];
                break;
            case Opcode::Variable:
                *++top = variables[at->operand];
                continue;
            case Opcode::Literal:
                texts->pushLiteral(at->operand);
                continue;
            case Opcode::TextVariable:
                texts->pushVariable(at->operand);
                continue;
            case Opcode::Negate:
                *top = -*top;
                continue;
            case Opcode::Factorial:
                error = factorial(*top, *top);
                break;
            case Opcode::Power:
                --top;
                error = power(top[0], top[1], *top);
                break;
            case Opcode::Divide:
                --top;
                error = divide(top[0], top[1], *top);
                break;
            case Opcode::Multiply:
                --top;
                *top *= top[1];
                break;
            case Opcode::Add:
                --top;
                *top += top[1];
                break;
            case Opcode::Subtract:
                --top;
                *top -= top[1];
                break;
            case Opcode::Same:
                --top;
                *top = truth(top[0] == top[1]);
                continue;
            case Opcode::Different:
                --top;
                *top = truth(top[0] != top[1]);
                continue;
            case Opcode::Less:
                --top;
                *top = truth(top[0] < top[1]);
                continue;
            case Opcode::LessOrSame:
                --top;
                *top = truth(top[0] <= top[1]);
                continue;
            case Opcode::Greater:
                --top;
                *top = truth(top[0] > top[1]);
                continue;
            case Opcode::GreaterOrSame:
                --top;
                *top = truth(top[0] >= top[1]);
                continue;
            case Opcode::Not:
                *top = truth(*top == 0);
                continue;
            case Opcode::Truth:
                *top = truth(*top != 0);
                continue;
            case Opcode::CallOne:
                error = callNumberFunction(at->function, *top, 0, *top);
                break;
            case Opcode::CallTwo:
                --top;
                error = callNumberFunction(at->function, top[0], top[1], *top);
                break;
            case Opcode::Jump:
                at = begin + at->operand - 1;
                continue;
            case Opcode::JumpIfFalse:
                at = *top-- == 0 ? begin + at->operand - 1 : at;
                continue;
            case Opcode::JumpIfAndFalse:
                if (*top == 0) {
                    at = begin + at->operand - 1;
                } else {
                    --top;
                }
                continue;
            case Opcode::JumpIfOrTrue:
                if (*top != 0) {
                    *top = 1;
                    at = begin + at->operand - 1;
                } else {
                    --top;
                }
                continue;
            case Opcode::TextRelation:
                error = texts->relation(static_cast<Operator>(at->operand), *++top);
                break;
            case Opcode::CallText:
                error = texts->call(at->function, at->operand, top, failure.subject);
                break;
            case Opcode::Return:
                result = *top;
                return true;
        }
        if (error != ErrorCode::None) {
            return fail(error, *at, failure);
        }
        if (!std::isfinite(*top)) {
            return fail(ErrorCode::OutOfRange, *at, failure);
        }
    }
}

}  // namespace varo::engine
