#include "calc/table_binding.h"

#include "calc/complaint.h"
#include "engine/text/unicode.h"

#include <string>

namespace varo::calc {
namespace {

bool isHeaderWellFormed(const CsvRows& rows) {
    for (std::size_t column = 0; column < rows.cellCount(0); ++column) {
        if (!engine::isWellFormed(rows.cell(0, column))) {
            return false;
        }
    }
    return true;
}

/// Ties `column` to the variable that it is called after, if any; returns "", or what is wrong.
std::string bindColumn(const engine::Formula& formula, const GivenValues& given,
                       std::string_view name, std::size_t column, TableBinding& binding) {
    const std::optional<std::size_t> index = formula.indexOf(name);
    if (!index) {
        return {};
    }
    if (given.given[*index]) {
        return "变量“" + excerpt(name) + "”在表格中有一列，不能再给值！\n";
    }
    if (binding.columns[*index]) {
        return "表格中变量“" + excerpt(name) + "”的列不止一个！\n";
    }
    binding.columns[*index] = column;
    return {};
}

}  // namespace

TableBinding bindTable(const engine::Formula& formula, const GivenValues& given,
                       const CsvRows& rows) {
    TableBinding binding{rows.cellCount(0), {}, given.values};
    binding.columns.resize(formula.variableCount());
    std::string problems;
    for (std::size_t column = 0; column < binding.width; ++column) {
        problems += bindColumn(formula, given, rows.cell(0, column), column, binding);
    }
    bool complete = true;
    for (std::size_t i = 0; i < binding.columns.size(); ++i) {
        if (!binding.columns[i] && !given.given[i]) {
            complete = false;
            problems += "表格中没有变量“" + excerpt(formula.variable(i).name) +
                        "”的列，也没有给出它的值！\n";
        }
    }
    if (!complete && !isHeaderWellFormed(rows)) {
        problems += "表头不是UTF-8编码！请把表格另存为UTF-8编码的CSV文件。\n";
    }
    if (!problems.empty()) {
        throw CalcError(problems);
    }
    return binding;
}

}  // namespace varo::calc
