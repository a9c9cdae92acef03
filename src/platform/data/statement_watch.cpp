#include "platform/data/statement_watch.h"

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

StatementWatch::StatementWatch(sqlite3* database) {
    setFileSize(0);
    sqlite3_progress_handler(database, kInstructionsBetweenQuestions, isToEnd, this);
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
    self.taken_ += kInstructionsBetweenQuestions;
    if (self.taken_ > self.most_) {
        return 1;
    }
    self.isUnwanted_ = self.isWanted_ && !self.isWanted_();
    return self.isUnwanted_ ? 1 : 0;
}

void StatementWatch::throwEndless() {
    throw Error(QStringLiteral("the statement does not end: the file is damaged"));
}

}  // namespace varo::data
