#include "engine/formula.h"

#include "engine/compiler.h"
#include "engine/fast_steps.h"
#include "engine/interpreter.h"
#include "engine/lexer.h"
#include "engine/parser.h"
#include "engine/program.h"
#include "engine/row_block.h"
#include "engine/text_machine.h"
#include "engine/types.h"
#include "engine/unicode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace varo::engine {
namespace {

[[gnu::noinline]] double runWithTemporaries(const Instruction* first, const double* variables) {
    double temporaries[kMostFastTemporaries];
    return first->step(first, variables, temporaries, 0, 0, 0);
}

Type typeOf(const Program& program, std::size_t variable) {
    return program.types.empty() ? Type::Number : program.types[variable];
}

/// Runs a program that is fit for the fast machine.
double runFast(const Program& program, const double* variables) {
    const Instruction* const first = firstInstruction(program);
    return program.code.temporaries > kTemporariesInRegisters
               ? runWithTemporaries(first, variables)
               : first->step(first, variables, nullptr, 0, 0, 0);
}

constexpr std::size_t kLongestFormula = std::size_t{1} << 30;

/// What parsing needs besides the formula. It is kept from one formula to the next, so that parsing
/// need not allocate.
struct Workspace {
    Lexer::Space lexing;
    Tree tree;
    std::vector<Pending> pending;
    TypeInference inference;
    std::vector<Type> types;
    Compiler compiler;
    std::string subject;

    void clear() {
        lexing.variables.clear();
        lexing.literals.clear();
        tree.clear();
        pending.clear();
        types.clear();
        subject.clear();
    }
};

constexpr std::size_t kLargestKeptTree = 4096;

Workspace& workspace() {
    thread_local Workspace space;
    if (space.tree.capacity() > kLargestKeptTree) {
        space = {};
    }
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
        case ErrorCode::ResultRead:
            break;
        default:
            subject = infoOf(misuse.function).name;
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
    Lexer lexer(formula, space.lexing);
    Parser parser(lexer, marks, space.tree, space.pending);
    const SyntaxError error = parser.run();
    return {error, parser.isPlainlyNumeric()};
}

/// Finds the types of all variables; for formulas that are not plainly numeric.
Misuse inferTypes(std::string_view formula, Workspace& space) {
    space.tree.clear();
    space.pending.clear();
    space.lexing.literals.clear();
    parse(formula, Parser::Marks::ForTypes, space);
    const Misuse misuse = space.inference.run(space.tree, space.lexing.variables.size());
    for (std::uint32_t i = 0; i < space.lexing.variables.size(); ++i) {
        space.types.push_back(space.inference.variableType(i));
    }
    return misuse;
}

bool isFast(const Code& code) {
    return !code.usesText && code.instructions.size() <= kMostFastInstructions &&
           code.temporaries <= kMostFastTemporaries;
}

/// `formula` must be well-formed.
ProgramBlock build(std::string_view formula) {
    Workspace& space = workspace();
    const Parsed parsed = parse(formula, Parser::Marks::ForNumbers, space);
    const Misuse misuse = parsed.isNumeric ? Misuse{} : inferTypes(formula, space);
    const VariableNames names = space.lexing.variables.names();
    const Type resultType = parsed.isNumeric ? Type::Number : space.inference.resultType();
    constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
    if (parsed.error.code != ErrorCode::None) {
        return assemble({{},
                         never,
                         names,
                         space.types,
                         resultType,
                         describe(parsed.error, formula, space.subject)});
    }
    if (misuse.code != ErrorCode::None) {
        return assemble(
            {{}, never, names, space.types, resultType, describe(misuse, formula, space.subject)});
    }
    space.compiler.run(space.tree, space.types, space.lexing.literals);
    const Code code = space.compiler.code();
    const std::size_t numbersWanted = isFast(code) ? names.entries.size() : never;
    return assemble({code, numbersWanted, names, space.types, resultType, {}});
}

}  // namespace

