#include "engine/language/types.h"

#include <numeric>

namespace varo::engine {

Misuse TypeInference::run(const Tree& tree, std::uint32_t variableCount) {
    misuse_ = {};
    operands_.clear();
    parents_.resize(kFirstVariable + variableCount);
    std::iota(parents_.begin(), parents_.end(), Class{0});
    for (const Node& node : tree) {
        visit(node);
    }
    return misuse_;
}

Type TypeInference::variableType(std::uint32_t index) {
    return find(kFirstVariable + index) == kText ? Type::Text : Type::Number;
}

Type TypeInference::resultType() {
    return !operands_.empty() && find(operands_.back()) == kText ? Type::Text : Type::Number;
}

TypeInference::Class TypeInference::find(Class member) {
    while (parents_[member] != member) {
        parents_[member] = parents_[parents_[member]];
        member = parents_[member];
    }
    return member;
}

/// Makes two classes one; false when they are decided and differ. Linking by index is enough: the
/// older variable, and before it the decided type, stays the root.
bool TypeInference::join(Class left, Class right) {
    const Class a = find(left);
    const Class b = find(right);
    if (a == b || a == kAnything || b == kAnything) {
        return true;
    }
    if (a <= kText && b <= kText) {
        return false;
    }
    if (a < b) {
        parents_[b] = a;
    } else {
        parents_[a] = b;
    }
    return true;
}

void TypeInference::visit(const Node& node) {
    switch (node.kind) {
        case NodeKind::Number:
            operands_.push_back(kNumber);
            break;
        case NodeKind::Text:
            operands_.push_back(kText);
            break;
        case NodeKind::Variable:
            operands_.push_back(kFirstVariable + node.extent.first);
            break;
        case NodeKind::Result:
            report(ErrorCode::ResultRead, node);
            operands_.push_back(kAnything);
            break;
        case NodeKind::Missing:
            operands_.push_back(kAnything);
            break;
        case NodeKind::LeftOperand:
            leftOperand(node);
            break;
        case NodeKind::Apply:
            apply(node);
            break;
        case NodeKind::UnknownFunction:
            report(ErrorCode::UnknownFunction, node);
            break;
        case NodeKind::Argument:
            argument(node);
            break;
        case NodeKind::Call:
            call(node);
            break;
    }
}

void TypeInference::leftOperand(const Node& node) {
    if (!isRelation(node.op)) {
        numberOperand(node);
    } else if (node.op == Operator::Like || node.op == Operator::Equal) {
        // A number is reported when the other side is known.
        join(operands_.back(), kText);
    }
}

void TypeInference::apply(const Node& node) {
    if (!isRelation(node.op)) {
        numberOperand(node);
        operands_.resize(operands_.size() - (isUnary(node.op) ? 1 : 2));
    } else if (node.op == Operator::Like || node.op == Operator::Equal) {
        textRelation(node);
    } else {
        relation(node);
    }
    operands_.push_back(kNumber);
}

void TypeInference::relation(const Node& node) {
    const Class right = operands_.back();
    operands_.pop_back();
    if (!join(operands_.back(), right)) {
        report(ErrorCode::MixedOperands, node);
    }
    operands_.pop_back();
}

void TypeInference::textRelation(const Node& node) {
    const bool rightIsText = join(operands_.back(), kText);
    operands_.pop_back();
    const bool leftIsText = join(operands_.back(), kText);
    operands_.pop_back();
    if (leftIsText != rightIsText) {
        report(ErrorCode::MixedOperands, node);
    } else if (!leftIsText) {
        report(ErrorCode::TextOperand, node);
    }
}

void TypeInference::numberOperand(const Node& node) {
    if (!join(operands_.back(), kNumber)) {
        report(ErrorCode::TextOperand, node);
    }
}

void TypeInference::argument(const Node& node) {
    if (node.function == Function::Unknown) {
        return;
    }
    const FunctionInfo& info = infoOf(node.function);
    const std::uint32_t number = node.extent.first;
    if (!info.takes(number)) {
        report(ErrorCode::TooManyArguments, node);
        return;
    }
    const Class given = operands_.back();
    switch (info.parameter(number)) {
        case ParameterType::Number:
            if (!join(given, kNumber)) {
                report(ErrorCode::NumberWanted, node, number);
            }
            break;
        case ParameterType::Text:
            if (!join(given, kText)) {
                report(ErrorCode::TextWanted, node, number);
            }
            break;
        case ParameterType::Any: {
            const bool isFirst = number == 1 || info.parameter(number - 1) != ParameterType::Any;
            const Class before = isFirst ? given : operands_[operands_.size() - 2];
            if (!join(before, given)) {
                report(find(before) == kText ? ErrorCode::TextWanted : ErrorCode::NumberWanted,
                       node, number);
            }
            break;
        }
    }
}

void TypeInference::call(const Node& node) {
    const FunctionInfo& info = infoOf(node.function);
    const std::size_t given = node.extent.first;
    const std::size_t wanted = info.parameters.size();
    if (given < wanted) {
        report(ErrorCode::TooFewArguments, node, node.extent.first + 1);
    }
    Class result = kAnything;
    switch (info.result) {
        case ParameterType::Number:
            result = kNumber;
            break;
        case ParameterType::Text:
            result = kText;
            break;
        case ParameterType::Any:
            if (wanted > 0 && given >= wanted) {
                result = operands_[operands_.size() - given + (wanted - 1)];
            }
            break;
    }
    operands_.resize(operands_.size() - given);
    operands_.push_back(result);
}

void TypeInference::report(ErrorCode code, const Node& node, std::uint32_t argument) {
    if (misuse_.code == ErrorCode::None) {
        const std::uint32_t size = node.kind == NodeKind::UnknownFunction ? node.extent.size : 0;
        misuse_ = {code, node.offset, argument, size, node.op, node.function};
    }
}

}  // namespace varo::engine
