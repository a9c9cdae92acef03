#pragma once

#include "platform/data/driver.h"
#include "platform/data/statement.h"

namespace varo::data {

/// A running query: its statement and whether that stands on a row.
struct RowSource final : HandleUser {
    RowSource(DatabaseFile& database, StatementHandle prepared)
        : HandleUser(database), statement(std::move(prepared)), onRow(step(statement.get())) {}

    /// Goes to the next row.
    void next() {
        onRow = false;
        const StatementWatch& watch = file()->watch();
        // Without other statements between its rows the watch counts by itself.
        const bool isAlone = watch.statements() == begun;
        const qint64 before = isAlone ? 0 : watch.pagesTaken();
        onRow = watch.during([&] { return step(statement.get()); });
        pages += isAlone ? 0 : watch.pagesTaken() - before;
        watch.requireEnding(statement.get(), ++row, pages);
    }

    void release() noexcept override {
        statement.reset();
        onRow = false;
    }

    StatementHandle statement;
    bool onRow;
    qint64 row = 0;
    qint64 pages = 0;  ///< for the rows since another statement began
    quint64 begun = file()->watch().statements();
};

}  // namespace varo::data
