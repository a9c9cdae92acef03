#include "engine/formula.h"
#include "engine/numbers.h"
#include "library/library_files.h"

#include <QRegularExpression>

#include <map>
#include <set>
#include <toml++/toml.h>

namespace varo {
namespace {

using engine::Value;

/// A stored formula and the values that are stored for it.
struct Sample {
    std::string name;
    QString memo;
    engine::Formula formula;
    std::map<std::string, std::string> stored;
};

/// The formula's result; fails the test when it has none or when the values are not those of its
/// variables.
Value evaluate(const engine::Formula& formula, const std::map<std::string, Value>& given) {
    engine::Values values(formula);
    for (const auto& [name, value] : given) {
        EXPECT_TRUE(std::visit([&](const auto& each) { return values.set(name, each); }, value))
            << name;
    }
    Value result;
    engine::Error error;
    EXPECT_TRUE(formula.evaluate(values, result, error)) << error.text();
    return result;
}

Value valueOf(const toml::node& node) {
    return node.is_string() ? Value(*node.value<std::string>()) : Value(*node.value<double>());
}

/// A sample library, built from its text.
class Samples : public LibraryFiles, public testing::WithParamInterface<std::string> {
  protected:
    Samples() {
        buildLibrary(QStringLiteral(VARO_SAMPLES "/%1.toml").arg(library_), path(u"a.mdb"_s));
        data::Connection connection = open(path(u"a.mdb"_s));
        auto rs = connection.query(u"select ID,Name,Memo,Formula from Formula"_s);
        for (; !rs.atEnd(); rs.moveNext()) {
            samples_.emplace(rs.integer(0), Sample{rs.text(1).toStdString(),
                                                   rs.text(2),
                                                   engine::Formula::parse(rs.text(3).toStdString()),
                                                   {}});
        }
        rs = connection.query(u"select FormulaID,VarName,[Value] from RecentVar"_s);
        for (; !rs.atEnd(); rs.moveNext()) {
            auto& stored = samples_.at(rs.integer(0)).stored;
            EXPECT_TRUE(stored.emplace(rs.text(1).toStdString(), rs.text(2).toStdString()).second);
        }
    }

    const QString library_ = QString::fromStdString(GetParam());
    std::map<qint32, Sample> samples_;
};

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
        ASSERT_TRUE(samples_.contains(id));
        EXPECT_EQ(check["name"].value<std::string>(), samples_.at(id).name);
        std::map<std::string, Value> given;
        for (const auto& [key, value] : *check["given"].as_table()) {
            given.emplace(key.str(), valueOf(value));
        }
        const Value expected = valueOf(check.at("expect"));
        const Value result = evaluate(samples_.at(id).formula, given);
        ASSERT_EQ(result.index(), expected.index());
        if (const auto* number = std::get_if<double>(&expected)) {
            const double tolerance = check["tolerance"].value_or(1e-10);
            EXPECT_NEAR(std::get<double>(result), *number, tolerance * std::abs(*number) + 1e-300);
        } else {
            EXPECT_EQ(result, expected);
        }
        checked.insert(id);
    }
    EXPECT_EQ(checked.size(), samples_.size()) << "not every formula is checked";
}

TEST_P(Samples, DescribeEveryVariableAndCalculateFromTheirStoredValues) {
    for (auto& [id, sample] : samples_) {
        SCOPED_TRACE("formula " + std::to_string(id));
        std::map<std::string, Value> values;
        for (std::size_t i = 0; i < sample.formula.variableCount(); ++i) {
            const std::string name(sample.formula.variable(i).name);
            const QRegularExpression word(u"(?<![\\p{L}\\p{N}_])%1(?![\\p{L}\\p{N}_])"_s.arg(
                QRegularExpression::escape(QString::fromStdString(name))));
            EXPECT_TRUE(sample.memo.contains(word)) << name << " is not described";
            ASSERT_TRUE(sample.stored.contains(name)) << "no value of " << name;
            const std::string text = sample.stored.extract(name).mapped();
            const bool isText = sample.formula.variable(i).type == engine::Type::Text;
            values.emplace(name, isText ? Value(text) : Value(engine::parseNumber(text).value()));
        }
        EXPECT_TRUE(sample.stored.empty()) << sample.stored.begin()->first << " is no variable";
        evaluate(sample.formula, values);
    }
}

TEST_P(Samples, AreSoundWithEveryConditionOnOneLine) {
    EXPECT_EQ(checkLibrary(path(u"a.mdb"_s)).faults, QStringList());
    const QByteArray text = dump(path(u"a.mdb"_s));
    EXPECT_TRUE(text.contains("\ncondition = ") && !text.contains("[[condition]]"));
}

INSTANTIATE_TEST_SUITE_P(Libraries, Samples,
                         testing::Values("mechanics", "fluids_heat", "electrical"),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace varo
