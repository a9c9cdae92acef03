#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>
#include <varo/engine/calc_engine.h>
#include <varo/engine/formula.h>
#include <varo/engine/numbers.h>
#include <vector>

using namespace varo::engine;

namespace {

void stressInABeam() {
    const Formula formula = Formula::parse("M/(b*h^2/6)");
    Values values(formula);
    values.set("M", 45e6);
    values.set("b", 200);
    values.set("h", 450);
    Value result;
    Error error;
    if (formula.evaluate(values, result, error)) {
        std::cout << "stress: " << formatFixed(std::get<double>(result), 2) << '\n';
    } else {
        std::cout << error.text() << '\n';
    }
}

void printVariables(const std::string& text) {
    const Formula formula = Formula::parse(text);
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        const Variable variable = formula.variable(i);
        std::cout << variable.name << (variable.type == Type::Text ? ": text\n" : ": number\n");
    }
    if (!formula.isValid()) {
        const Error error = formula.error();
        std::cout << error.text() << " (" << error.position << ")\n";
    }
}

void heightsOfAnArch() {
    const Formula formula = Formula::parse("sqrt(R^2-x^2)-(R-f)");
    const std::vector<double> places{0, 3, 6};
    std::vector<Column> columns(formula.variableCount(), Column(0));
    columns[*formula.indexOf("x")] = Column(places);
    columns[*formula.indexOf("R")] = Column(5);
    columns[*formula.indexOf("f")] = Column(2);
    std::vector<double> heights(places.size());
    std::vector<ErrorCode> status(places.size());
    const std::size_t failures = formula.evaluateRows(columns, heights, status);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const bool worked = status[i] == ErrorCode::None;
        std::cout << "x = " << shortest(places[i]) << ": "
                  << (worked ? shortest(heights[i]) : "outside") << '\n';
    }
    std::cout << "failed: " << failures << '\n';
}

void calculateAsAHost() {
    CalcEngine engine;
    std::int32_t parsed = 0;
    std::int32_t success = 0;
    std::int32_t state = 0;
    std::int32_t reserved = 0;
    double result = 0;
    std::string message;
    const std::string formula = "q*l^2/8";
    engine.ParseFormula(formula, parsed);
    engine.SetNumVar(CalcEngine::kInput, "q", 10, formula);
    engine.SetNumVar(CalcEngine::kInput, "l", 6, formula);
    engine.BindNumVar("Result", result);
    engine.Calculate(formula, success, reserved);
    engine.GetCalcState(state);
    if (success != 0 && state == 1) {
        std::cout << "moment: " << formatFixed(result, 2) << '\n';
    } else {
        engine.GetErrorText(message);
        std::cout << message << '\n';
    }
}

}  // namespace

int main() {
    stressInABeam();
    printVariables("If(grade Like 'C', E*I*");
    heightsOfAnArch();
    calculateAsAHost();
}
