// What the user waits for: start with many libraries, a long folder, a keystroke; each beside the
// least work that could do it.

#include "bench_desk.h"
#include "bench_main.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/node_view.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QPushButton>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sqlite3.h>
#include <stdexcept>

namespace {

using varo::Varo_CalcEx;

constexpr int kLibraries = 20;
constexpr int kFoldersEach = 5000;
constexpr int kFormulas = 5000;
constexpr int kStoredValues = 1'000'000;
constexpr int kValuesPerFormula = 20;

/// Reads every field of every row of a query as SQLite hands it out.
qint64 scan(const QString& path, const char* query) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_open_v2(path.toUtf8(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK ||
        sqlite3_prepare_v2(database, query, -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database));
    }
    qint64 bytes = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            if (sqlite3_column_type(statement, column) == SQLITE_INTEGER) {
                bytes += sqlite3_column_int(statement, column);
            } else if (sqlite3_column_text(statement, column) != nullptr) {
                bytes += sqlite3_column_bytes(statement, column);
            }
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return bytes;
}

/// The files that all benchmarks share, made once.
struct Files {
    Files() {
        QStringList libraries;
        for (int i = 1; i <= kLibraries; ++i) {
            libraries += folder.filePath(QStringLiteral("folders%1.mdb").arg(i));
            varo::bench::makeFolders(libraries.last(), kFoldersEach);
        }
        manyLibraries = libraries;
        many = folder.configuration(QStringLiteral("many"), libraries);
        formulas = folder.filePath(QStringLiteral("formulas.mdb"));
        varo::bench::makeFormulas(formulas, kFormulas);
        longFolder = folder.configuration(QStringLiteral("long"), {formulas});
        const QString withPictures = folder.filePath(QStringLiteral("pictures.mdb"));
        varo::bench::makePictures(withPictures, kFormulas);
        pictures = folder.configuration(QStringLiteral("pictures"), {withPictures});
        const QString values = folder.filePath(QStringLiteral("values.mdb"));
        varo::bench::makeValues(values, kStoredValues, kValuesPerFormula);
        manyValues = folder.configuration(QStringLiteral("values"), {values});
    }

    varo::bench::BenchFolder folder;
    QStringList manyLibraries;
    QString many;
    QString formulas;
    QString longFolder;
    QString pictures;
    QString manyValues;
};

const Files& files() {
    static const Files made;
    return made;
}

std::size_t allocatedBytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void BareScanOfFolders(benchmark::State& state) {
    for (auto _ : state) {
        for (const QString& library : files().manyLibraries) {
            benchmark::DoNotOptimize(scan(library, "select * from Tree"));
        }
    }
}
BENCHMARK(BareScanOfFolders)->Unit(benchmark::kMillisecond);

void RunCalc(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto control = varo::bench::controlOn(files().many);
        const std::size_t before = allocatedBytes();
        state.ResumeTiming();
        control->RunCalc();
        state.PauseTiming();
        qsizetype text = 0;
        for (int id = 1; id <= kFoldersEach; ++id) {
            text += 2 * QStringLiteral("公式夹第%1号").arg(id).size();
        }
        const auto used = static_cast<double>(allocatedBytes() - before);
        state.counters["bytes_per_folder_over_text"] =
            (used - static_cast<double>(text) * kLibraries) / (kLibraries * kFoldersEach);
        control.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(RunCalc)->Unit(benchmark::kMillisecond);

void BareScanOfFormulas(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            scan(files().formulas, "select * from Formula where PID = 1 order by OrderID"));
    }
}
BENCHMARK(BareScanOfFormulas)->Unit(benchmark::kMillisecond);

/// A folder of formulas, without pictures (0) or each with one (1).
void ListFolder(benchmark::State& state) {
    auto control =
        varo::bench::controlOn(state.range(0) == 0 ? files().longFolder : files().pictures);
    control->RunCalc();
    for (auto _ : state) {
        control->ClickTreeNode(QStringLiteral("FormulaNode1->DBNode1"));
    }
    const auto* list = control->findChild<varo::ui::NodeView*>(QStringLiteral("lvFormula"));
    if (list->model()->rowCount() != kFormulas) {
        state.SkipWithError("the folder was not listed");
    }
}
BENCHMARK(ListFolder)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// One letter more in the formula box makes another variable: parse, grid, stored values; then
/// calculate.
void Keystroke(benchmark::State& state) {
    auto control = varo::bench::controlOn(files().manyValues);
    control->RunCalc();
    auto* box = control->findChild<QLineEdit*>(QStringLiteral("txtFormula"));
    auto* calculate = control->findChild<QPushButton*>(QStringLiteral("cmdCalCulate"));
    const QString formula = box->text() + QStringLiteral("+v7*v8+v9+v");
    int digit = 0;
    for (auto _ : state) {
        state.PauseTiming();
        box->setText(formula);
        state.ResumeTiming();
        box->insert(QString::number(digit++ % 10));
        calculate->click();
    }
    const auto* result = control->findChild<QLineEdit*>(QStringLiteral("txtResult"));
    if (result->text().isEmpty()) {
        state.SkipWithError("nothing was calculated");
    }
}
BENCHMARK(Keystroke)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return varo::bench::runBenchmarks(argc, argv, [] { files(); });
}
