// The find dialog: a search over many libraries, beside the same statements handed to SQLite; and
// the pictures of a library, until the first ones can be seen.

#include "bench_desk.h"
#include "bench_main.h"
#include "driver/dialog_driver.h"
#include "platform/ui/picture_grid.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QToolButton>
#include <QTreeView>

#include <benchmark/benchmark.h>
#include <functional>
#include <sqlite3.h>
#include <stdexcept>

namespace {

using varo::Varo_CalcEx;

constexpr int kLibraries = 20;
constexpr int kFoldersEach = 5000;
constexpr int kFormulasEach = 2500;

/// What is searched for: in few names, and in all of them.
const QString& searched(const benchmark::State& state) {
    static const QString texts[] = {QStringLiteral("第77"), QStringLiteral("公式")};
    return texts[state.range(0)];
}

/// The files that all benchmarks share, made once.
struct Files {
    Files() {
        for (int i = 0; i < kLibraries; ++i) {
            libraries.append(folder.filePath(QStringLiteral("library%1.vdb").arg(i)));
            varo::bench::makeFoldersAndFormulas(libraries.last(), kFoldersEach, kFormulasEach);
        }
        many = folder.configuration(QStringLiteral("many"), libraries);
    }

    varo::bench::BenchFolder folder;
    QStringList libraries;
    QString many;
};

const Files& files() {
    static const Files made;
    return made;
}

void require(sqlite3* database, int result) {
    if (result != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database));
    }
}

/// Runs a statement with one text and reads its rows; returns how many.
int rowsOf(sqlite3* database, const char* text, const QByteArray& value) {
    sqlite3_stmt* statement = nullptr;
    require(database, sqlite3_prepare_v2(database, text, -1, &statement, nullptr));
    sqlite3_bind_text(statement, 1, value.constData(), -1, SQLITE_TRANSIENT);
    int rows = 0;
    for (; sqlite3_step(statement) == SQLITE_ROW; ++rows) {
        benchmark::DoNotOptimize(sqlite3_column_int(statement, 0));
        benchmark::DoNotOptimize(sqlite3_column_text(statement, 1));
        benchmark::DoNotOptimize(sqlite3_column_int(statement, 2));
    }
    sqlite3_finalize(statement);
    return rows;
}

int bareFind(const QString& text) {
    const QByteArray pattern = '%' + text.toUtf8() + '%';
    int rows = 0;
    for (const QString& library : files().libraries) {
        sqlite3* database = nullptr;
        require(database,
                sqlite3_open_v2(library.toUtf8(), &database, SQLITE_OPEN_READONLY, nullptr));
        rows += rowsOf(database, "select ID,Name,PID from Tree where Name like ?", pattern);
        rows += rowsOf(database, "select ID,Name,PID from Formula where Name like ?", pattern);
        sqlite3_close(database);
    }
    return rows;
}

void BareFind(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(bareFind(searched(state)));
    }
}
BENCHMARK(BareFind)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// Works with the find dialog of the control.
void withFindDialog(Varo_CalcEx& control, const std::function<void(QDialog&)>& use) {
    varo::withDialog(
        "frmFind", [&] { control.findChild<QToolButton*>(QStringLiteral("查找"))->click(); }, use);
}

void Find(benchmark::State& state) {
    auto control = varo::bench::controlOn(files().many);
    control->RunCalc();
    const int expected = bareFind(searched(state));
    withFindDialog(*control, [&](QDialog& dialog) {
        varo::partOf<QCheckBox>(dialog, "ChkFolder").click();
        varo::partOf<QCheckBox>(dialog, "ChkFormula").click();
        varo::partOf<QCheckBox>(dialog, "ChkName").click();
        varo::partOf<QRadioButton>(dialog, "OptFindName2").click();
        varo::partOf<QLineEdit>(dialog, "txtName").setText(searched(state));
        auto& find = varo::partOf<QPushButton>(dialog, "CmdFind");
        const auto& progress = varo::partOf<QProgressBar>(dialog, "PrgFind");
        for (auto _ : state) {
            find.click();
            while (progress.isVisible()) {
                QCoreApplication::processEvents();
            }
        }
        if (varo::partOf<QTreeView>(dialog, "lvFindResult").model()->rowCount() != expected) {
            state.SkipWithError("not everything was found");
        }
    });
}
BENCHMARK(Find)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// From the click on the tab to the first picture, in a library of so many.
void OpenPictures(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    const QString name = QStringLiteral("pictures%1").arg(count);
    const QString library = files().folder.filePath(name + QStringLiteral(".vdb"));
    if (!QFile::exists(library)) {
        varo::bench::makePictures(library, count);
    }
    auto control = varo::bench::controlOn(files().folder.configuration(name, {library}));
    control->RunCalc();
    for (auto _ : state) {
        state.PauseTiming();
        withFindDialog(*control, [&](QDialog& dialog) {
            auto& tabs = varo::partOf<QTabBar>(dialog, "TabFind");
            auto& grid = varo::partOf<varo::ui::PictureGrid>(dialog, "ImageGridFind");
            state.ResumeTiming();
            tabs.setCurrentIndex(1);
            while (grid.stateOf(0) == varo::ui::PictureGrid::State::Waiting) {
                QCoreApplication::processEvents();
            }
            state.PauseTiming();
        });
        state.ResumeTiming();
    }
}
BENCHMARK(OpenPictures)->Arg(50)->Arg(5000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return varo::bench::runBenchmarks(argc, argv, [] { files(); });
}
