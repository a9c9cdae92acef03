#include "platform/data/statement_watch.h"

#include <QByteArrayView>

#include <algorithm>
#include <limits>

namespace varo::data {

namespace {

// Run in one or two milliseconds.
constexpr int kInstructionsBetweenQuestions = 20'000;

// A second or two; enough to compare each of some thousand rows with each other.
constexpr qint64 kInstructionsAtLeast = 200'000'000;

// A row takes four bytes at least, and a statement a few dozen instructions for it.
constexpr qint64 kInstructionsPerByte = 16;

// A row takes more than four bytes, and most statements have one for each of a table at most.
constexpr qint64 kRowsAtLeast = 100'000;
constexpr qint64 kBytesPerRow = 4;

// SQLite's own count of what a statement has taken has 32 bits.
constexpr qint64 kInstructionsAtMost = 4'000'000'000;

}  // namespace

StatementWatch::StatementWatch(sqlite3* database) : database_(database) {
    setFileSize(0);
    ask(kInstructionsBetweenQuestions);
}

void StatementWatch::ask(int instructionsBetween) {
    between_ = instructionsBetween;
    sqlite3_progress_handler(database_, between_, isToEnd, this);
}

int StatementWatch::readSchema() {
    // A statement that SQLite runs to read the statistics ends at its first jump, which is before
    // the first row. SQLite does without them then.
    readsSchema_ = true;
    ask(1);
    int result =
        sqlite3_exec(database_, "Select 1 From sqlite_schema Limit 1", nullptr, nullptr, nullptr);
    ask(kInstructionsBetweenQuestions);
    readsSchema_ = false;
    if (result != SQLITE_OK) {
        return result;
    }
    // A change by another program makes SQLite read all of it again.
    sqlite3_stmt* computed = nullptr;
    result = sqlite3_prepare_v2(
        database_,
        "Select 1 From pragma_table_list As t, pragma_table_xinfo(t.name) As c "
        "Where t.name Like 'sqlite\\_stat%' Escape '\\' And c.hidden <> 0 Limit 1",
        -1, &computed, nullptr);
    if (result == SQLITE_OK && sqlite3_step(computed) == SQLITE_ROW) {
        result = SQLITE_AUTH;
    }
    sqlite3_finalize(computed);
    return result;
}

bool StatementWatch::readsStatistics() const {
    for (sqlite3_stmt* each = sqlite3_next_stmt(database_, nullptr); each != nullptr;
         each = sqlite3_next_stmt(database_, each)) {
        if (QByteArrayView(sqlite3_sql(each)).contains("sqlite_stat")) {
            return true;
        }
    }
    return false;
}

void StatementWatch::setFileSize(qint64 bytes) {
    most_ = kInstructionsAtMost;
    if (bytes < (kInstructionsAtMost - kInstructionsAtLeast) / kInstructionsPerByte) {
        most_ = kInstructionsAtLeast + bytes * kInstructionsPerByte;
    }
    mostRows_ = kRowsAtLeast + bytes / kBytesPerRow;
}

void StatementWatch::requireEnding(sqlite3_stmt* statement, qint64 row) const {
    const auto taken =
        static_cast<quint32>(sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_VM_STEP, 0));
    if (taken > most_ || row > mostRows_) {
        throwEndless();
    }
}

int StatementWatch::isToEnd(void* watch) {
    auto& self = *static_cast<StatementWatch*>(watch);
    self.taken_ += self.between_;
    if (self.taken_ > self.most_ || (self.readsSchema_ && self.readsStatistics())) {
        return 1;
    }
    self.isUnwanted_ = self.isWanted_ && !self.isWanted_();
    return self.isUnwanted_ ? 1 : 0;
}

void StatementWatch::throwEndless() {
    throw Error(QStringLiteral("the statement does not end: the file is damaged"));
}

}  // namespace varo::data
