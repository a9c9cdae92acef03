#include "engine/program/code_writer.h"

#include "engine/machine/steps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace varo::engine {
namespace {

constexpr std::uint32_t kMostFusedIndex = 0xFFFF;

using Place = CodeWriter::Place;

/// 0 for Place::VV, 1 for VK, 2 for KV.
std::size_t kindOf(Place pair) {
    return static_cast<std::size_t>(pair) - static_cast<std::size_t>(Place::VV);
}

/// The shape `first` for Place::VV, and the two after it for VK and KV.
Shape shapeFor(Shape first, Place pair) {
    return static_cast<Shape>(static_cast<std::size_t>(first) + kindOf(pair));
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

}  // namespace

void CodeWriter::start(Order order) {
    order_ = order;
    instructions_.clear();
    operands_.clear();
    accumulator_ = kNone;
    fusable_ = kNone;
    label_ = kNone;
    numbers_ = 0;
    temporaries_ = 0;
    textDepth_ = 0;
}

// Operands that are read

void CodeWriter::variable(std::uint32_t index) {
    if (index <= kMostFusedIndex) {
        pushLeaf(Place::Variable, static_cast<std::uint16_t>(index), 0);
    } else {
        freeAccumulator();
        emit(opcodeOf(Other::LoadVariable)).index = index;
        push({Place::Accumulator});
    }
}

void CodeWriter::number(double value) {
    if (std::isfinite(value)) {
        pushLeaf(Place::Constant, 0, value);
    } else {
        freeAccumulator();
        emit(opcodeOf(Other::LoadConstant)).number = value;
        push({Place::Accumulator});
    }
}

void CodeWriter::text(Other operation, std::uint32_t index) {
    emit(opcodeOf(operation)).index = index;
    push({Place::Text});
}

// Operators

void CodeWriter::binary(Operator op) {
    if (op == Operator::Power && power()) {
        return;
    }
    if (op == Operator::Divide && isPowerOfTwo(top())) {
        op = Operator::Multiply;  // by the reciprocal: the same value in less time
        topForChange().number = 1 / top().number;
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
void CodeWriter::combineLeaves(Operator op) {
    const Operand left = top(1);
    const Operand right = top();
    const bool leftIsConstant = left.place == Place::Constant;
    const bool rightIsConstant = right.place == Place::Constant;
    if (leftIsConstant && rightIsConstant) {
        const double value = apply(op, left.number, right.number);
        if (std::isfinite(value)) {
            replaceByConstant(2, value);
        } else {
            loadTop(1);
            combineLoaded(op);
        }
        return;
    }
    pop(1);
    Operand& pair = topForChange();
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
bool CodeWriter::combineWithPair(Operator op) {
    const bool pairIsLeft = top(1).isPair();
    const Operand pair = pairIsLeft ? top(1) : top();
    const Operand other = pairIsLeft ? top() : top(1);
    if (!pair.isPair()) {
        return false;
    }
    Instruction parts;
    parts.a = pair.a;
    parts.b = pair.b;
    parts.number = pair.number;
    if (other.place == Place::Accumulator) {
        const bool fromLeft = pairIsLeft && !commutes(op);
        parts.opcode = fromLeft ? opcodeOf(shapeFor(Shape::VV_A, pair.place), pair.op, op)
                                : opcodeOf(shapeFor(Shape::A_VV, pair.place), op, pair.op);
        emit(parts);
    } else if (other.place == Place::Variable && pairIsLeft) {
        constexpr std::array kShapes{Shape::VVV, Shape::VKV, Shape::KVV};
        parts.opcode = opcodeOf(kShapes[kindOf(pair.place)], pair.op, op);
        (pair.place == Place::VV ? parts.c : parts.b) = other.a;
        emitFresh(parts);
    } else if (other.place == Place::Variable) {
        parts.opcode = opcodeOf(shapeFor(Shape::V_VV, pair.place), op, pair.op);
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
bool CodeWriter::isPowerOfTwo(const Operand& operand) {
    constexpr double kSmallest = 0x1p-1022;
    constexpr double kLargest = 0x1p1022;
    const double size = std::fabs(operand.number);
    constexpr std::uint64_t kFraction = (std::uint64_t{1} << 52) - 1;
    return operand.place == Place::Constant && size >= kSmallest && size <= kLargest &&
           (std::bit_cast<std::uint64_t>(size) & kFraction) == 0;
}

/// One operand is in the accumulator; the other is a variable, a constant or a temporary.
void CodeWriter::combineLoaded(Operator op) {
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
bool CodeWriter::power() {
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

void CodeWriter::unary(Unary operation) {
    const Operand operand = top();
    if (operand.place == Place::Constant) {
        const double value = apply(operation, operand.number);
        if (std::isfinite(value)) {
            topForChange().number = value;
            return;
        }
    }
    if (operand.place == Place::Variable && operation == Unary::Square &&
        order_ == Order::Fastest) {
        topForChange().place = Place::VV;
        topForChange().op = Operator::Multiply;
        topForChange().b = operand.a;
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

// Instructions

void CodeWriter::emit(const Instruction& instruction) {
    instructions_.push_back(instruction);
}

Instruction& CodeWriter::emit(Opcode opcode) {
    Instruction& instruction = instructions_.emplace_back();
    instruction.opcode = opcode;
    return instruction;
}

/// An instruction that takes nothing from the accumulator. It also does the work of a Store before
/// it.
void CodeWriter::emitFresh(Instruction instruction) {
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
void CodeWriter::emitFusable(Operator op, const Operand& leaf) {
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
bool CodeWriter::fuse(Operator op, const Operand& other) {
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

void CodeWriter::setTarget(std::uint32_t jump) {
    instructions_[jump].index = here() - jump;
    placeLabel();
}

std::uint32_t CodeWriter::placeLabel() {
    label_ = instructions_.size();
    fusable_ = kNone;
    return here();
}

void CodeWriter::dropCode(std::uint32_t begin) {
    instructions_.resize(begin);
    fusable_ = kNone;
}

// Operands

void CodeWriter::push(Operand operand) {
    if (operand.place == Place::Text) {
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

void CodeWriter::pop(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        numbers_ -= operands_.back().place == Place::Text ? 0 : 1;
        operands_.pop_back();
    }
    if (accumulator_ >= operands_.size()) {
        accumulator_ = kNone;
    }
}

void CodeWriter::replaceByConstant(std::size_t count, double value) {
    pop(count);
    pushLeaf(Place::Constant, 0, value);
}

void CodeWriter::replace(std::size_t count, const Operand& operand) {
    pop(count);
    push(operand);
}

void CodeWriter::computed(std::size_t count) {
    if (top().place == Place::Text) {
        replace(count, {Place::Accumulator});
        return;
    }
    operands_.resize(operands_.size() - (count - 1));
    numbers_ -= static_cast<std::uint32_t>(count - 1);
    accumulator_ = operands_.size() - 1;
    topForChange().place = Place::Accumulator;
}

void CodeWriter::freeAccumulator() {
    if (accumulator_ == kNone) {
        return;
    }
    Operand& operand = operands_[accumulator_];
    operand.place = Place::Temporary;
    emit(opcodeOf(Other::Store)).a = operand.slot;
    temporaries_ = std::max(temporaries_, operand.slot + 1U);
    accumulator_ = kNone;
}

void CodeWriter::storeTop(std::size_t below) {
    loadTop(below);
    freeAccumulator();
}

void CodeWriter::loadTop(std::size_t below) {
    const std::size_t index = operands_.size() - 1 - below;
    Operand& operand = operands_[index];
    if (operand.place == Place::Accumulator) {
        return;
    }
    if (operand.isPair()) {
        Instruction instruction;
        instruction.opcode = opcodeOf(shapeFor(Shape::VV, operand.place), operand.op);
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
