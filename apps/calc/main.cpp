#include "calc/calc_options.h"
#include "calc/complaint.h"
#include "calc/files.h"
#include "calc/result_format.h"
#include "calc/table.h"
#include "calc/variable_values.h"
#include "engine/formula.h"

#include <csignal>
#include <new>
#include <string>

namespace varo::calc {
namespace {

enum ExitStatus { Done = 0, Failed = 1, WrongUsage = 2 };

void requireValid(const engine::Formula& formula) {
    if (!formula.isValid()) {
        throw CalcError(messageOf(formula.error()));
    }
}

void listVariables(const engine::Formula& formula) {
    std::string lines;
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        const engine::Variable variable = formula.variable(i);
        lines += variable.name;
        lines += variable.type == engine::Type::Text ? "\t文本\n" : "\t数值\n";
    }
    writeOutput(lines);
    requireValid(formula);
}

engine::Values valuesForAll(const engine::Formula& formula, const CalcOptions& options) {
    GivenValues given = readAssignments(formula, options.assignments);
    std::string problems;
    for (std::size_t i = 0; i < given.given.size(); ++i) {
        if (!given.given[i]) {
            problems += noValue(formula.variable(i).name) + '\n';
        }
    }
    if (!problems.empty()) {
        throw CalcError(problems);
    }
    return std::move(given.values);
}

void calculate(const engine::Formula& formula, const CalcOptions& options) {
    const engine::Values values = valuesForAll(formula, options);
    engine::Value result;
    engine::Error error;
    if (!formula.evaluate(values, result, error)) {
        throw CalcError(messageOf(std::move(error)));
    }
    writeOutput(ResultFormat(options.decimals).text(result) + '\n');
}

ExitStatus run(const CalcOptions& options) {
    if (options.task == Task::Help) {
        writeOutput(helpText());
        return Done;
    }
    if (options.task == Task::Version) {
        writeOutput("varo-calc " VARO_VERSION "\n");
        return Done;
    }
    const engine::Formula formula = engine::Formula::parse(options.formula);
    if (options.task == Task::ListVariables) {
        listVariables(formula);
        return Done;
    }
    requireValid(formula);
    if (options.task == Task::CalculateTable) {
        return calculateTable(formula, options) == 0 ? Done : Failed;
    }
    calculate(formula, options);
    return Done;
}

}  // namespace
}  // namespace varo::calc

int main(int argc, char** argv) {
    using namespace varo::calc;
    // Writing into a pipe that nobody reads is an error like a full disk.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(parseOptions(argc, argv));
    } catch (const UsageError& error) {
        complain(error.what());
        complain("用“varo-calc --help”查看用法。");
        return WrongUsage;
    } catch (const CalcError& error) {
        complain(error.what());
    } catch (const std::bad_alloc&) {
        complain("内存不足！");
    }
    return Failed;
}
