#include "calc/batch_calculator.h"

#include "engine/numbers.h"

#include <limits>
#include <optional>

namespace varo::calc {

bool BatchCalculator::serves(const engine::Formula& formula) {
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        if (formula.variable(i).type != engine::Type::Number) {
            return false;
        }
    }
    return formula.resultType() == engine::Type::Number;
}

BatchCalculator::BatchCalculator(const engine::Formula& formula, const TableBinding& binding)
    : formula_(formula), binding_(binding), numbers_(binding.columns.size()) {}

std::span<const double> BatchCalculator::calculate(const CsvRows& rows, std::size_t first) {
    const std::size_t count = rows.size() - first;
    std::vector<engine::Column> columns;
    for (std::size_t i = 0; i < numbers_.size(); ++i) {
        if (binding_.columns[i]) {
            numbers_[i].assign(count, 0);
            columns.emplace_back(std::span<const double>(numbers_[i]));
        } else {
            columns.emplace_back(binding_.fixed.numbers()[i]);
        }
    }
    unfit_.clear();
    for (std::size_t place = 0; place < count; ++place) {
        if (!takeNumbers(rows, first + place, place)) {
            unfit_.push_back(place);
        }
    }
    results_.resize(count);
    formula_.evaluateRows(columns, results_, {});
    for (const std::size_t place : unfit_) {
        results_[place] = std::numeric_limits<double>::quiet_NaN();
    }
    return results_;
}

bool BatchCalculator::takeNumbers(const CsvRows& rows, std::size_t row, std::size_t place) {
    if (rows.hasContentFrom(row, binding_.width)) {
        return false;
    }
    for (std::size_t i = 0; i < numbers_.size(); ++i) {
        if (const std::optional<std::size_t> column = binding_.columns[i]) {
            const std::optional<double> number = *column < rows.cellCount(row)
                                                     ? engine::parseNumber(rows.cell(row, *column))
                                                     : std::nullopt;
            if (!number) {
                return false;
            }
            numbers_[i][place] = *number;
        }
    }
    return true;
}

}  // namespace varo::calc
