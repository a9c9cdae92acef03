#include "engine/program/compiler.h"

#include "engine/machine/fast_steps.h"

#include <cmath>

namespace varo::engine {

void Compiler::run(Order order, const Tree& tree, const std::vector<Type>& variableTypes,
                   std::string_view literals) {
    variableTypes_ = &variableTypes;
    literals_ = literals;
    literalSpans_.clear();
    branches_.clear();
    usesText_ = false;
    writer_.start(order);
    for (const Node& node : tree) {
        visit(node);
    }
    if (!writer_.isText()) {
        writer_.loadTop();
    }
    writer_.emit(opcodeOf(Other::Return));
    if (order == Order::Fastest) {
        linkFastSteps(writer_.instructions());
    }
}

Code Compiler::code() const {
    return {writer_.instructions(), literalSpans_,       literals_,
            writer_.temporaries(),  writer_.textDepth(), usesText_};
}

void Compiler::visit(const Node& node) {
    switch (node.kind) {
        case NodeKind::Number:
            writer_.number(node.number);
            break;
        case NodeKind::Variable:
            variable(node.extent.first);
            break;
        case NodeKind::Text:
            literal(node.extent);
            break;
        case NodeKind::LeftOperand:
            if (node.op == Operator::And) {
                openBranch(Other::JumpIfFalse);
            } else if (node.op == Operator::Or) {
                openBranch(Other::JumpIfTrue);
            }
            break;
        case NodeKind::Apply:
            apply(node.op);
            break;
        case NodeKind::Argument:
            argument(node.function, node.extent.first);
            break;
        case NodeKind::Call:
            call(node.function, node.extent.first);
            break;
        case NodeKind::Result:
        case NodeKind::Missing:
        case NodeKind::UnknownFunction:
            break;  // only in wrong formulas
    }
}

void Compiler::variable(std::uint32_t index) {
    const bool isText = !variableTypes_->empty() && (*variableTypes_)[index] == Type::Text;
    if (isText) {
        usesText_ = true;
        writer_.text(Other::TextVariable, index);
    } else {
        writer_.variable(index);
    }
}

void Compiler::literal(const Extent& extent) {
    usesText_ = true;
    writer_.text(Other::Literal, static_cast<std::uint32_t>(literalSpans_.size()));
    literalSpans_.push_back({extent.first, extent.size});
}

// Operators

void Compiler::apply(Operator op) {
    switch (op) {
        case Operator::Plus:
            break;
        case Operator::Minus:
            writer_.number(-1);
            writer_.binary(Operator::Multiply);
            break;
        case Operator::Factorial:
            writer_.unary(Unary::Factorial);
            break;
        case Operator::Not:
            writer_.unary(Unary::Not);
            break;
        case Operator::And:
        case Operator::Or:
            closeLogical(op);
            break;
        case Operator::Add:
        case Operator::Subtract:
        case Operator::Multiply:
        case Operator::Divide:
        case Operator::Power:
        case Operator::Same:
        case Operator::Different:
        case Operator::Less:
        case Operator::LessOrSame:
        case Operator::Greater:
        case Operator::GreaterOrSame:
        case Operator::Like:
        case Operator::Equal:
            if (writer_.isText()) {
                textRelation(op);
            } else {
                writer_.binary(op);
            }
            break;
    }
}

void Compiler::textRelation(Operator op) {
    writer_.freeAccumulator();
    writer_.emit(opcodeOf(Other::TextRelation)).b = static_cast<std::uint16_t>(op);
    writer_.computed(2);
}

// Calls

/// Arguments that functions find among the temporaries are stored as soon as they are complete.
void Compiler::argument(Function function, std::uint32_t number) {
    switch (infoOf(function).computation.kind) {
        case Computation::Kind::OfNumber:
        case Computation::Kind::None:
            break;
        case Computation::Kind::OfTwoNumbers:
            if (number == 1 && !writer_.isConstant()) {
                writer_.storeTop();
            }
            break;
        case Computation::Kind::OfTexts:
            if (!writer_.isText()) {
                writer_.storeTop();
            }
            break;
        case Computation::Kind::Condition:
            conditionalArgument(number);
            break;
    }
}

void Compiler::call(Function function, std::uint32_t arguments) {
    switch (infoOf(function).computation.kind) {
        case Computation::Kind::OfNumber:
            writer_.unary(unaryOf(function));
            break;
        case Computation::Kind::OfTwoNumbers:
            callOfTwo(function);
            break;
        case Computation::Kind::OfTexts:
            callText(function, arguments);
            break;
        case Computation::Kind::Condition:
            closeConditional();
            break;
        case Computation::Kind::None:
            break;
    }
}

void Compiler::callOfTwo(Function function) {
    if (writer_.isConstant(1) && writer_.isConstant()) {
        const double value =
            infoOf(function).computation.ofTwoNumbers(writer_.top(1).number, writer_.top().number);
        if (std::isfinite(value)) {
            writer_.replaceByConstant(2, value);
            return;
        }
    }
    if (writer_.isConstant(1)) {
        writer_.storeTop(1);
    }
    writer_.loadTop();
    writer_.emit(opcodeOf(function)).a = writer_.top(1).slot;
    writer_.computed(2);
}

void Compiler::callText(Function function, std::uint32_t arguments) {
    const FunctionInfo& info = infoOf(function);
    const std::size_t numbers = info.numberCount;
    writer_.freeAccumulator();
    Instruction& instruction = writer_.emit(opcodeOf(Other::CallText));
    instruction.a = numbers > 0 ? writer_.top(numbers - 1).slot : std::uint16_t{0};
    instruction.b = static_cast<std::uint16_t>(function);
    instruction.index = arguments;
    usesText_ = true;
    writer_.replace(arguments,
                    {info.result == ParameterType::Text ? CodeWriter::Place::Text
                                                        : CodeWriter::Place::Accumulator});
}

// Conditions

/// Called with the condition on top. A known condition vanishes from the code.
void Compiler::openBranch(Other jump) {
    if (writer_.isConstant()) {
        writer_.freeAccumulator();
        branches_.push_back({writer_.top().number != 0, writer_.placeLabel(), 0});
        return;
    }
    writer_.loadTop();
    branches_.push_back({std::nullopt, 0, writer_.here()});
    writer_.emit(opcodeOf(jump));
    writer_.replaceByConstant(1, 0);
}

void Compiler::closeLogical(Operator op) {
    const Branch branch = branches_.back();
    branches_.pop_back();
    const bool deciding = op == Operator::Or;  // the value of the left side that decides alone
    if (branch.known == deciding) {
        writer_.dropCode(branch.begin);
        writer_.replaceByConstant(2, deciding ? 1 : 0);
        return;
    }
    if (!branch.known) {
        writer_.loadTop();
        writer_.setTarget(branch.jump);
    }
    writer_.unary(Unary::Truth);
    writer_.replace(2, CodeWriter::Operand(writer_.top()));
}

void Compiler::conditionalArgument(std::uint32_t argument) {
    if (argument == 1) {
        openBranch(Other::JumpIfFalse);
        return;
    }
    Branch& branch = branches_.back();
    const bool isNumber = !writer_.isText();
    if (branch.known) {
        const bool isChosen = *branch.known == (argument == 2);
        if (!isChosen) {
            writer_.dropCode(branch.begin);
            if (isNumber) {
                writer_.replaceByConstant(1, 0);
            }
        } else if (argument == 2) {
            writer_.freeAccumulator();
        }
        branch.begin = writer_.placeLabel();
        return;
    }
    if (isNumber) {
        writer_.loadTop();
    }
    if (argument == 2) {
        const std::uint32_t end = writer_.here();
        writer_.emit(opcodeOf(Other::Jump));
        writer_.setTarget(branch.jump);
        branch.jump = end;
        if (isNumber) {
            writer_.replaceByConstant(1, 0);
        }
    } else {
        writer_.setTarget(branch.jump);
    }
}

void Compiler::closeConditional() {
    const bool takesThen = branches_.back().known.value_or(false);
    branches_.pop_back();
    const std::size_t chosen = takesThen ? 1 : 0;
    if (writer_.top(chosen).place == CodeWriter::Place::Temporary) {
        writer_.loadTop(chosen);
    }
    writer_.replace(3, CodeWriter::Operand(writer_.top(chosen)));
}

}  // namespace varo::engine
