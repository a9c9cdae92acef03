// What the user waits for when whole folders are edited: pasting and deleting a subtree, beside the
// same rows handed to SQLite at once.

#include "bench_files.h"
#include "bench_main.h"
#include "control/varo_calcex.h"
#include "platform/questions/questions.h"
#include "platform/ui/node_view.h"
#include "store/template.h"

#include <QCoreApplication>
#include <QDir>
#include <QKeyEvent>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdexcept>

namespace {

using varo::Varo_CalcEx;

constexpr int kFolders = 1000;
constexpr int kFormulasEach = 10;

/// Wants everything that it is asked for, and is told of no failure.
class Agreeing : public varo::Questions {
  public:
    void inform(const QString& text) override { throw std::runtime_error(text.toStdString()); }
    bool confirm(const QString&, varo::Choice) override { return true; }
    std::optional<varo::ChosenFile> chooseFile(const varo::FileQuestion&) override {
        return std::nullopt;
    }
};

/// A folder with a subtree in one library, an empty library, and a control on both.
class Desk {
  public:
    Desk() {
        varo::bench::makeSubtree(source_, kFolders, kFormulasEach);
        varo::createEmptyLibrary(target_);
        varo::bench::makeConfiguration(folder_.path(), {source_, target_});
        control_ = std::make_unique<Varo_CalcEx>(nullptr, &questions_);
        control_->setWorkFolder(folder_.path());
        control_->resize(1000, 700);
        control_->show();
        QCoreApplication::processEvents();
        control_->SetDeployFolder(folder_.path());
        control_->RunCalc();
    }

    /// Selects a node and presses a key on it.
    void press(const QString& node, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        control_->ClickTreeNode(node);
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(&tree(), &event);
    }
    void copy() { press(QStringLiteral("FormulaNode1->DBNode1"), Qt::Key_C, Qt::ControlModifier); }
    void paste() { press(QStringLiteral("DBNode2"), Qt::Key_V, Qt::ControlModifier); }

    varo::ui::NodeView& tree() {
        return *control_->findChild<varo::ui::NodeView*>(QStringLiteral("tvFolder"));
    }
    QString target() const { return target_; }

  private:
    QTemporaryDir folder_;
    QString source_ = folder_.filePath(QStringLiteral("source.vdb"));
    QString target_ = folder_.filePath(QStringLiteral("target.vdb"));
    Agreeing questions_;
    std::unique_ptr<Varo_CalcEx> control_;
};

void require(sqlite3* database, int result) {
    if (result != SQLITE_OK && result != SQLITE_DONE && result != SQLITE_ROW) {
        throw std::runtime_error(sqlite3_errmsg(database));
    }
}

void execute(sqlite3* database, const char* text) {
    require(database, sqlite3_exec(database, text, nullptr, nullptr, nullptr));
}

qint64 count(const QString& path, const char* query) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    require(database, sqlite3_open(path.toUtf8(), &database));
    require(database, sqlite3_prepare_v2(database, query, -1, &statement, nullptr));
    require(database, sqlite3_step(statement));
    const qint64 rows = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return rows;
}

/// The rows of the subtree, prepared and bound once each, in one transaction.
void insertBare(const QString& path) {
    sqlite3* database = nullptr;
    sqlite3_stmt* folder = nullptr;
    sqlite3_stmt* formula = nullptr;
    require(database, sqlite3_open(path.toUtf8(), &database));
    require(database,
            sqlite3_prepare_v2(database, "insert into Tree(ID,Name,PID,OrderID) values(?,?,?,?)",
                               -1, &folder, nullptr));
    require(database,
            sqlite3_prepare_v2(database,
                               "insert into Formula(ID,Name,Formula,Memo,PicType,PID,OrderID) "
                               "values(?,?,?,?,0,?,?)",
                               -1, &formula, nullptr));
    const auto run = [&](sqlite3_stmt* statement) {
        require(database, sqlite3_step(statement));
        require(database, sqlite3_reset(statement));
    };
    const auto text = [](sqlite3_stmt* statement, int position, const QByteArray& value) {
        sqlite3_bind_text(statement, position, value.constData(), -1, SQLITE_TRANSIENT);
    };
    execute(database, "begin immediate");
    for (int id = 1; id <= kFolders; ++id) {
        const varo::bench::FolderRow row = varo::bench::subtreeFolder(id);
        sqlite3_bind_int(folder, 1, id);
        text(folder, 2, row.name.toUtf8());
        sqlite3_bind_int(folder, 3, row.parent);
        sqlite3_bind_int(folder, 4, row.order);
        run(folder);
        for (int number = 1; number <= kFormulasEach; ++number) {
            const varo::bench::FormulaRow each = varo::bench::subtreeFormula(id, number);
            sqlite3_bind_int(formula, 1, (id - 1) * kFormulasEach + number);
            text(formula, 2, each.name.toUtf8());
            text(formula, 3, each.expression.toUtf8());
            text(formula, 4, each.memo.toUtf8());
            sqlite3_bind_int(formula, 5, id);
            sqlite3_bind_int(formula, 6, number);
            run(formula);
        }
    }
    execute(database, "commit");
    sqlite3_finalize(folder);
    sqlite3_finalize(formula);
    sqlite3_close(database);
}

void BareInsertOfSubtree(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const QTemporaryDir folder;
        const QString library = folder.filePath(QStringLiteral("library.vdb"));
        varo::createEmptyLibrary(library);
        state.ResumeTiming();
        insertBare(library);
    }
}
BENCHMARK(BareInsertOfSubtree)->Unit(benchmark::kMillisecond);

void PasteSubtree(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto desk = std::make_unique<Desk>();
        desk->copy();
        state.ResumeTiming();
        desk->paste();
        state.PauseTiming();
        if (count(desk->target(), "select count(*) from Formula") != kFolders * kFormulasEach) {
            state.SkipWithError("the subtree was not pasted");
        }
        desk.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(PasteSubtree)->Unit(benchmark::kMillisecond);

void CopySubtree(benchmark::State& state) {
    Desk desk;
    for (auto _ : state) {
        desk.copy();
    }
}
BENCHMARK(CopySubtree)->Unit(benchmark::kMillisecond);

void DeleteSubtree(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto desk = std::make_unique<Desk>();
        state.ResumeTiming();
        desk->press(QStringLiteral("FormulaNode1->DBNode1"), Qt::Key_Delete);
        state.PauseTiming();
        if (desk->tree().model()->rowCount(desk->tree().model()->index(0, 0)) != 0) {
            state.SkipWithError("the subtree was not deleted");
        }
        desk.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(DeleteSubtree)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return varo::bench::runBenchmarks(argc, argv);
}