Formula Formula::parse(std::string_view text) {
    if (text.size() > kLongestFormula) {
        throw std::length_error("formula too long");
    }
    return Formula(isWellFormed(text) ? build(text) : build(wellFormed(text)));
}

Formula::Formula(std::unique_ptr<std::byte[]> block) : block_(std::move(block)) {}
Formula::Formula(Formula&&) noexcept = default;
Formula& Formula::operator=(Formula&&) noexcept = default;
Formula::~Formula() = default;

bool Formula::isValid() const {
    return programIn(block_).error.code == ErrorCode::None;
}

Error Formula::error() const {
    const Diagnosis& error = programIn(block_).error;
    return {error.code, error.position, static_cast<std::int32_t>(error.argument),
            std::string(error.subject)};
}

std::size_t Formula::variableCount() const {
    return programIn(block_).names.entries.size();
}

Variable Formula::variable(std::size_t index) const {
    const Program& program = programIn(block_);
    return {program.names.name(static_cast<std::uint32_t>(index)), typeOf(program, index)};
}

std::optional<std::size_t> Formula::indexOf(std::string_view name) const {
    std::string folded;
    appendFolded(folded, name);
    const std::uint32_t index = programIn(block_).names.find(folded);
    return index == VariableNames::kNone ? std::nullopt : std::optional<std::size_t>(index);
}

Type Formula::resultType() const {
    return programIn(block_).resultType;
}

bool Formula::evaluate(const Values& values, Value& result, Error& error) const {
    if (isValid()) {
        if (const std::optional<std::size_t> missing = values.firstMissing()) {
            error = {ErrorCode::NoValue, 0, 0, std::string(variable(*missing).name)};
            return false;
        }
    }
    double number = 0;
    if (resultType() == Type::Number) {
        if (!run(values.numbers(), values.texts(), number, nullptr, error)) {
            return false;
        }
        result = number;
        return true;
    }
    std::string text;
    if (!run(values.numbers(), values.texts(), number, &text, error)) {
        return false;
    }
    result = std::move(text);
    return true;
}

double Formula::operator()(std::span<const double> numbers) const {
    const Program& program = programIn(block_);
    if (numbers.size() >= program.numbersWanted) {
        return runFast(program, numbers.data());
    }
    double result = 0;
    Error error;
    return evaluateSlowly(numbers, result, error) ? result
                                                  : std::numeric_limits<double>::quiet_NaN();
}

bool Formula::evaluate(std::span<const double> numbers, double& result, Error& error) const {
    const Program& program = programIn(block_);
    if (numbers.size() >= program.numbersWanted) {
        const double value = runFast(program, numbers.data());
        if (std::isfinite(value)) {
            result = value;
            return true;
        }
    }
    return evaluateSlowly(numbers, result, error);
}

/// Evaluates what has no fast program, and whatever failed, to tell why.
bool Formula::evaluateSlowly(std::span<const double> numbers, double& result, Error& error) const {
    const Program& program = programIn(block_);
    std::size_t missing = numbers.size();
    if (program.code.usesText) {
        const auto text = std::find(program.types.begin(), program.types.end(), Type::Text);
        missing = std::min(missing, static_cast<std::size_t>(text - program.types.begin()));
    }
    if (missing < variableCount() && isValid()) {
        error = {ErrorCode::NoValue, 0, 0, std::string(variable(missing).name)};
        return false;
    }
    return run(numbers, {}, result, nullptr, error);
}

