#include "engine/calc_engine.h"
#include "engine/numbers.h"
#include "library_files.h"

#include <QRegularExpression>

#include <cmath>
#include <map>
#include <set>
#include <toml++/toml.h>
#include <variant>

namespace varo {
namespace {

using engine::CalcEngine;
using Value = std::variant<double, std::string>;

/// The variables of a formula, and whether they are text.
std::map<std::string, bool> variablesOf(const std::string& expression) {
    CalcEngine calculator;
    std::int32_t complete = 0;
    std::int32_t count = 0;
    calculator.ParseFormula(expression, complete);
    EXPECT_EQ(complete, 1) << expression;
    calculator.GetVarCount(count);
    std::map<std::string, bool> variables;
    for (std::int32_t index = 1; index <= count; ++index) {
        std::string name;
        std::int32_t type = 0;
        EXPECT_EQ(calculator.GetVarName(index, name), engine::Status::Ok);
        EXPECT_EQ(calculator.GetVarType(index, type), engine::Status::Ok);
        variables.emplace(name, type == CalcEngine::kText);
    }
    return variables;
}

/// The formula's result; fails the test when it has none.
Value evaluate(const std::string& expression, const std::map<std::string, Value>& values) {
    CalcEngine calculator;
    std::int32_t success = 0;
    std::int32_t unused = 0;
    calculator.ParseFormula(expression, unused);
    for (const auto& [name, value] : values) {
        const auto* text = std::get_if<std::string>(&value);
        const engine::Status status =
            text ? calculator.SetTextVar(CalcEngine::kInput, name, *text, expression)
                 : calculator.SetNumVar(CalcEngine::kInput, name, std::get<double>(value),
                                        expression);
        EXPECT_EQ(status, engine::Status::Ok) << name;
    }
    double number = std::nan("");
    calculator.BindNumVar("Result", number);
    calculator.Calculate(expression, success, unused);
    std::int32_t state = 0;
    calculator.GetCalcState(state);
    std::string text;
    calculator.GetErrorText(text);
    EXPECT_TRUE(success != 0 && state != 0) << expression << ": " << text;
    std::int32_t type = 0;
    calculator.GetResultType(type);
    if (type != CalcEngine::kText) {
        return number;
    }
    calculator.GetTextVar("Result", text);
    return text;
}

Value valueOf(const toml::node& node) {
    return node.is_string() ? Value(*node.value<std::string>()) : Value(*node.value<double>());
}

struct Formula {
    std::string name;
    std::string expression;
    QString memo;
    std::map<std::string, std::string> stored;
};

/// A sample library, built from its text.
class Samples : public LibraryFiles, public testing::WithParamInterface<std::string> {
  protected:
    Samples() {
        buildLibrary(QStringLiteral(VARO_SAMPLES "/%1.toml").arg(library_), path(u"a.mdb"_s));
        data::Connection connection = open(path(u"a.mdb"_s));
        auto rs = connection.query(u"select ID,Name,Formula,Memo from Formula"_s);
        for (; !rs.atEnd(); rs.moveNext()) {
            formulas_[rs.integer(0)] = {
                rs.text(1).toStdString(), rs.text(2).toStdString(), rs.text(3), {}};
        }
        rs = connection.query(u"select FormulaID,VarName,[Value] from RecentVar"_s);
        for (; !rs.atEnd(); rs.moveNext()) {
            auto& stored = formulas_.at(rs.integer(0)).stored;
            EXPECT_TRUE(stored.emplace(rs.text(1).toStdString(), rs.text(2).toStdString()).second);
        }
    }

    const QString library_ = QString::fromStdString(GetParam());
    std::map<qint32, Formula> formulas_;
};

TEST_P(Samples, AreSoundAndSurviveADumpAndABuild) {
    const CheckReport report = checkLibrary(path(u"a.mdb"_s));
    EXPECT_EQ(report.faults, QStringList());
    EXPECT_GE(report.formulas, 30);
    EXPECT_GE(report.pictures, 10);
    const QByteArray text = dump(path(u"a.mdb"_s));
    EXPECT_EQ(dump(build(u"copy.mdb"_s, text)), text);
}

TEST_P(Samples, GiveTheExpectedResults) {
    std::set<qint32> checked;
    const toml::table root = toml::parse_file(VARO_SAMPLES "/checks.toml");
    for (const toml::node& node : *root["check"].as_array()) {
        const toml::table& check = *node.as_table();
        if (check["library"].value<std::string>() != GetParam()) {
            continue;
        }
        const qint32 id = check["formula"].value<qint32>().value();
        SCOPED_TRACE("formula " + std::to_string(id));
        ASSERT_TRUE(formulas_.contains(id));
        const Formula& formula = formulas_[id];
        EXPECT_EQ(check["name"].value<std::string>(), formula.name);
        std::map<std::string, Value> given;
        for (const auto& [key, value] : *check["given"].as_table()) {
            given.emplace(key.str(), valueOf(value));
        }
        const Value expected = valueOf(check.at("expect"));
        const Value result = evaluate(formula.expression, given);
        ASSERT_EQ(result.index(), expected.index());
        if (const auto* number = std::get_if<double>(&expected)) {
            const double tolerance = check["tolerance"].value_or(1e-10);
            EXPECT_NEAR(std::get<double>(result), *number, tolerance * std::abs(*number) + 1e-300);
        } else {
            EXPECT_EQ(result, expected);
        }
        checked.insert(id);
    }
    EXPECT_EQ(checked.size(), formulas_.size()) << "not every formula is checked";
}

TEST_P(Samples, DescribeEveryVariableAndCalculateFromTheirStoredValues) {
    for (auto& [id, formula] : formulas_) {
        SCOPED_TRACE("formula " + std::to_string(id));
        std::map<std::string, Value> values;
        for (const auto& [name, isText] : variablesOf(formula.expression)) {
            const QRegularExpression word(u"(?<![\\p{L}\\p{N}_])%1(?![\\p{L}\\p{N}_])"_s.arg(
                QRegularExpression::escape(QString::fromStdString(name))));
            EXPECT_TRUE(formula.memo.contains(word)) << name << " is not described";
            ASSERT_TRUE(formula.stored.contains(name)) << "no value of " << name;
            const std::string text = formula.stored.extract(name).mapped();
            const auto number = engine::parseNumber(text);
            ASSERT_TRUE(isText || number) << name << " = " << text;
            values.emplace(name, isText ? Value(text) : Value(*number));
        }
        EXPECT_TRUE(formula.stored.empty()) << formula.stored.begin()->first << " is no variable";
        evaluate(formula.expression, values);
    }
}

INSTANTIATE_TEST_SUITE_P(Libraries, Samples,
                         testing::Values("mechanics", "fluids_heat", "electrical"),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace varo
