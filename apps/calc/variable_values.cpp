#include "calc/variable_values.h"

#include "calc/complaint.h"
#include "engine/numbers.h"
#include "engine/text/unicode.h"

#include <optional>

namespace varo::calc {

using engine::Formula;

namespace {

std::string give(const Formula& formula, const Assignment& assignment, GivenValues& target) {
    const std::optional<std::size_t> index = formula.indexOf(assignment.name);
    if (!index) {
        return "公式没有变量“" + excerpt(assignment.name) + "”！";
    }
    if (target.given[*index]) {
        return "变量“" + excerpt(assignment.name) + "”的值给了两次！";
    }
    target.given[*index] = true;
    return giveValue(formula, *index, assignment.value, target.values);
}

}  // namespace

GivenValues readAssignments(const Formula& formula, std::span<const Assignment> assignments) {
    GivenValues result{engine::Values(formula), std::vector<bool>(formula.variableCount())};
    std::string problems;
    for (const Assignment& assignment : assignments) {
        const std::string problem = give(formula, assignment, result);
        if (!problem.empty()) {
            problems += problem + '\n';
        }
    }
    if (!problems.empty()) {
        throw CalcError(problems);
    }
    return result;
}

std::string giveValue(const Formula& formula, std::size_t index, std::string_view text,
                      engine::Values& values) {
    const engine::Variable variable = formula.variable(index);
    if (variable.type == engine::Type::Text) {
        if (!engine::isWellFormed(text)) {
            return "变量“" + excerpt(variable.name) + "”的值不是UTF-8编码的文本！";
        }
        values.set(index, text);
        return {};
    }
    const std::optional<double> number = engine::parseNumber(text);
    if (number) {
        values.set(index, *number);
        return {};
    }
    return engine::trimBlanks(text).empty()
               ? noValue(variable.name)
               : "变量“" + excerpt(variable.name) + "”的值“" + excerpt(text) + "”不是数值！";
}

std::string noValue(std::string_view name) {
    return messageOf({engine::ErrorCode::NoValue, 0, 0, std::string(name)});
}

}  // namespace varo::calc
