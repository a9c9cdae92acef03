#include "engine/compiler.h"

#include "engine/fast_steps.h"
#include "engine/steps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

namespace varo::engine {
namespace {

constexpr std::uint32_t kMostFusedIndex = 0xFFFF;

/// The shape `first` for Place::VV, and the two after it for VK and KV.
Shape shapeFor(Shape first, std::size_t kind) {
    return static_cast<Shape>(static_cast<std::size_t>(first) + kind);
}

bool isArithmetic(Operator op) {
    return op <= Operator::Divide;
}

bool commutes(Operator op) {
    return op == Operator::Add || op == Operator::Multiply;
}

/// The operation that raises to a constant exponent, if there is one for it.
std::optional<Unary> powerOperation(double exponent) {
    if (exponent == 2) {
        return Unary::Square;
    }
    if (exponent == 3) {
        return Unary::Cube;
    }
    if (exponent == 4) {
        return Unary::Fourth;
    }
    if (exponent == 0.5) {
        return Unary::SquareRoot;
    }
    return std::nullopt;
}

double valueOf(Operator op, double x, double y) {
    switch (op) {
        case Operator::Add:
            return apply<Operator::Add>(x, y);
        case Operator::Subtract:
            return apply<Operator::Subtract>(x, y);
        case Operator::Multiply:
            return apply<Operator::Multiply>(x, y);
        case Operator::Divide:
            return apply<Operator::Divide>(x, y);
        case Operator::Power:
            return apply<Operator::Power>(x, y);
        case Operator::Same:
            return apply<Operator::Same>(x, y);
        case Operator::Different:
            return apply<Operator::Different>(x, y);
        case Operator::Less:
            return apply<Operator::Less>(x, y);
        case Operator::LessOrSame:
            return apply<Operator::LessOrSame>(x, y);
        case Operator::Greater:
            return apply<Operator::Greater>(x, y);
        default:
            return apply<Operator::GreaterOrSame>(x, y);
    }
}

template <std::size_t... index>
double valueOf(Unary operation, double x, std::index_sequence<index...>) {
    double value = 0;
    (void)((static_cast<std::size_t>(operation) == index &&
            (value = apply<static_cast<Unary>(index)>(x), true)) ||
           ...);
    return value;
}

double valueOf(Unary operation, double x) {
    return valueOf(operation, x, std::make_index_sequence<kUnaryCount>());
}

}  // namespace

void Compiler::run(Order order, const Tree& tree, const std::vector<Type>& variableTypes,
                   std::string_view literals) {
    order_ = order;
    variableTypes_ = &variableTypes;
    literals_ = literals;
    instructions_.clear();
    literalSpans_.clear();
    operands_.clear();
    branches_.clear();
    accumulator_ = kNone;
    fusable_ = kNone;
    label_ = kNone;
    numbers_ = 0;
    temporaries_ = 0;
    textDepth_ = 0;
    usesText_ = false;
    for (const Node& node : tree) {
        visit(node);
    }
    if (top().place != Place::Text) {
        loadTop();
    }
    emit(opcodeOf(Other::Return));
    linkFastSteps(instructions_);
}

Code Compiler::code() const {
    return {instructions_, literalSpans_, literals_, temporaries_, textDepth_, usesText_};
}

void Compiler::visit(const Node& node) {
    switch (node.kind) {
        case NodeKind::Number:
            number(node.number);
            break;
        case NodeKind::Variable:
            variable(node.extent.first);
            break;
        case NodeKind::Text:
            emit(opcodeOf(Other::Literal)).index = static_cast<std::uint32_t>(literalSpans_.size());
            literalSpans_.push_back({node.extent.first, node.extent.size});
            push({Place::Text});
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
        default:
            break;
    }
}

// What is read

void Compiler::variable(std::uint32_t index) {
    const bool isText = !variableTypes_->empty() && (*variableTypes_)[index] == Type::Text;
    if (isText) {
        emit(opcodeOf(Other::TextVariable)).index = index;
        push({Place::Text});
    } else if (index <= kMostFusedIndex) {
        pushLeaf(Place::Variable, static_cast<std::uint16_t>(index), 0);
    } else {
        freeAccumulator();
        emit(opcodeOf(Other::LoadVariable)).index = index;
        push({Place::Accumulator});
    }
}

void Compiler::number(double value) {
    if (std::isfinite(value)) {
        pushLeaf(Place::Constant, 0, value);
    } else {
        freeAccumulator();
        emit(opcodeOf(Other::LoadConstant)).number = value;
        push({Place::Accumulator});
    }
}

// Operators

void Compiler::apply(Operator op) {
    switch (op) {
        case Operator::Plus:
            break;
        case Operator::Minus:
            number(-1);
            binary(Operator::Multiply);
            break;
        case Operator::Factorial:
            unary(Unary::Factorial);
            break;
        case Operator::Not:
            unary(Unary::Not);
            break;
        case Operator::And:
        case Operator::Or:
            closeLogical(op);
            break;
        default:
            if (top().place == Place::Text) {
                textRelation(op);
            } else {
                binary(op);
            }
            break;
    }
}

void Compiler::binary(Operator op) {
    if (op == Operator::Power && power()) {
        return;
    }
    if (op == Operator::Divide && isPowerOfTwo(top())) {
        op = Operator::Multiply;  // by the reciprocal: the same value, sooner
        top().number = 1 / top().number;
    }
    if (top(1).isLeaf() && top().isLeaf()) {
        combineLeaves(op);
        return;
    }
    if (isArithmetic(op)) {
        const bool leftToLoad = top(1).isPair() || top(1).place == Place::Temporary;
        if (top().isPair() && leftToLoad) {
            loadTop(1);
        }
        if (combineWithPair(op)) {
            return;
        }
    }
    if (top().isPair()) {
        loadTop();
    }
    if (top(1).place != Place::Accumulator && top().place != Place::Accumulator) {
        loadTop(1);
    }
    if (top(1).isPair()) {
        loadTop(1);
    }
    combineLoaded(op);
}

/// Two variables or constants: a constant, a pair, or an instruction at once.
void Compiler::combineLeaves(Operator op) {
    const Operand left = top(1);
    const Operand right = top();
    const bool leftIsConstant = left.place == Place::Constant;
    const bool rightIsConstant = right.place == Place::Constant;
    if (leftIsConstant && rightIsConstant) {
        const double value = valueOf(op, left.number, right.number);
        if (std::isfinite(value)) {
            replaceByConstant(2, value);
        } else {
            loadTop(1);
            combineLoaded(op);
        }
        return;
    }
    pop(1);
    Operand& pair = top();
    pair.place = leftIsConstant ? Place::KV : rightIsConstant ? Place::VK : Place::VV;
    pair.op = op;
    pair.a = leftIsConstant ? right.a : left.a;
    pair.b = right.a;
    pair.number = leftIsConstant ? left.number : right.number;
    if (!isArithmetic(op) || order_ == Order::Reading) {
        loadTop();
    }
}

/// A pair and a variable, a constant or the accumulator, in whatever order: one instruction, if
/// there is one.
bool Compiler::combineWithPair(Operator op) {
    const bool pairIsLeft = top(1).isPair();
    const Operand pair = pairIsLeft ? top(1) : top();
    const Operand other = pairIsLeft ? top() : top(1);
    if (!pair.isPair()) {
        return false;
    }
    const auto kind = static_cast<std::size_t>(pair.place) - static_cast<std::size_t>(Place::VV);
    Instruction parts;
    parts.a = pair.a;
    parts.b = pair.b;
    parts.number = pair.number;
    if (other.place == Place::Accumulator) {
        const bool fromLeft = pairIsLeft && !commutes(op);
        parts.opcode = fromLeft ? opcodeOf(shapeFor(Shape::VV_A, kind), pair.op, op)
                                : opcodeOf(shapeFor(Shape::A_VV, kind), op, pair.op);
        emit(parts);
    } else if (other.place == Place::Variable && pairIsLeft) {
        constexpr std::array shapes{Shape::VVV, Shape::VKV, Shape::KVV};
        parts.opcode = opcodeOf(shapes[kind], pair.op, op);
        (pair.place == Place::VV ? parts.c : parts.b) = other.a;
        emitFresh(parts);
    } else if (other.place == Place::Variable) {
        parts.opcode = opcodeOf(shapeFor(Shape::V_VV, kind), op, pair.op);
        parts.a = other.a;
        parts.b = pair.a;
        parts.c = pair.b;
        emitFresh(parts);
    } else if (other.place == Place::Constant && pair.place == Place::VV &&
               (pairIsLeft || commutes(op))) {
        parts.opcode = opcodeOf(Shape::VVK, pair.op, op);
        parts.number = other.number;
        emitFresh(parts);
    } else {
        return false;
    }
    computed(2);
    return true;
}

/// True for a constant whose reciprocal is exact.
bool Compiler::isPowerOfTwo(const Operand& operand) {
    constexpr double smallest = 0x1p-1022;
    constexpr double largest = 0x1p1022;
    const double size = std::fabs(operand.number);
    constexpr std::uint64_t fraction = (std::uint64_t{1} << 52) - 1;
    return operand.place == Place::Constant && size >= smallest && size <= largest &&
           (std::bit_cast<std::uint64_t>(size) & fraction) == 0;
}

/// One operand is in the accumulator; the other is a variable, a constant or a temporary.
void Compiler::combineLoaded(Operator op) {
    const Operand left = top(1);
    const Operand right = top();
    if (left.place == Place::Accumulator) {
        if (right.place == Place::Temporary) {
            emit(opcodeOf(Shape::AT, op)).a = right.slot;
        } else {
            emitFusable(op, right);
        }
    } else if (left.place == Place::Temporary) {
        if (!fuse(op, left)) {
            emit(opcodeOf(Shape::TA, op)).a = left.slot;
        }
    } else if (commutes(op)) {
        emitFusable(op, left);
    } else if (left.place == Place::Variable) {
        emit(opcodeOf(Shape::VA, op)).a = left.a;
    } else {
        emit(opcodeOf(Shape::KA, op)).number = left.number;
    }
    computed(2);
}

/// Powers that need no general power.
bool Compiler::power() {
    if (top(1).place == Place::Constant && top(1).number == kE) {
        if (top().place == Place::Temporary) {
            loadTop();
        }
        replace(2, Operand(top()));
        unary(Unary::PowerOfE);
        return true;
    }
    if (top().place != Place::Constant) {
        return false;
    }
    const std::optional<Unary> operation = powerOperation(top().number);
    if (!operation) {
        return false;
    }
    pop(1);
    unary(*operation);
    return true;
}

void Compiler::unary(Unary operation) {
    const Operand operand = top();
    if (operand.place == Place::Constant) {
        const double value = valueOf(operation, operand.number);
        if (std::isfinite(value)) {
            top().number = value;
            return;
        }
    }
    if (operand.place == Place::Variable && operation == Unary::Square &&
        order_ == Order::Fastest) {
        top().place = Place::VV;
        top().op = Operator::Multiply;
        top().b = operand.a;
        return;
    }
    if (operand.place == Place::Variable) {
        Instruction instruction;
        instruction.opcode = opcodeOf(operation, true);
        instruction.a = operand.a;
        emitFresh(instruction);
    } else {
        loadTop();
        emit(opcodeOf(operation));
    }
    computed(1);
}

void Compiler::textRelation(Operator op) {
    freeAccumulator();
    emit(opcodeOf(Other::TextRelation)).b = static_cast<std::uint16_t>(op);
    computed(2);
}

// Calls

/// Arguments that functions find among the temporaries are stored as soon as they are complete.
void Compiler::argument(Function function, std::uint32_t number) {
    if (function == Function::If) {
        conditionalArgument(number);
        return;
    }
    const bool isFirstOfTwo =
        (function == Function::Mod || function == Function::Preci) && number == 1;
    const bool isStored = isFirstOfTwo ? top().place != Place::Constant
                                       : worksOnText(function) && top().place != Place::Text;
    if (isStored) {
        storeTop();
    }
}

void Compiler::call(Function function, std::uint32_t arguments) {
    if (function == Function::If) {
        closeConditional();
    } else if (worksOnText(function)) {
        callText(function, arguments);
    } else if (arguments == 1) {
        unary(unaryOf(function));
    } else {
        callOfTwo(function);
    }
}

void Compiler::callOfTwo(Function function) {
    const bool isMod = function == Function::Mod;
    if (top(1).place == Place::Constant && top().place == Place::Constant) {
        const double x = top(1).number;
        const double y = top().number;
        const double value =
            isMod ? engine::apply<Function::Mod>(x, y) : engine::apply<Function::Preci>(x, y);
        if (std::isfinite(value)) {
            replaceByConstant(2, value);
            return;
        }
    }
    if (top(1).place == Place::Constant) {
        storeTop(1);
    }
    loadTop();
    emit(opcodeOf(isMod ? Other::Mod : Other::Preci)).a = top(1).slot;
    computed(2);
}

void Compiler::callText(Function function, std::uint32_t arguments) {
    const FunctionInfo& info = infoOf(function);
    const auto numbers =
        static_cast<std::size_t>(std::count(info.parameters.begin(), info.parameters.end(), 'n'));
    freeAccumulator();
    Instruction& instruction = emit(opcodeOf(Other::CallText));
    instruction.a = numbers > 0 ? top(numbers - 1).slot : std::uint16_t{0};
    instruction.b = static_cast<std::uint16_t>(function);
    instruction.index = arguments;
    usesText_ = true;
    replace(arguments, {info.result == 't' ? Place::Text : Place::Accumulator});
}

// Conditions

/// Called with the condition on top. A known condition vanishes from the code.
void Compiler::openBranch(Other jump) {
    if (top().place == Place::Constant) {
        freeAccumulator();
        branches_.push_back({top().number != 0, seal(), 0});
        return;
    }
    loadTop();
    branches_.push_back({std::nullopt, 0, here()});
    emit(opcodeOf(jump));
    replaceByConstant(1, 0);
}

void Compiler::closeLogical(Operator op) {
    const Branch branch = branches_.back();
    branches_.pop_back();
    const bool deciding = op == Operator::Or;  // the value of the left side that decides alone
    if (branch.known == deciding) {
        dropCode(branch.begin);
        replaceByConstant(2, deciding ? 1 : 0);
        return;
    }
    if (!branch.known) {
        loadTop();
        land(branch.jump);
    }
    unary(Unary::Truth);
    replace(2, Operand(top()));
}

void Compiler::conditionalArgument(std::uint32_t argument) {
    if (argument == 1) {
        openBranch(Other::JumpIfFalse);
        return;
    }
    Branch& branch = branches_.back();
    const bool isNumber = top().place != Place::Text;
    if (branch.known) {
        const bool isChosen = *branch.known == (argument == 2);
        if (!isChosen) {
            dropCode(branch.begin);
            if (isNumber) {
                replaceByConstant(1, 0);
            }
        } else if (argument == 2) {
            freeAccumulator();
        }
        branch.begin = seal();
        return;
    }
    if (isNumber) {
        loadTop();
    }
    if (argument == 2) {
        const std::uint32_t end = here();
        emit(opcodeOf(Other::Jump));
        land(branch.jump);
        branch.jump = end;
        if (isNumber) {
            replaceByConstant(1, 0);
        }
    } else {
        land(branch.jump);
    }
}

void Compiler::closeConditional() {
    const bool takesThen = branches_.back().known.value_or(false);
    branches_.pop_back();
    const std::size_t chosen = takesThen ? 1 : 0;
    if (top(chosen).place == Place::Temporary) {
        loadTop(chosen);
    }
    replace(3, Operand(top(chosen)));
}

// Instructions

void Compiler::emit(const Instruction& instruction) {
    instructions_.push_back(instruction);
}

Instruction& Compiler::emit(Opcode opcode) {
    Instruction& instruction = instructions_.emplace_back();
    instruction.opcode = opcode;
    return instruction;
}

/// An instruction that takes nothing from the accumulator. It also does the work of a Store before
/// it.
void Compiler::emitFresh(Instruction instruction) {
    freeAccumulator();
    const bool isAfterStore = !instructions_.empty() && label_ != instructions_.size() &&
                              instructions_.back().opcode == opcodeOf(Other::Store);
    if (isAfterStore) {
        const std::uint16_t slot = instructions_.back().a;
        instructions_.pop_back();
        if (storesInC(instruction.opcode)) {
            instruction.c = slot;
        } else {
            instruction.index = slot;
        }
        instruction.opcode = static_cast<Opcode>(instruction.opcode + kStoresFirst);
    }
    emit(instruction);
}

/// The accumulator `op` a variable or a constant.
void Compiler::emitFusable(Operator op, const Operand& leaf) {
    if (fuse(op, leaf)) {
        return;
    }
    const bool isVariable = leaf.place == Place::Variable;
    Instruction& instruction = emit(opcodeOf(isVariable ? Shape::AV : Shape::AK, op));
    instruction.a = leaf.a;
    instruction.number = leaf.number;
    if (isArithmetic(op)) {
        fusable_ = instructions_.size();
    }
}

/// Lets the last instruction, if it is `A • V` or `A • K`, do `op` as well: with a variable or
/// constant on the right, or a temporary on the left.
bool Compiler::fuse(Operator op, const Operand& other) {
    if (!isArithmetic(op) || fusable_ != instructions_.size()) {
        return false;
    }
    Instruction& last = instructions_.back();
    const bool afterVariable = last.opcode < opcodeOf(Shape::AK, Operator::Add);
    const auto before = static_cast<Operator>(last.opcode % kOpcodesPerShape);
    if (other.place == Place::Variable) {
        last.opcode = opcodeOf(afterVariable ? Shape::AVV : Shape::AKV, before, op);
        (afterVariable ? last.b : last.a) = other.a;
    } else if (other.place == Place::Constant && afterVariable) {
        last.opcode = opcodeOf(Shape::AVK, before, op);
        last.number = other.number;
    } else if (other.place == Place::Temporary && afterVariable) {
        last.opcode = opcodeOf(Shape::T_AV, op, before);
        last.b = other.slot;
    } else {
        return false;
    }
    fusable_ = kNone;
    return true;
}

/// Makes `jump` lead to what comes next.
void Compiler::land(std::uint32_t jump) {
    instructions_[jump].index = here() - jump;
    seal();
}

/// Keeps what comes next from becoming part of the last instruction, or the other way round;
/// returns where it will be.
std::uint32_t Compiler::seal() {
    label_ = instructions_.size();
    fusable_ = kNone;
    return here();
}

void Compiler::dropCode(std::uint32_t begin) {
    instructions_.resize(begin);
    fusable_ = kNone;
}

// Operands

void Compiler::push(Operand operand) {
    if (operand.place == Place::Text) {
        usesText_ = true;
        textDepth_ =
            std::max(textDepth_, static_cast<std::uint32_t>(operands_.size()) - numbers_ + 1);
    } else {
        operand.slot = static_cast<std::uint16_t>(numbers_++);
    }
    if (operand.place == Place::Accumulator) {
        accumulator_ = operands_.size();
    }
    operands_.push_back(operand);
}

void Compiler::pop(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        numbers_ -= operands_.back().place == Place::Text ? 0 : 1;
        operands_.pop_back();
    }
    if (accumulator_ >= operands_.size()) {
        accumulator_ = kNone;
    }
}

