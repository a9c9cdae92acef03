#include "calc/row_calculator.h"

#include "calc/complaint.h"
#include "calc/variable_values.h"

namespace varo::calc {

RowCalculator::RowCalculator(const engine::Formula& formula, const TableBinding& binding)
    : formula_(formula), binding_(binding), values_(binding.fixed) {}

bool RowCalculator::calculate(const CsvRows& rows, std::size_t row, engine::Value& result) {
    if (!takeValues(rows, row)) {
        return false;
    }
    engine::Error error;
    if (!formula_.evaluate(values_, result, error)) {
        reason_ = messageOf(std::move(error));
        return false;
    }
    return true;
}

bool RowCalculator::takeValues(const CsvRows& rows, std::size_t row) {
    if (rows.hasContentFrom(row, binding_.width)) {
        reason_ = "这一行有" + std::to_string(rows.cellCount(row)) + "个单元格，表头只有" +
                  std::to_string(binding_.width) + "个！";
        return false;
    }
    for (std::size_t i = 0; i < binding_.columns.size(); ++i) {
        if (const std::optional<std::size_t> column = binding_.columns[i]) {
            reason_ = *column < rows.cellCount(row)
                          ? giveValue(formula_, i, rows.cell(row, *column), values_)
                          : noValue(formula_.variable(i).name);
            if (!reason_.empty()) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace varo::calc
