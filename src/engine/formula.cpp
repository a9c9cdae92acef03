#include "engine/formula.h"

#include "engine/language/vocabulary.h"
#include "engine/machine/fast_steps.h"
#include "engine/machine/interpreter.h"
#include "engine/machine/row_block.h"
#include "engine/machine/text_machine.h"
#include "engine/program/program.h"
#include "engine/program/program_builder.h"
#include "engine/text/unicode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace varo::engine {
namespace {

constexpr std::size_t kLongestFormula = std::size_t{1} << 30;
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

Type typeOf(const Program& program, std::size_t variable) {
    return program.types.empty() ? Type::Number : program.types[variable];
}

/// The index of the first text variable; as many as there are types when there is none.
std::size_t firstText(const Program& program) {
    const auto text = std::find(program.types.begin(), program.types.end(), Type::Text);
    return static_cast<std::size_t>(text - program.types.begin());
}

bool hasTextVariable(const Program& program) {
    return firstText(program) < program.types.size();
}

[[gnu::noinline]] double runWithTemporaries(const Instruction* first, const double* variables) {
    double temporaries[kMostFastTemporaries];
    return first->step(first, variables, temporaries, 0, 0, 0);
}

/// The value of a program that is fit for the fast machine; not finite when the evaluation fails.
double runFast(const Program& program, const double* variables) {
    const Instruction* const first = program.code.instructions.data();
    return program.code.temporaries > kTemporariesInRegisters
               ? runWithTemporaries(first, variables)
               : first->step(first, variables, nullptr, 0, 0, 0);
}

/// Interprets `code`, which is in reading order. A text result is put into `text`.
bool runCarefully(const Code& code, std::span<const double> numbers,
                  std::span<const std::string> texts, double& number, std::string& text,
                  Error& error) {
    std::optional<TextMachine> machine;
    if (code.usesText) {
        machine.emplace(code, texts);
    }
    Failure failure;
    if (interpret(code, numbers.data(), machine ? &*machine : nullptr, number, failure)) {
        if (machine && machine->hasResult()) {
            text = machine->top();
        }
        return true;
    }
    error = {failure.code, 0, 0, std::move(failure.subject)};
    if (failure.code == ErrorCode::OutsideDomain) {
        error.subject = infoOf(failure.function).name;
    }
    return false;
}

/// Evaluates the rows of a table one by one, to tell why they fail.
class RowEvaluator {
  public:
    RowEvaluator(const Program& program, std::span<const Column> columns)
        : program_(program), columns_(columns), numbers_(columns.size()) {}

    /// The result of that row, or NaN with the reason in `error`.
    double evaluate(std::size_t row, Error& error) {
        std::transform(columns_.begin(), columns_.end(), numbers_.begin(),
                       [row](const Column& column) { return column[row]; });
        if (!std::all_of(numbers_.begin(), numbers_.end(),
                         [](double number) { return std::isfinite(number); })) {
            error.code = ErrorCode::NoValue;
            return kNoNumber;
        }
        if (program_.isFast()) {
            const double value = runFast(program_, numbers_.data());
            if (std::isfinite(value)) {
                return value;
            }
        }
        if (!code_) {
            code_ = carefulCode(program_);
        }
        double number = 0;
        std::string text;
        return runCarefully(*code_, numbers_, {}, number, text, error) ? number : kNoNumber;
    }

  private:
    const Program& program_;
    std::span<const Column> columns_;
    std::vector<double> numbers_;
    std::optional<Code> code_;
};

}  // namespace

Formula Formula::parse(std::string_view text) {
    if (text.size() > kLongestFormula) {
        throw std::length_error("formula too long");
    }
    return Formula(isWellFormed(text) ? buildProgram(text) : buildProgram(wellFormed(text)));
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
    const Program& program = programIn(block_);
    if (!isValid()) {
        error = this->error();
        return false;
    }
    if (const std::optional<std::size_t> missing = values.firstMissing()) {
        error = {ErrorCode::NoValue, 0, 0, std::string(variable(*missing).name)};
        return false;
    }
    double number = 0;
    if (program.isFast()) {
        const bool worked = evaluate(values.numbers(), number, error);
        result = worked ? Value(number) : std::move(result);
        return worked;
    }
    std::string text;
    if (!runCarefully(program.code, values.numbers(), values.texts(), number, text, error)) {
        return false;
    }
    result = program.resultType == Type::Text ? Value(std::move(text)) : Value(number);
    return true;
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

double Formula::operator()(std::span<const double> numbers) const {
    const Program& program = programIn(block_);
    if (numbers.size() >= program.numbersWanted) {
        return runFast(program, numbers.data());
    }
    double result = kNoNumber;
    Error error;
    evaluateSlowly(numbers, result, error);
    return result;
}

/// Evaluates what has no fast program, and whatever failed, to tell why.
bool Formula::evaluateSlowly(std::span<const double> numbers, double& result, Error& error) const {
    const Program& program = programIn(block_);
    if (!isValid()) {
        error = this->error();
        return false;
    }
    const std::size_t given =
        hasTextVariable(program) ? std::min(numbers.size(), firstText(program)) : numbers.size();
    if (given < variableCount()) {
        error = {ErrorCode::NoValue, 0, 0, std::string(variable(given).name)};
        return false;
    }
    double number = 0;
    std::string resultText;
    if (!runCarefully(carefulCode(program), numbers, {}, number, resultText, error)) {
        return false;
    }
    if (program.resultType == Type::Text) {
        error = {ErrorCode::NotANumber, 0, 0, std::move(resultText)};
        return false;
    }
    result = number;
    return true;
}

std::size_t Formula::evaluateRows(std::span<const Column> columns, std::span<double> results,
                                  std::span<ErrorCode> status) const {
    const Program& program = programIn(block_);
    const std::size_t variables = variableCount();
    const auto coversAll = [&](const Column& column) { return column.covers(results.size()); };
    const auto failAll = [&](ErrorCode code) {
        std::fill(results.begin(), results.end(), kNoNumber);
        std::fill(status.begin(), status.end(), code);
        return results.size();
    };
    if (!isValid()) {
        return failAll(program.error.code);
    }
    if (columns.size() < variables || hasTextVariable(program) ||
        !std::all_of(columns.begin(), columns.begin() + variables, coversAll)) {
        return failAll(ErrorCode::NoValue);
    }
    if (program.resultType == Type::Text) {
        return failAll(ErrorCode::NotANumber);
    }
    std::fill(status.begin(), status.end(), ErrorCode::None);
    RowEvaluator rows(program, columns.first(variables));
    std::size_t failures = 0;
    const auto evaluateRow = [&](std::size_t row) {
        Error error;
        results[row] = rows.evaluate(row, error);
        failures += error ? 1 : 0;
        if (!status.empty()) {
            status[row] = error.code;
        }
    };
    if (program.code.usesText) {
        for (std::size_t row = 0; row < results.size(); ++row) {
            evaluateRow(row);
        }
        return failures;
    }
    RowBlock block(program.code, columns.first(variables), results.size());
    for (std::size_t first = 0; first < results.size(); first += RowBlock::kRows) {
        const std::size_t count = std::min(RowBlock::kRows, results.size() - first);
        const RowBlock::Outcome outcome = block.run(first, count);
        if (outcome == RowBlock::Outcome::Complete) {
            std::copy_n(block.results().begin(), count, results.begin() + first);
            continue;
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (outcome == RowBlock::Outcome::Diverged || !std::isfinite(block.results()[i])) {
                evaluateRow(first + i);
            } else {
                results[first + i] = block.results()[i];
            }
        }
    }
    return failures;
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
