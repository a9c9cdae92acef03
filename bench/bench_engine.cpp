// Parsing and evaluating the reference formulas, beside muParser in the same run.

#include "engine/formula.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <muParser.h>
#include <vector>

namespace {

using varo::engine::Column;
using varo::engine::Formula;

constexpr std::array kReferences{
    "a+b*c",
    "a*b^3/12",
    "3.14159265358979*a^2/4",
    "5*a*b^4/(384*c*d)",
    "sqrt(a^2+b^2-2*a*b*cos(c))",
    "a*(1-exp^(-b/c))",
    "(((((((7*a+6)*a+5)*a+4)*a+3)*a+2)*a+1)*a+0.1)",
    "1/(a*sqrt(2*3.14159265358979))*exp^(-0.5*((b-a)/a)^2)",
    "a*sin(b)+c*cos(d)-x/y",
    "(a+b)*(a-b)/(c+d)*(x-y)+a*x+b*y",
};

constexpr std::array<char, 6> kNames{'a', 'b', 'c', 'd', 'x', 'y'};
constexpr std::array<double, 6> kStart{1.1, 2.2, 3.3, 4.4, 5.5, 6.6};

/// The value of the first variable in an evaluation. Counting in whole numbers, so that no
/// evaluation has to wait for the sum that the one before has put into memory.
double changing(std::int64_t run) {
    return kStart[0] + 1e-9 * static_cast<double>(run);
}

/// The formula as muParser spells it: a function for the power of e.
std::string peerSpelling(std::string formula) {
    const std::string power = "exp^(";
    for (std::size_t at = formula.find(power); at != std::string::npos; at = formula.find(power)) {
        formula.replace(at, power.size(), "exp(");
    }
    return formula;
}

class Peer {
  public:
    explicit Peer(const std::string& formula) : values(kStart) {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            parser.DefineVar(std::string(1, kNames[i]), &values[i]);
        }
        parser.SetExpr(formula);
    }

    std::array<double, 6> values;
    mu::Parser parser;
};

const char* reference(const benchmark::State& state) {
    return kReferences[static_cast<std::size_t>(state.range(0))];
}

void ParseHere(benchmark::State& state) {
    state.SetLabel(reference(state));
    for (auto _ : state) {
        const Formula formula = Formula::parse(reference(state));
        benchmark::DoNotOptimize(formula.isValid());
    }
}

void ParsePeer(benchmark::State& state) {
    const std::string formula = peerSpelling(reference(state));
    Peer peer(formula);
    for (auto _ : state) {
        peer.parser.SetExpr(formula);
        benchmark::DoNotOptimize(peer.parser.Eval());
    }
}

void EvaluateHere(benchmark::State& state) {
    const Formula formula = Formula::parse(reference(state));
    std::array<double, 6> values{};
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        values[i] = kStart[std::string_view("abcdxy").find(formula.variable(i).name)];
    }
    const std::span<const double> given(values.data(), formula.variableCount());
    std::int64_t run = 0;
    for (auto _ : state) {
        values[0] = changing(++run);
        benchmark::DoNotOptimize(formula(given));
    }
    if (!std::isfinite(formula(given))) {
        state.SkipWithError("the formula does not evaluate");
    }
}

void EvaluatePeer(benchmark::State& state) {
    Peer peer(peerSpelling(reference(state)));
    std::int64_t run = 0;
    for (auto _ : state) {
        peer.values[0] = changing(++run);
        benchmark::DoNotOptimize(peer.parser.Eval());
    }
}

/// 10,000 rows of a table; the label's time divided by that is one row's.
void EvaluateRows(benchmark::State& state) {
    constexpr std::size_t kRows = 10000;
    const Formula formula = Formula::parse(reference(state));
    std::vector<double> first(kRows);
    for (std::size_t i = 0; i < kRows; ++i) {
        first[i] = changing(static_cast<std::int64_t>(i));
    }
    std::vector<Column> columns;
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        const double value = kStart[std::string_view("abcdxy").find(formula.variable(i).name)];
        columns.push_back(i == 0 ? Column(first) : Column(value));
    }
    std::vector<double> results(kRows);
    for (auto _ : state) {
        if (formula.evaluateRows(columns, results, {}) != 0) {
            state.SkipWithError("the formula does not evaluate");
        }
        benchmark::DoNotOptimize(results.data());
    }
    state.counters["row"] = benchmark::Counter(
        kRows, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

constexpr auto kLast = static_cast<int64_t>(kReferences.size()) - 1;

BENCHMARK(ParseHere)->DenseRange(0, kLast);
BENCHMARK(ParsePeer)->DenseRange(0, kLast);
BENCHMARK(EvaluateHere)->DenseRange(0, kLast);
BENCHMARK(EvaluatePeer)->DenseRange(0, kLast);
BENCHMARK(EvaluateRows)->DenseRange(0, kLast);

}  // namespace

BENCHMARK_MAIN();
