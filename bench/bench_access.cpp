// Libraries in the formats of the Access program beside those of SQLite: each benchmark is run on
// all, the argument is the LibraryFormat.

#include "bench_desk.h"
#include "bench_main.h"
#include "platform/data/connection.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <array>
#include <benchmark/benchmark.h>

namespace {

using varo::LibraryFormat;
using varo::data::Connection;

constexpr int kLibraries = 20;
constexpr int kFoldersEach = 5000;
constexpr int kFormulas = 20'000;
constexpr int kInserted = 10'000;
constexpr int kStoredValues = 20'000;
constexpr int kValuesPerFormula = 20;

/// The files of one format.
struct Files {
    explicit Files(LibraryFormat format) {
        for (int i = 1; i <= kLibraries; ++i) {
            libraries += folder.filePath(QStringLiteral("folders%1.lib").arg(i));
            varo::bench::makeFolders(libraries.last(), kFoldersEach, format);
        }
        many = folder.configuration(QStringLiteral("many"), libraries);
        formulas = folder.filePath(QStringLiteral("formulas.lib"));
        varo::bench::makeFormulas(formulas, kFormulas, format);
        values = folder.filePath(QStringLiteral("values.lib"));
        varo::bench::makeValues(values, kStoredValues, kValuesPerFormula, format);
        empty = folder.filePath(QStringLiteral("empty.lib"));
        varo::createEmptyLibrary(empty, format);
    }

    varo::bench::BenchFolder folder;
    QStringList libraries;
    QString many, formulas, values, empty;
};

const Files& filesOf(const benchmark::State& state) {
    static std::array<std::unique_ptr<Files>, 3> made;
    std::unique_ptr<Files>& files = made.at(static_cast<std::size_t>(state.range(0)));
    if (files == nullptr) {
        files = std::make_unique<Files>(static_cast<LibraryFormat>(state.range(0)));
    }
    return *files;
}

void forFormats(benchmark::internal::Benchmark* benchmark) {
    for (const LibraryFormat format :
         {LibraryFormat::Sqlite, LibraryFormat::Mdb, LibraryFormat::Accdb}) {
        benchmark->Arg(static_cast<int>(format));
    }
    benchmark->Unit(benchmark::kMillisecond);
}

void ScanFormulas(benchmark::State& state) {
    const QString path = filesOf(state).formulas;
    for (auto _ : state) {
        Connection connection;
        connection.open(path, varo::data::Access::Read);
        auto rows = connection.query(QStringLiteral("Select * From Formula"));
        qsizetype size = 0;
        for (; !rows.atEnd(); rows.moveNext()) {
            for (int column = 0; column < rows.columnCount(); ++column) {
                size += rows.text(column).size();
            }
        }
        benchmark::DoNotOptimize(size);
    }
}
BENCHMARK(ScanFormulas)->Apply(forFormats);

/// What another reader of Access files takes for the same.
void ScanFormulasWithMdbExport(benchmark::State& state) {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("mdb-export"));
    if (program.isEmpty()) {
        state.SkipWithError("mdb-export is not installed");
        return;
    }
    const QString path = filesOf(state).formulas;
    for (auto _ : state) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(program, {path, QStringLiteral("Formula")});
        process.waitForFinished(-1);
        if (process.exitCode() != 0) {
            state.SkipWithError("mdb-export has failed");
            return;
        }
    }
}
BENCHMARK(ScanFormulasWithMdbExport)
    ->Arg(static_cast<int>(LibraryFormat::Mdb))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void RunCalcOnTwentyLibraries(benchmark::State& state) {
    const QString configuration = filesOf(state).many;
    for (auto _ : state) {
        state.PauseTiming();
        auto control = varo::bench::controlOn(configuration);
        state.ResumeTiming();
        control->RunCalc();
        state.PauseTiming();
        control.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(RunCalcOnTwentyLibraries)->Apply(forFormats);

void StoreValue(benchmark::State& state) {
    Connection connection;
    connection.open(filesOf(state).values);
    int number = 0;
    for (auto _ : state) {
        connection.execute(
            QStringLiteral("Update RecentVar Set Value = ? Where VarName = ? And FormulaID = ?"),
            {QString::number(number), QStringLiteral("v%1").arg(number % kValuesPerFormula),
             number % (kStoredValues / kValuesPerFormula)});
        ++number;
    }
}
BENCHMARK(StoreValue)->Apply(forFormats);

void InsertFormulas(benchmark::State& state) {
    const Files& files = filesOf(state);
    const QString path = files.folder.filePath(QStringLiteral("inserted.lib"));
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(path);
        if (!QFile::copy(files.empty, path)) {
            state.SkipWithError("an empty library cannot be copied");
            return;
        }
        state.ResumeTiming();
        Connection connection;
        connection.open(path);
        varo::data::Transaction transaction(connection);
        varo::bench::addFormulas(connection, kInserted);
        transaction.commit();
    }
}
BENCHMARK(InsertFormulas)->Apply(forFormats);

}  // namespace

int main(int argc, char** argv) {
    return varo::bench::runBenchmarks(argc, argv);
}
