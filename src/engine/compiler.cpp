#include "engine/compiler.h"

#include "engine/interpreter.h"

#include <algorithm>
#include <cmath>

namespace varo::engine {
namespace {

/// The opcode of an operator that works on numbers, whatever their values; Return for the others.
Opcode opcodeOf(Operator op) {
    switch (op) {
        case Operator::Factorial:
            return Opcode::Factorial;
        case Operator::Power:
            return Opcode::Power;
        case Operator::Minus:
            return Opcode::Negate;
        case Operator::Multiply:
            return Opcode::Multiply;
        case Operator::Divide:
            return Opcode::Divide;
        case Operator::Add:
            return Opcode::Add;
        case Operator::Subtract:
            return Opcode::Subtract;
        case Operator::Same:
            return Opcode::Same;
        case Operator::Different:
            return Opcode::Different;
        case Operator::Less:
            return Opcode::Less;
        case Operator::LessOrSame:
            return Opcode::LessOrSame;
        case Operator::Greater:
            return Opcode::Greater;
        case Operator::GreaterOrSame:
            return Opcode::GreaterOrSame;
        case Operator::Not:
            return Opcode::Not;
        default:
            return Opcode::Return;
    }
}

bool isUnary(Operator op) {
    return op == Operator::Factorial || op == Operator::Minus || op == Operator::Not;
}

bool takesText(const FunctionInfo& info) {
    return info.result == 't' || info.parameters.find('t') != std::string_view::npos;
}

}  // namespace

void Compiler::run(const Tree& tree, const std::vector<Type>& variableTypes,
                   std::string_view literals) {
    variableTypes_ = &variableTypes;
    literals_ = literals;
    instructions_.clear();
    constants_.clear();
    literalSpans_.clear();
    operands_.clear();
    branches_.clear();
    textsOnStack_ = 0;
    textDepth_ = 0;
    usesText_ = false;
    for (const Node& node : tree) {
        visit(node);
    }
    emit(Opcode::Return);
}

Code Compiler::code() const {
    return {instructions_, constants_, literalSpans_, literals_, textDepth_, usesText_};
}

void Compiler::emit(Opcode opcode, Function function, std::uint32_t operand) {
    instructions_.push_back({opcode, function, operand});
}

void Compiler::push(const Operand& operand) {
    operands_.push_back(operand);
    if (operand.type == Type::Text) {
        usesText_ = true;
        textDepth_ = std::max(textDepth_, ++textsOnStack_);
    }
}

Compiler::Operand Compiler::pop() {
    const Operand operand = operands_.back();
    operands_.pop_back();
    textsOnStack_ -= operand.type == Type::Text ? 1 : 0;
    return operand;
}

void Compiler::pushNumber(std::uint32_t begin, double value) {
    emit(Opcode::Constant, {}, static_cast<std::uint32_t>(constants_.size()));
    constants_.push_back(value);
    push({begin, Type::Number, std::isfinite(value) ? std::optional(value) : std::nullopt});
}

void Compiler::visit(const Node& node) {
    switch (node.kind) {
        case NodeKind::LeftOperand:
            if (node.op == Operator::And) {
                openBranch(Opcode::JumpIfAndFalse);
            } else if (node.op == Operator::Or) {
                openBranch(Opcode::JumpIfOrTrue);
            }
            break;
        case NodeKind::Apply:
            apply(node);
            break;
        case NodeKind::Argument:
            if (node.function == Function::If) {
                conditionalArgument(node.first);
            }
            break;
        case NodeKind::Call:
            call(node);
            break;
        default:
            leaf(node);
            break;
    }
}

void Compiler::leaf(const Node& node) {
    const std::uint32_t begin = here();
    if (node.kind == NodeKind::Number) {
        pushNumber(begin, node.number);
    } else if (node.kind == NodeKind::Text) {
        emit(Opcode::Literal, {}, static_cast<std::uint32_t>(literalSpans_.size()));
        literalSpans_.push_back({node.first, node.size});
        push({begin, Type::Text, {}});
    } else {
        const Type type = (*variableTypes_)[node.first];
        emit(type == Type::Text ? Opcode::TextVariable : Opcode::Variable, {}, node.first);
        push({begin, type, {}});
    }
}

void Compiler::apply(const Node& node) {
    if (node.op == Operator::And || node.op == Operator::Or) {
        closeLogical(node.op);
        return;
    }
    if (node.op == Operator::Plus) {
        return;
    }
    const Operand last = pop();
    if (isUnary(node.op)) {
        emit(opcodeOf(node.op));
        push({last.begin, Type::Number, {}});
        if (last.constant) {
            fold(last.begin, 1);
        }
        return;
    }
    const Operand left = pop();
    if (left.type == Type::Text) {
        emit(Opcode::TextRelation, {}, static_cast<std::uint32_t>(node.op));
    } else {
        emit(opcodeOf(node.op));
    }
    push({left.begin, Type::Number, {}});
    if (left.constant && last.constant) {
        fold(left.begin, 2);
    }
}

void Compiler::call(const Node& node) {
    if (node.function == Function::If) {
        closeConditional();
        return;
    }
    const FunctionInfo& info = infoOf(node.function);
    std::uint32_t begin = here();
    bool constant = true;
    for (std::uint32_t i = 0; i < node.first; ++i) {
        const Operand argument = pop();
        begin = argument.begin;
        constant = constant && argument.constant;
    }
    if (takesText(info)) {
        usesText_ = true;
        emit(Opcode::CallText, node.function, node.first);
        push({begin, info.result == 't' ? Type::Text : Type::Number, {}});
        return;
    }
    emit(node.first == 1 ? Opcode::CallOne : Opcode::CallTwo, node.function);
    push({begin, Type::Number, {}});
    if (constant) {
        fold(begin, node.first);
    }
}

/// Called with the condition on top. A known condition vanishes from the code.
void Compiler::openBranch(Opcode jump) {
    const Operand& condition = operands_.back();
    if (condition.constant) {
        const bool known = *condition.constant != 0;
        dropCode(condition.begin);
        constants_.pop_back();
        branches_.push_back({known, 0});
    } else {
        branches_.push_back({std::nullopt, here()});
        emit(jump);
    }
}

void Compiler::closeLogical(Operator op) {
    const Branch branch = branches_.back();
    branches_.pop_back();
    const Operand right = pop();
    const Operand left = pop();
    const bool deciding = op == Operator::Or;  // the value of the left side that decides alone
    if (branch.known == deciding) {
        dropCode(right.begin);
        pushNumber(left.begin, deciding ? 1 : 0);
        return;
    }
    emit(Opcode::Truth);
    push({left.begin, Type::Number, {}});
    if (!branch.known) {
        instructions_[branch.jump].operand = here();
    } else if (right.constant) {
        fold(left.begin, 1);
    }
}

void Compiler::conditionalArgument(std::uint32_t argument) {
    if (argument == 1) {
        openBranch(Opcode::JumpIfFalse);
        return;
    }
    Branch& branch = branches_.back();
    const std::uint32_t begin = operands_.back().begin;
    if (branch.known) {
        const bool chosen = *branch.known == (argument == 2);
        if (!chosen) {
            dropCode(begin);
        }
    } else if (argument == 2) {
        const std::uint32_t end = here();
        emit(Opcode::Jump);
        instructions_[branch.jump].operand = here();
        branch.jump = end;
    } else {
        instructions_[branch.jump].operand = here();
    }
}

void Compiler::closeConditional() {
    const Branch branch = branches_.back();
    branches_.pop_back();
    const Operand otherwise = pop();
    const Operand then = pop();
    const Operand condition = pop();
    Operand result{condition.begin, then.type, {}};
    if (branch.known) {
        result.constant = *branch.known ? then.constant : otherwise.constant;
    }
    push(result);
}

/// Replaces the last instructions, from `begin` on, which work on nothing but the last `constants`,
/// by their value, if they have one.
void Compiler::fold(std::uint32_t begin, std::size_t constants) {
    emit(Opcode::Return);
    Code part = code();
    part.instructions = part.instructions.subspan(begin);
    double value = 0;
    Failure failure;
    const bool worked = interpret(part, nullptr, nullptr, value, failure);
    instructions_.pop_back();
    if (!worked) {
        return;
    }
    dropCode(begin);
    constants_.resize(constants_.size() - constants);
    pop();
    pushNumber(begin, value);
}

}  // namespace varo::engine
