#include "engine/program/program_builder.h"

#include "engine/language/lexer.h"
#include "engine/language/parser.h"
#include "engine/language/types.h"
#include "engine/machine/fast_steps.h"
#include "engine/program/compiler.h"
#include "engine/text/unicode.h"

#include <string>
#include <vector>

namespace varo::engine {
namespace {

/// What parsing needs besides the formula. It is kept from one formula to the next, so that parsing
/// need not allocate.
struct Workspace {
    Lexer::Space lexing;
    Tree tree;
    PendingStack pending;
    TypeInference inference;
    std::vector<Type> types;
    Compiler compiler;
    std::string subject;

    void clear() {
        lexing.literals.clear();
        tree.clear();
        types.clear();
        subject.clear();
    }
};

/// The workspace, empty, for a formula of that size. What a huge one took up is given back.
Workspace& workspace(std::size_t formulaSize) {
    constexpr std::size_t kLarge = 65536;
    thread_local Workspace space;
    thread_local std::size_t lastSize = 0;
    if (lastSize > kLarge) {
        space = {};
    }
    lastSize = formulaSize;
    space.clear();
    return space;
}

void appendAsciiForm(std::string& text, std::string_view characters) {
    const char* const end = characters.data() + characters.size();
    for (const char* at = characters.data(); at != end;) {
        const Decoded next = decode(at, end);
        appendCharacter(text, asciiForm(next.character));
        at += next.bytes;
    }
}

std::uint32_t positionOf(std::string_view formula, std::uint32_t offset) {
    return static_cast<std::uint32_t>(characterCount(formula.substr(0, offset)) + 1);
}

/// `subject` is what the diagnosis views.
Diagnosis describe(const SyntaxError& error, std::string_view formula, std::string& subject) {
    if (error.code == ErrorCode::BadCharacter) {
        const std::string_view rest = formula.substr(error.offset);
        subject = rest.substr(0, byteOffset(rest, 1));
    }
    return {error.code, positionOf(formula, error.offset), 0, subject};
}

Diagnosis describe(const Misuse& misuse, std::string_view formula, std::string& subject) {
    switch (misuse.code) {
        case ErrorCode::UnknownFunction:
            appendAsciiForm(subject, formula.substr(misuse.offset, misuse.size));
            break;
        case ErrorCode::TextOperand:
        case ErrorCode::MixedOperands:
            subject = infoOf(misuse.op).spelling;
            break;
        case ErrorCode::NumberWanted:
        case ErrorCode::TextWanted:
        case ErrorCode::TooFewArguments:
        case ErrorCode::TooManyArguments:
            subject = infoOf(misuse.function).name;
            break;
        case ErrorCode::None:
        case ErrorCode::BadCharacter:
        case ErrorCode::Incomplete:
        case ErrorCode::Parentheses:
        case ErrorCode::UnclosedText:
        case ErrorCode::NestedTooDeeply:
        case ErrorCode::ResultRead:
        case ErrorCode::NoValue:
        case ErrorCode::DivisionByZero:
        case ErrorCode::OutsideDomain:
        case ErrorCode::Factorial:
        case ErrorCode::Power:
        case ErrorCode::OutOfRange:
        case ErrorCode::NotANumber:
            break;
    }
    return {misuse.code, positionOf(formula, misuse.offset), misuse.argument, subject};
}

struct Parsed {
    SyntaxError error;
    bool isNumeric;
};

/// Parses `formula` into the workspace.
Parsed parse(std::string_view formula, Parser::Marks marks, Workspace& space) {
    space.lexing.variables.start(formula);
    Lexer lexer(formula, space.lexing);
    Parser parser(lexer, marks, space.tree, space.pending);
    const SyntaxError error = parser.run();
    return {error, parser.isPlainlyNumeric()};
}

/// Finds the types of all variables; for formulas that are not plainly numeric.
Misuse inferTypes(std::string_view formula, Workspace& space) {
    space.tree.clear();
    space.lexing.literals.clear();
    parse(formula, Parser::Marks::ForTypes, space);
    const Misuse misuse = space.inference.run(space.tree, space.lexing.variables.size());
    for (std::uint32_t i = 0; i < space.lexing.variables.size(); ++i) {
        space.types.push_back(space.inference.variableType(i));
    }
    return misuse;
}

bool fitsFastMachine(const Code& code) {
    return code.instructions.size() <= kMostFastInstructions &&
           code.temporaries <= kMostFastTemporaries;
}

Code compile(Compiler::Order order, Workspace& space) {
    space.compiler.run(order, space.tree, space.types, space.lexing.literals);
    return space.compiler.code();
}

}  // namespace

ProgramBlock buildProgram(std::string_view formula) {
    Workspace& space = workspace(formula.size());
    const Parsed parsed = parse(formula, Parser::Marks::ForNumbers, space);
    const Misuse misuse = parsed.isNumeric ? Misuse{} : inferTypes(formula, space);
    const VariableNames names = space.lexing.variables.names();
    const Type resultType = parsed.isNumeric ? Type::Number : space.inference.resultType();
    const auto invalid = [&](const Diagnosis& error) {
        return assemble({{}, Program::kNever, names, 0, space.types, resultType, error});
    };
    if (parsed.error.code != ErrorCode::None) {
        return invalid(describe(parsed.error, formula, space.subject));
    }
    if (misuse.code != ErrorCode::None) {
        return invalid(describe(misuse, formula, space.subject));
    }
    if (parsed.isNumeric) {
        const Code code = compile(Compiler::Order::Fastest, space);
        if (fitsFastMachine(code)) {
            return assemble(
                {code, names.entries.size(), names, formula.size(), {}, resultType, {}});
        }
    }
    const Code code = compile(Compiler::Order::Reading, space);
    return assemble({code, Program::kNever, names, 0, space.types, resultType, {}});
}

Code carefulCode(const Program& program) {
    if (!program.isFast()) {
        return program.code;
    }
    Workspace& space = workspace(program.sourceSize);
    parse(program.source(), Parser::Marks::ForNumbers, space);
    return compile(Compiler::Order::Reading, space);
}

}  // namespace varo::engine