/// The topmost `count` operands, all numbers, become a constant.
void Compiler::replaceByConstant(std::size_t count, double value) {
    pop(count);
    pushLeaf(Place::Constant, 0, value);
}

/// The topmost `count` operands become one.
void Compiler::replace(std::size_t count, const Operand& operand) {
    pop(count);
    push(operand);
}

/// The topmost `count` operands, numbers or two texts, become what is in the accumulator.
void Compiler::computed(std::size_t count) {
    if (top().place == Place::Text) {
        replace(count, {Place::Accumulator});
        return;
    }
    operands_.resize(operands_.size() - (count - 1));
    numbers_ -= static_cast<std::uint32_t>(count - 1);
    accumulator_ = operands_.size() - 1;
    top().place = Place::Accumulator;
}

/// Stores what is in the accumulator, if it is still wanted.
void Compiler::freeAccumulator() {
    if (accumulator_ == kNone) {
        return;
    }
    Operand& operand = operands_[accumulator_];
    operand.place = Place::Temporary;
    emit(opcodeOf(Other::Store)).a = operand.slot;
    temporaries_ = std::max(temporaries_, operand.slot + 1U);
    accumulator_ = kNone;
}

void Compiler::storeTop(std::size_t below) {
    loadTop(below);
    freeAccumulator();
}

/// Puts an operand into the accumulator.
void Compiler::loadTop(std::size_t below) {
    const std::size_t index = operands_.size() - 1 - below;
    Operand& operand = operands_[index];
    if (operand.place == Place::Accumulator) {
        return;
    }
    if (operand.isPair()) {
        const auto kind =
            static_cast<std::size_t>(operand.place) - static_cast<std::size_t>(Place::VV);
        Instruction instruction;
        instruction.opcode = opcodeOf(shapeFor(Shape::VV, kind), operand.op);
        instruction.a = operand.a;
        instruction.b = operand.b;
        instruction.number = operand.number;
        emitFresh(instruction);
    } else {
        freeAccumulator();
        if (operand.place == Place::Variable) {
            emit(opcodeOf(Other::LoadVariable)).index = operand.a;
        } else if (operand.place == Place::Constant) {
            emit(opcodeOf(Other::LoadConstant)).number = operand.number;
        } else {
            emit(opcodeOf(Other::LoadTemporary)).a = operand.slot;
        }
    }
    operand.place = Place::Accumulator;
    accumulator_ = index;
}

}  // namespace varo::engine
