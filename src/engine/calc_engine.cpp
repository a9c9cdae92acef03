#include "engine/calc_engine.h"

#include "engine/formula.h"
#include "engine/language/variable_table.h"
#include "engine/language/vocabulary.h"

#include <cmath>
#include <optional>
#include <unordered_map>
#include <utility>

namespace varo::engine {
namespace {

std::string foldedName(std::string_view name) {
    std::string folded;
    appendFolded(folded, name);
    return folded;
}

bool isKind(std::int32_t kind) {
    return kind == CalcEngine::kInput || kind == CalcEngine::kOutput;
}

std::int32_t codeOf(Type type) {
    return type == Type::Text ? CalcEngine::kText : CalcEngine::kNumber;
}

/// The kinds of GetErrorInfo have the numbers of their codes.
std::int32_t kindOf(ErrorCode code) {
    static_assert(static_cast<int>(ErrorCode::NumberWanted) == 1 &&
                  static_cast<int>(ErrorCode::TextWanted) == 2 &&
                  static_cast<int>(ErrorCode::TooFewArguments) == 3);
    return isWrongArgument(code) ? static_cast<std::int32_t>(code) : 0;
}

}  // namespace

struct CalcEngine::State {
    std::string formulaText;
    std::optional<Formula> formula;                     // what formulaText was parsed to
    std::unordered_map<std::string, Value> inputs;      // by case-folded name
    std::unordered_map<std::string, double*> bindings;  // by case-folded name
    std::optional<Value> result;                        // of the last calculation, if valid
    Error error;                                        // of the last calculation

    void parse(std::string_view text) {
        if (formula && formulaText == text) {
            return;
        }
        Formula parsed = Formula::parse(text);
        formulaText.assign(text);
        formula = std::move(parsed);
    }

    Values values() const {
        Values values(*formula);
        for (std::size_t i = 0; i < formula->variableCount(); ++i) {
            const auto input = inputs.find(foldedName(formula->variable(i).name));
            if (input == inputs.end()) {
                continue;
            }
            if (const double* number = std::get_if<double>(&input->second)) {
                values.set(i, *number);
            } else {
                values.set(i, std::get<std::string>(input->second));
            }
        }
        return values;
    }

    bool hasVariable(std::int32_t index) const {
        return formula && index >= 1 && static_cast<std::size_t>(index) <= formula->variableCount();
    }

    /// The text of the output variable or of an input variable; null when there is none.
    const std::string* textOf(const std::string& name) const {
        if (wordNamed(name).kind == Word::Kind::Result) {
            return result ? std::get_if<std::string>(&*result) : nullptr;
        }
        const auto input = inputs.find(name);
        return input == inputs.end() ? nullptr : std::get_if<std::string>(&input->second);
    }

    /// The number to write into what is bound to `name`; null when there is none.
    const double* numberOf(const std::string& name) const {
        if (wordNamed(name).kind == Word::Kind::Result) {
            return std::get_if<double>(&*result);
        }
        const auto input = inputs.find(name);
        return input == inputs.end() ? nullptr : std::get_if<double>(&input->second);
    }

