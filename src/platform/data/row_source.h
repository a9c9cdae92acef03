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
        onRow = file()->watch().during([&] { return step(statement.get()); });
        file()->watch().requireEnding(statement.get(), ++row);
    }

    void release() noexcept override {
        statement.reset();
        onRow = false;
    }

    StatementHandle statement;
    bool onRow;
    qint64 row = 0;
};

}  // namespace varo::data
