#pragma once

// From their own folder, so that the installed headers find each other, too.
#include "column.h"
#include "error.h"
#include "value_type.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace varo::engine {

class Values;

/// A number or a text.
using Value = std::variant<double, std::string>;

/// An input variable of a formula.
struct Variable {
    std::string_view name;  ///< as it first occurs; owned by the formula, wherever that is moved
    Type type;
};

/// A formula, parsed once and then evaluated as often as wanted, each time with other values of its
/// variables:
///
///     const auto formula = Formula::parse("b*h^2/6");
///     Values values(formula);
///     values.set("b", 0.3);
///     values.set("h", 0.6);
///     Value result;
///     Error error;
///     if (formula.evaluate(values, result, error)) {
///         use(std::get<double>(result));  // resultType() says that it is a number
///     } else {
///         show(error.text());
///     }
///
/// There are three ways to evaluate: with Values, which check what they are given and hold texts,
/// too; with an array of numbers, which allocates nothing; with a column of numbers for each
/// variable, for all rows of a table in one call. All give the same, bit for bit.
///
/// Operations that the language leaves to the C library are within one unit in the last place of
/// its values; `+ - * /` and the comparisons are exactly those of doubles.
///
/// A formula never changes, so that threads may share it. What is wrong with a formula or with a
/// value is told by an Error, never by an exception; any function may throw std::bad_alloc when
/// memory runs out. Texts are UTF-8; a byte that does not belong to it reads as U+FFFD.
class Formula {
  public:
    /// Parses `text`. Never fails: a formula with an error tells it, and its variables all the
    /// same. Throws std::length_error for a text of more than 1 GiB.
    static Formula parse(std::string_view text);

    /// A formula that was moved from may only be assigned to or destroyed.
    Formula(Formula&&) noexcept;
    Formula& operator=(Formula&&) noexcept;
    ~Formula();

    /// True when the formula can be evaluated.
    bool isValid() const;

    /// What is wrong with the formula; an Error without a code when it is valid.
    Error error() const;

    /// The input variables, in order of first occurrence. They are complete even if the formula is
    /// not valid; the types are then those that the part before the error tells.
    std::size_t variableCount() const;

    /// The variable with that index, which is below variableCount().
    Variable variable(std::size_t index) const;

    /// The index of the variable with that name, without regard to letter case; nothing when there
    /// is none.
    std::optional<std::size_t> indexOf(std::string_view name) const;

    /// The type of the result. In a formula with an error it is what the outermost function or
    /// operator promises, else Type::Number.
    Type resultType() const;

    /// Evaluates with `values`, which must have been made for this formula. True with the value, of
    /// resultType(), in `result`; else false with the reason in `error`, which is error() when the
    /// formula is not valid, and `result` as it was. Every variable needs a value, also one in a
    /// branch of If that is not taken.
    bool evaluate(const Values& values, Value& result, Error& error) const;

    /// The same for a formula without text variables and with a number as result: `numbers` holds a
    /// finite number for each variable, by its index. A variable that it leaves out has no value.
    /// Allocates nothing unless the formula works on texts or fails. A text as result is an error,
    /// too: ErrorCode::NotANumber.
    bool evaluate(std::span<const double> numbers, double& result, Error& error) const;

    /// The number that evaluate() would put into `result`, as fast as it can be had; not finite
    /// when evaluating fails. To tell why, evaluate() goes through the formula again.
    double operator()(std::span<const double> numbers) const;

    /// The same for every row of a table, many rows at a time: `columns` holds a column for each
    /// variable, which covers results.size() rows. `results` may be the memory of a column, from
    /// its first row on. Each result is bit for bit the one that evaluating its row alone gives;
    /// where that fails, `results` gets NaN and `status` the reason. `status` is as long as
    /// `results`, or empty if the reasons are of no interest; the whole error is told by evaluating
    /// that row alone. Returns the number of rows that failed. A number in a column that is not
    /// finite is a missing value. A formula that has an error, a text variable or a text as result,
    /// and a missing or too short column fail every row.
    std::size_t evaluateRows(std::span<const Column> columns, std::span<double> results,
                             std::span<ErrorCode> status) const;

  private:
    explicit Formula(std::unique_ptr<std::byte[]> block);
    bool evaluateSlowly(std::span<const double> numbers, double& result, Error& error) const;

    std::unique_ptr<std::byte[]> block_;  // a Program and what it refers to
};

/// Values for the variables of one formula. Each thread that evaluates uses an object of its own.
class Values {
  public:
    /// No variable has a value yet. `formula` must outlive the object and stay where it is.
    explicit Values(const Formula& formula);

    /// Gives variable `index`, or the one of that name, a value. A text is read as UTF-8. False,
    /// and nothing changes, when there is no such variable of that type or the number is not
    /// finite.
    bool set(std::size_t index, double number);
    bool set(std::size_t index, std::string_view text);
    bool set(std::string_view name, double number);
    bool set(std::string_view name, std::string_view text);

    /// The first variable without a value.
    std::optional<std::size_t> firstMissing() const;

    /// The values by the variables' indices; what stands at the index of a variable of the other
    /// type means nothing.
    std::span<const double> numbers() const { return numbers_; }
    std::span<const std::string> texts() const { return texts_; }

  private:
    bool accepts(std::size_t index, Type type) const;

    const Formula* formula_;
    std::vector<double> numbers_;
    std::vector<std::string> texts_;  // empty when the formula has no text variable
    std::vector<bool> given_;
};

}  // namespace varo::engine
