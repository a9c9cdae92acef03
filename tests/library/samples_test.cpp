#include "engine/calc_engine.h"
#include "engine/numbers.h"
#include "library_files.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <toml++/toml.h>
#include <utility>
#include <variant>
#include <vector>

namespace varo {
namespace {

using engine::CalcEngine;
using Value = std::variant<double, std::string>;
using Values = std::map<std::string, Value>;

const std::vector<std::string> libraryNames = {"mechanics", "fluids_heat", "electrical"};

struct Variable {
    std::string name;
    bool isText = false;
};

std::vector<Variable> variablesOf(const std::string& expression) {
    CalcEngine calculator;
    std::int32_t complete = 0;
    EXPECT_EQ(calculator.ParseFormula(expression, complete), engine::Status::Ok);
    EXPECT_EQ(complete, 1) << expression;
    std::int32_t count = 0;
    EXPECT_EQ(calculator.GetVarCount(count), engine::Status::Ok);
    std::vector<Variable> variables(static_cast<size_t>(count));
    for (std::int32_t index = 1; index <= count; ++index) {
        Variable& variable = variables[static_cast<size_t>(index) - 1];
        std::int32_t type = 0;
        EXPECT_EQ(calculator.GetVarName(index, variable.name), engine::Status::Ok);
        EXPECT_EQ(calculator.GetVarType(index, type), engine::Status::Ok);
        variable.isText = type == CalcEngine::kText;
    }
    return variables;
}

/// The formula's result; a text that begins with "error: " when it has none.
Value evaluate(const std::string& expression, const Values& values) {
    CalcEngine calculator;
    std::int32_t complete = 0;
    calculator.ParseFormula(expression, complete);
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
    std::int32_t success = 0;
    std::int32_t reserved = 0;
    std::int32_t state = 0;
    calculator.Calculate(expression, success, reserved);
    calculator.GetCalcState(state);
    std::string text;
    if (success == 0 || state == 0) {
        calculator.GetErrorText(text);
        return "error: " + text;
    }
    std::int32_t type = 0;
    calculator.GetResultType(type);
    if (type != CalcEngine::kText) {
        return number;
    }
    calculator.GetTextVar("Result", text);
    return text;
}

std::string shown(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text ? *text : engine::shortest(std::get<double>(value));
}

/// The sample libraries, built once.
class Samples : public LibraryFiles, public testing::WithParamInterface<std::string> {
  protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<QTemporaryDir>();
        for (const std::string& name : libraryNames) {
            buildLibrary(QStringLiteral(VARO_SAMPLES "/%1.toml").arg(QString::fromStdString(name)),
                         library(name));
        }
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static QString library(const std::string& name) {
        return folder_->filePath(QString::fromStdString(name + ".mdb"));
    }

    struct Formula {
        qint32 id = 0;
        QString name;
        std::string expression;
        QString memo;
    };

    static std::vector<Formula> formulas() {
        data::Connection connection = open(library(GetParam()));
        std::vector<Formula> found;
        for (auto rs = connection.query(QStringLiteral("select ID,Name,Formula,Memo from Formula"));
             !rs.atEnd(); rs.moveNext()) {
            found.push_back({rs.integer(0), rs.text(1), rs.text(2).toStdString(), rs.text(3)});
        }
        return found;
    }

    static std::map<std::string, std::string> storedValues(qint32 formula) {
        data::Connection connection = open(library(GetParam()));
        std::map<std::string, std::string> values;
        for (auto rs = connection.query(
                 QStringLiteral("select VarName,[Value] from RecentVar where FormulaID = ?"),
                 {formula});
             !rs.atEnd(); rs.moveNext()) {
            EXPECT_TRUE(values.emplace(rs.text(0).toStdString(), rs.text(1).toStdString()).second)
                << "formula " << formula << " has two values of " << rs.text(0).toStdString();
        }
        return values;
    }