std::size_t Formula::evaluateRows(std::span<const Column> columns, std::span<double> results,
                                  std::span<ErrorCode> status) const {
    const Program& program = programIn(block_);
    const std::size_t variables = variableCount();
    const bool isCovered =
        columns.size() >= variables &&
        std::all_of(columns.begin(), columns.begin() + static_cast<std::ptrdiff_t>(variables),
                    [&](const Column& column) { return column.covers(results.size()); });
    const bool isNumeric = program.error.code == ErrorCode::None && !program.code.usesText;
    if (!isCovered) {
        const ErrorCode code = isValid() ? ErrorCode::NoValue : program.error.code;
        std::fill(results.begin(), results.end(), std::numeric_limits<double>::quiet_NaN());
        std::fill(status.begin(), status.end(), code);
        return results.size();
    }
    std::fill(status.begin(), status.end(), ErrorCode::None);
    std::size_t failures = 0;
    std::vector<double> row(variables);
    Error error;
    const auto evaluateRow = [&](std::size_t index) {
        std::transform(columns.begin(), columns.begin() + static_cast<std::ptrdiff_t>(variables),
                       row.begin(), [index](const Column& column) { return column[index]; });
        if (!evaluate(row, results[index], error)) {
            results[index] = std::numeric_limits<double>::quiet_NaN();
            ++failures;
            if (!status.empty()) {
                status[index] = error.code;
            }
        }
    };
    if (!isNumeric) {
        for (std::size_t i = 0; i < results.size(); ++i) {
            evaluateRow(i);
        }
        return failures;
    }
    RowBlock block(program.code, columns.first(variables));
    for (std::size_t first = 0; first < results.size(); first += RowBlock::kRows) {
        const std::size_t rows = std::min(RowBlock::kRows, results.size() - first);
        const RowBlock::Outcome outcome = block.run(first, results.subspan(first, rows));
        for (std::size_t i = first; i < first + rows && outcome != RowBlock::Outcome::Complete;
             ++i) {
            if (outcome == RowBlock::Outcome::Parted || !std::isfinite(results[i])) {
                evaluateRow(i);
            }
        }
    }
    return failures;
}

bool Formula::run(std::span<const double> numbers, std::span<const std::string> texts,
                  double& number, std::string* text, Error& error) const {
    const Program& program = programIn(block_);
    if (program.error.code != ErrorCode::None) {
        error = this->error();
        return false;
    }
    Failure failure;
    std::optional<TextMachine> machine;
    if (program.code.usesText) {
        machine.emplace(program.code, texts);
    }
    if (interpret(program.code, numbers.data(), machine ? &*machine : nullptr, number, failure)) {
        if (text != nullptr) {
            *text = machine->top();
        }
        return true;
    }
    error = {failure.code, 0, 0, std::move(failure.subject)};
    if (failure.code == ErrorCode::OutsideDomain) {
        error.subject = infoOf(failure.function).name;
    }
    return false;
}

Values::Values(const Formula& formula)
    : formula_(&formula), numbers_(formula.variableCount()), given_(formula.variableCount()) {
    for (std::size_t i = 0; i < numbers_.size() && texts_.empty(); ++i) {
        if (formula.variable(i).type == Type::Text) {
            texts_.resize(numbers_.size());
        }
    }
}

bool Values::set(std::size_t index, double number) {
    if (!accepts(index, Type::Number) || !std::isfinite(number)) {
        return false;
    }
    numbers_[index] = number;
    given_[index] = true;
    return true;
}

bool Values::set(std::size_t index, std::string_view text) {
    if (!accepts(index, Type::Text)) {
        return false;
    }
    texts_[index] = isWellFormed(text) ? std::string(text) : wellFormed(text);
    given_[index] = true;
    return true;
}

bool Values::set(std::string_view name, double number) {
    const std::optional<std::size_t> index = formula_->indexOf(name);
    return index && set(*index, number);
}

bool Values::set(std::string_view name, std::string_view text) {
    const std::optional<std::size_t> index = formula_->indexOf(name);
    return index && set(*index, text);
}

std::optional<std::size_t> Values::firstMissing() const {
    const auto missing = std::find(given_.begin(), given_.end(), false);
    return missing == given_.end()
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(missing - given_.begin()));
}

bool Values::accepts(std::size_t index, Type type) const {
    return index < numbers_.size() && formula_->variable(index).type == type;
}

}  // namespace varo::engine
