#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace varo::engine {

/// What an operation of CalcEngine answers. Zero is success; every failure is negative and leaves
/// the output arguments as they were, and the engine too, but that Calculate has then forgotten the
/// last result.
enum class Status : std::int32_t {
    Ok = 0,
    Failed = -1,           ///< memory ran out
    IndexOutOfRange = -2,  ///< no variable has that index
    UnknownName = -3,      ///< no variable has that name and the type asked for
    InvalidArgument = -4,  ///< an empty name, a kind that does not exist, a number not finite
};

/// The calculation engine as a host drives it: parse a formula, ask for its variables, give them
/// values, calculate, fetch the result or the error. One object serves one calculation at a time.
///
/// The order of a calculation: ResetEngine, ParseFormula, SetNumVar / SetTextVar for the variables,
/// BindNumVar for the result, Calculate, then GetErrorInfo when it reports failure, else
/// GetCalcState and GetErrorText or the bound number or GetTextVar.
///
/// Texts are UTF-8. Names compare without regard to letter case. No operation throws.
class CalcEngine {
  public:
    /// The kinds of SetNumVar and SetTextVar.
    static constexpr std::int32_t kInput = 1;
    static constexpr std::int32_t kOutput = 2;

    /// The types that GetVarType and GetResultType answer; 0 reads as a number, too.
    static constexpr std::int32_t kNumber = 1;
    static constexpr std::int32_t kText = 2;

    CalcEngine() noexcept;
    ~CalcEngine();
    CalcEngine(const CalcEngine&) = delete;
    CalcEngine& operator=(const CalcEngine&) = delete;

    /// Gives the variable `name` the number `value`. With kind 2 it only declares the output
    /// variable. `formula` is accepted for the sake of the protocol and not looked at.
    Status SetNumVar(std::int32_t kind, std::string_view name, double value,
                     std::string_view formula) noexcept;

    /// Makes every successful Calculate write the number of the variable `name` (an input variable,
    /// or "Result") into `target`, which must live until the next ResetEngine or be bound to no
    /// more calculation. A failed calculation and a text variable leave it untouched.
    Status BindNumVar(std::string_view name, double& target) noexcept;

    /// Forgets the formula, the values, the bindings and the last result.
    Status ResetEngine() noexcept;

    /// `state` becomes 1 when the last Calculate gave a valid result, else 0.
    Status GetCalcState(std::int32_t& state) noexcept;

    /// `count` becomes the number of input variables of the parsed formula; 0 before ParseFormula.
    Status GetVarCount(std::int32_t& count) noexcept;

    /// Parses `formula`. `status` becomes 1 when it is complete and free of errors, else 0; the
    /// variables are available either way.
    Status ParseFormula(std::string_view formula, std::int32_t& status) noexcept;

    /// `name` becomes the name of input variable `index` (from 1), spelled as in the formula.
    Status GetVarName(std::int32_t index, std::string& name) noexcept;

    /// `text` becomes the message of the last Calculate that gave no valid result, or "".
    Status GetErrorText(std::string& text) noexcept;

    /// Gives the variable `name` the text `value`; otherwise as SetNumVar.
    Status SetTextVar(std::int32_t kind, std::string_view name, std::string_view value,
                      std::string_view formula) noexcept;

    /// `type` becomes the type of the parsed formula's result: 1 number, 2 text; 0 before
    /// ParseFormula.
    Status GetResultType(std::int32_t& type) noexcept;

    /// `type` becomes the type of input variable `index` (from 1): 1 number, 2 text.
    Status GetVarType(std::int32_t index, std::int32_t& type) noexcept;

    /// `value` becomes the text of the variable `name`: of a text variable that was given one, or
    /// of "Result" after a calculation with a text result.
    Status GetTextVar(std::string_view name, std::string& value) noexcept;

    /// Evaluates `formula` with the values given since ResetEngine, parsing it only when it is not
    /// the parsed one. `success` becomes 0 when a function has a wrong argument (see GetErrorInfo),
    /// else 1; whether there is a result then tells GetCalcState. `reserved` is neither read nor
    /// written.
    Status Calculate(std::string_view formula, std::int32_t& success,
                     std::int32_t& reserved) noexcept;

    /// Describes the wrong argument that made Calculate report failure: `kind` 1 a number is
    /// wanted, 2 a text is wanted, 3 an argument is missing, 0 there was no such failure;
    /// `position` is the place of the function in the formula, in characters from 1; `argument` the
    /// number of the argument, from 1; `function` the function's name in its canonical spelling.
    /// `reserved` is neither read nor written.
    Status GetErrorInfo(std::int32_t& reserved, std::int32_t& kind, std::int32_t& position,
                        std::int32_t& argument, std::string& function) noexcept;

  private:
    struct State;
    template <class Operation>
    Status guarded(Operation operation) noexcept;

    std::unique_ptr<State> state_;  // made by the first operation
};

}  // namespace varo::engine
