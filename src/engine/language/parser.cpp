#include "engine/language/parser.h"

namespace varo::engine {

SyntaxError Parser::run() {
    *bottom_ = {};
    Token token;
    for (bool more = true; more;) {
        lexer_.next(token);
        more = operandWanted_ ? operand(token) : afterOperand(token);
    }
    complete();
    return error_;
}

bool Parser::operand(const Token& token) {
    switch (token.kind) {
        case TokenKind::Number:
            emit(NodeKind::Number, token);
            return true;
        case TokenKind::Text:
            isPlainlyNumeric_ = false;
            emit(NodeKind::Text, token);
            return true;
        case TokenKind::Variable:
            emit(NodeKind::Variable, token);
            return true;
        case TokenKind::Result:
            isPlainlyNumeric_ = false;
            emit(NodeKind::Result, token);
            return true;
        case TokenKind::Operator:
            return prefixOperator(token);
        case TokenKind::LeftParenthesis:
            return open({Pending::Kind::Group, 0, {}, {}, token.offset});
        case TokenKind::Function:
            if (token.function == Function::Unknown) {
                emit(NodeKind::UnknownFunction, token);
                operandWanted_ = true;
            }
            skipToken();  // the parenthesis that makes it a function
            return open({Pending::Kind::Call, 0, {}, token.function, token.offset});
        case TokenKind::RightParenthesis:
            return closeParenthesis(token);
        case TokenKind::UnclosedText:
            return fail(ErrorCode::UnclosedText, token.offset);
        case TokenKind::End:
            return fail(ErrorCode::Incomplete, token.offset);
        case TokenKind::Comma:
        case TokenKind::BadCharacter:
            break;
    }
    return fail(ErrorCode::BadCharacter, token.offset);
}

bool Parser::afterOperand(const Token& token) {
    switch (token.kind) {
        case TokenKind::Operator:
            if (token.op == Operator::Factorial) {
                emit(NodeKind::Apply, token);
                return true;
            }
            return binaryOperator(token);
        case TokenKind::RightParenthesis:
            return closeParenthesis(token);
        case TokenKind::Comma:
            applyTighterThan(0);
            if (top_->kind != Pending::Kind::Call) {
                return fail(ErrorCode::BadCharacter, token.offset);
            }
            completeArgument();
            operandWanted_ = true;
            return true;
        case TokenKind::UnclosedText:
            return fail(ErrorCode::UnclosedText, token.offset);
        case TokenKind::End:
            return openParentheses_ > 0 && fail(ErrorCode::Parentheses, token.offset);
        case TokenKind::Number:
        case TokenKind::Text:
        case TokenKind::Variable:
        case TokenKind::Result:
        case TokenKind::Function:
        case TokenKind::LeftParenthesis:
        case TokenKind::BadCharacter:
            break;
    }
    return fail(ErrorCode::BadCharacter, token.offset);
}

bool Parser::binaryOperator(const Token& token) {
    if (token.op == Operator::Not) {
        return fail(ErrorCode::BadCharacter, token.offset);
    }
    if (token.op == Operator::Like || token.op == Operator::Equal) {
        isPlainlyNumeric_ = false;
    }
    const std::uint8_t level = infoOf(token.op).level;
    const bool rightToLeft = token.op == Operator::Power;
    applyTighterThan(rightToLeft ? level : static_cast<std::uint8_t>(level - 1));
    if (marks_ == Marks::ForTypes || token.op == Operator::And || token.op == Operator::Or) {
        emit(NodeKind::LeftOperand, token);
    }
    return open({Pending::Kind::Binary, level, token.op, {}, token.offset});
}

bool Parser::closeParenthesis(const Token& token) {
    if (openParentheses_ == 0) {
        return fail(ErrorCode::Parentheses, token.offset);
    }
    if (operandWanted_) {
        const Pending& top = *top_;
        if (top.kind != Pending::Kind::Call || top.arguments > 0) {
            return fail(ErrorCode::BadCharacter, token.offset);
        }
    } else {
        applyTighterThan(0);
        if (top_->kind == Pending::Kind::Call) {
            completeArgument();
        }
    }
    closeTop();
    operandWanted_ = false;
    return true;
}

bool Parser::prefixOperator(const Token& token) {
    if (token.op != Operator::Add && token.op != Operator::Subtract && token.op != Operator::Not) {
        return fail(ErrorCode::BadCharacter, token.offset);
    }
    const Operator op = token.op == Operator::Add        ? Operator::Plus
                        : token.op == Operator::Subtract ? Operator::Minus
                                                         : Operator::Not;
    return open({Pending::Kind::Prefix, infoOf(op).level, op, {}, token.offset});
}

bool Parser::open(const Pending& pending) {
    if (top_ - bottom_ == kMaxNesting) {
        return fail(ErrorCode::NestedTooDeeply, pending.offset);
    }
    *++top_ = pending;
    openParentheses_ += pending.kind < Pending::Kind::Prefix ? 1 : 0;
    operandWanted_ = true;
    return true;
}

TokenKind Parser::skipToken() {
    Token token;
    lexer_.next(token);
    return token.kind;
}

bool Parser::fail(ErrorCode code, std::uint32_t offset) {
    error_ = {code, offset};
    return false;
}

void Parser::complete() {
    if (error_.code != ErrorCode::None) {
        while (skipToken() != TokenKind::End) {
        }
        if (operandWanted_) {
            emit(NodeKind::Missing, {});
        }
    }
    applyTighterThan(0);
    while (top_->kind != Pending::Kind::Bottom) {
        if (top_->kind == Pending::Kind::Call) {
            completeArgument();
        }
        closeTop();
        applyTighterThan(0);
    }
}

void Parser::emit(NodeKind kind, const Token& token) {
    Node node{kind, token.op, token.function, token.offset, {}};
    if (kind == NodeKind::Number) {
        node.number = token.number;
    } else {
        node.extent = token.extent;
    }
    tree_.push_back(node);
    operandWanted_ = false;
}

/// Applies the operators on top of the stack whose level is above `level`, down to the nearest
/// parenthesis.
void Parser::applyTighterThan(std::uint8_t level) {
    while (top_->level > level) {
        tree_.push_back({NodeKind::Apply, top_->op, {}, top_->offset, {}});
        --top_;
    }
}

void Parser::completeArgument() {
    Pending& call = *top_;
    ++call.arguments;
    if (marks_ == Marks::ForNumbers && infoOf(call.function).parameters.size() < 2) {
        return;
    }
    tree_.push_back({NodeKind::Argument, {}, call.function, call.offset, {}});
    tree_.back().extent.first = call.arguments;
}

void Parser::closeTop() {
    const Pending& top = *top_;
    if (top.kind == Pending::Kind::Call) {
        const FunctionInfo& info = infoOf(top.function);
        if (top.arguments != info.parameters.size() || !info.isOfNumbers()) {
            isPlainlyNumeric_ = false;
        }
        tree_.push_back({NodeKind::Call, {}, top.function, top.offset, {}});
        tree_.back().extent.first = top.arguments;
    }
    --top_;
    --openParentheses_;
}

}  // namespace varo::engine