    void calculate(std::string_view text) {
        result.reset();
        error = {};
        parse(text);
        Value value;
        if (!formula->evaluate(values(), value, error)) {
            return;
        }
        result = std::move(value);
        for (const auto& [name, target] : bindings) {
            if (const double* number = numberOf(name)) {
                *target = *number;
            }
        }
    }
};

CalcEngine::CalcEngine() noexcept = default;
CalcEngine::~CalcEngine() = default;

template <class Operation>
Status CalcEngine::guarded(Operation operation) noexcept {
    try {
        if (!state_) {
            state_ = std::make_unique<State>();
        }
        return operation(*state_);
    } catch (...) {
        return Status::Failed;
    }
}

Status CalcEngine::SetNumVar(std::int32_t kind, std::string_view name, double value,
                             std::string_view) noexcept {
    return guarded([&](State& state) {
        if (!isKind(kind) || name.empty() || !std::isfinite(value)) {
            return Status::InvalidArgument;
        }
        if (kind == kInput) {
            state.inputs.insert_or_assign(foldedName(name), value);
        }
        return Status::Ok;
    });
}

Status CalcEngine::BindNumVar(std::string_view name, double& target) noexcept {
    return guarded([&](State& state) {
        if (name.empty()) {
            return Status::InvalidArgument;
        }
        state.bindings.insert_or_assign(foldedName(name), &target);
        return Status::Ok;
    });
}

Status CalcEngine::ResetEngine() noexcept {
    state_.reset();
    return Status::Ok;
}

Status CalcEngine::GetCalcState(std::int32_t& state) noexcept {
    state = state_ && state_->result ? 1 : 0;
    return Status::Ok;
}

Status CalcEngine::GetVarCount(std::int32_t& count) noexcept {
    count =
        state_ && state_->formula ? static_cast<std::int32_t>(state_->formula->variableCount()) : 0;
    return Status::Ok;
}

Status CalcEngine::ParseFormula(std::string_view formula, std::int32_t& status) noexcept {
    return guarded([&](State& state) {
        state.parse(formula);
        status = state.formula->isValid() ? 1 : 0;
        return Status::Ok;
    });
}

Status CalcEngine::GetVarName(std::int32_t index, std::string& name) noexcept {
    return guarded([&](State& state) {
        if (!state.hasVariable(index)) {
            return Status::IndexOutOfRange;
        }
        name.assign(state.formula->variable(static_cast<std::size_t>(index - 1)).name);
        return Status::Ok;
    });
}

Status CalcEngine::GetErrorText(std::string& text) noexcept {
    return guarded([&](State& state) {
        text = state.error.text();
        return Status::Ok;
    });
}

Status CalcEngine::SetTextVar(std::int32_t kind, std::string_view name, std::string_view value,
                              std::string_view) noexcept {
    return guarded([&](State& state) {
        if (!isKind(kind) || name.empty()) {
            return Status::InvalidArgument;
        }
        if (kind == kInput) {
            state.inputs.insert_or_assign(foldedName(name), std::string(value));
        }
        return Status::Ok;
    });
}

Status CalcEngine::GetResultType(std::int32_t& type) noexcept {
    type = state_ && state_->formula ? codeOf(state_->formula->resultType()) : 0;
    return Status::Ok;
}

Status CalcEngine::GetVarType(std::int32_t index, std::int32_t& type) noexcept {
    return guarded([&](State& state) {
        if (!state.hasVariable(index)) {
            return Status::IndexOutOfRange;
        }
        type = codeOf(state.formula->variable(static_cast<std::size_t>(index - 1)).type);
        return Status::Ok;
    });
}

Status CalcEngine::GetTextVar(std::string_view name, std::string& value) noexcept {
    return guarded([&](State& state) {
        const std::string* text = state.textOf(foldedName(name));
        if (text == nullptr) {
            return Status::UnknownName;
        }
        value = *text;
        return Status::Ok;
    });
}

Status CalcEngine::Calculate(std::string_view formula, std::int32_t& success,
                             std::int32_t&) noexcept {
    return guarded([&](State& state) {
        state.calculate(formula);
        success = isWrongArgument(state.error.code) ? 0 : 1;
        return Status::Ok;
    });
}

Status CalcEngine::GetErrorInfo(std::int32_t&, std::int32_t& kind, std::int32_t& position,
                                std::int32_t& argument, std::string& function) noexcept {
    return guarded([&](State& state) {
        const Error& error = state.error;
        if (!isWrongArgument(error.code)) {
            function.clear();
            kind = position = argument = 0;
            return Status::Ok;
        }
        function = error.subject;
        kind = kindOf(error.code);
        position = static_cast<std::int32_t>(error.position);
        argument = error.argument;
        return Status::Ok;
    });
}

}  // namespace varo::engine