    /// The entries of the table of checks for this library.
    static std::vector<toml::table> checks() {
        const toml::table root = toml::parse_file(VARO_SAMPLES "/checks.toml");
        std::vector<toml::table> found;
        for (const toml::node& check : *root["check"].as_array()) {
            const std::string library = check.as_table()->at("library").value_or(std::string());
            EXPECT_EQ(std::count(libraryNames.begin(), libraryNames.end(), library), 1) << library;
            if (library == GetParam()) {
                found.push_back(*check.as_table());
            }
        }
        return found;
    }

  private:
    inline static std::unique_ptr<QTemporaryDir> folder_;
};

Value valueOf(const toml::node& node) {
    return node.is_string() ? Value(node.value<std::string>().value())
                            : Value(node.value<double>().value());
}

TEST_P(Samples, AreSoundLibraries) {
    const CheckReport report = checkLibrary(library(GetParam()));
    EXPECT_EQ(report.faults, QStringList());
    EXPECT_GE(report.formulas, 30);
    EXPECT_GE(report.pictures, 10);
}

TEST_P(Samples, SurviveADumpAndABuild) {
    const QByteArray text = dump(library(GetParam()));
    EXPECT_EQ(dump(build(QStringLiteral("copy.mdb"), text)), text);
}

TEST_P(Samples, GiveTheExpectedResults) {
    std::map<qint32, Formula> byId;
    for (const Formula& formula : formulas()) {
        byId.emplace(formula.id, formula);
    }
    std::set<qint32> checked;
    for (const toml::table& check : checks()) {
        const auto id = check.at("formula").value<qint32>().value();
        SCOPED_TRACE("formula " + std::to_string(id));
        ASSERT_TRUE(byId.contains(id));
        const Formula& formula = byId[id];
        EXPECT_EQ(formula.name.toStdString(), check.at("name").value_or(std::string()));
        Values given;
        for (const auto& [key, value] : *check.at("given").as_table()) {
            given.emplace(key.str(), valueOf(value));
        }
        const Value expected = valueOf(check.at("expect"));
        const Value result = evaluate(formula.expression, given);
        if (const auto* number = std::get_if<double>(&expected)) {
            const double tolerance = check["tolerance"].value_or(1e-10);
            ASSERT_TRUE(std::holds_alternative<double>(result)) << shown(result);
            EXPECT_NEAR(std::get<double>(result), *number,
                        tolerance * std::max(std::abs(*number), 1e-300));
        } else {
            EXPECT_EQ(shown(result), shown(expected));
        }
        checked.insert(id);
    }
    for (const auto& [id, formula] : byId) {
        EXPECT_TRUE(checked.contains(id)) << "no check of formula " << id;
    }
}

TEST_P(Samples, EveryDescriptionNamesEveryVariable) {
    for (const Formula& formula : formulas()) {
        for (const Variable& variable : variablesOf(formula.expression)) {
            const QRegularExpression name(
                QStringLiteral("(?<![\\p{L}\\p{N}_])%1(?![\\p{L}\\p{N}_])")
                    .arg(QRegularExpression::escape(QString::fromStdString(variable.name))));
            EXPECT_TRUE(formula.memo.contains(name))
                << "formula " << formula.id << " does not describe " << variable.name;
        }
    }
}

TEST_P(Samples, EveryFormulaCalculatesFromItsStoredValues) {
    for (const Formula& formula : formulas()) {
        SCOPED_TRACE("formula " + std::to_string(formula.id));
        std::map<std::string, std::string> stored = storedValues(formula.id);
        Values values;
        for (const Variable& variable : variablesOf(formula.expression)) {
            ASSERT_TRUE(stored.contains(variable.name)) << "no value of " << variable.name;
            const std::string text = stored.extract(variable.name).mapped();
            if (variable.isText) {
                values.emplace(variable.name, text);
                continue;
            }
            const auto number = engine::parseNumber(text);
            ASSERT_TRUE(number) << variable.name << " = " << text;
            values.emplace(variable.name, *number);
        }
        EXPECT_TRUE(stored.empty()) << stored.begin()->first << " is no variable of the formula";
        EXPECT_FALSE(shown(evaluate(formula.expression, values)).starts_with("error: "))
            << shown(evaluate(formula.expression, values));
    }
}

INSTANTIATE_TEST_SUITE_P(Libraries, Samples, testing::ValuesIn(libraryNames),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace varo
