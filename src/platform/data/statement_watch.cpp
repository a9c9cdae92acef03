#include "platform/data/statement_watch.h"

#include "platform/data/temporary_files.h"

#include <QByteArrayView>

#include <algorithm>
#include <limits>

namespace varo::data {

namespace {

// A statement may read a value as long as the file for every dozen instructions.
constexpr int kInstructionsBetweenChecks = 512;

// Run in one or two milliseconds.
constexpr qint64 kInstructionsBetweenQuestions = 20'000;

// Read in less than a millisecond.
constexpr qint64 kPagesBetweenChecks = 64;

// A page takes as long as some instructions.
constexpr qint64 kInstructionsOfPage = 8;

// A second or two; enough to compare each of some thousand rows with each other.
constexpr qint64 kInstructionsAtLeast = 200'000'000;

// A row takes four bytes at least, and a statement a few dozen instructions for it.
constexpr qint64 kInstructionsPerByte = 16;

// A row takes more than four bytes, and most statements have one for each of a table at most.
constexpr qint64 kRowsAtLeast = 100'000;
constexpr qint64 kBytesPerRow = 4;

// To go through a file, or to delete all of it, asks for each page a few times; to find a row by
// its number, for a page on each level of a tree. A statement adds pages to the file, too.
constexpr qint64 kRoundsOfFile = 8;
constexpr qint64 kPagesPerInstruction = 2;
constexpr qint64 kPageBytesAtLeast = 64 * 1024 * 1024;

// A damaged header may tell any size.
constexpr qint64 kSmallestPage = 512;

// SQLite's own count of what a statement has taken has 32 bits.
constexpr qint64 kInstructionsAtMost = 4'000'000'000;

}  // namespace

StatementWatch::StatementWatch(sqlite3* database, qint64 pageSize)
    : database_(database), pageSize_(std::max(pageSize, kSmallestPage)) {
    setFileSize(0);
    ask(kInstructionsBetweenChecks);
}

void StatementWatch::restart() noexcept {
    ++statements_;
    taken_ = 0;
    ownPages_ = 0;
    nextQuestion_ = kInstructionsBetweenQuestions;
    isUnwanted_ = false;
    for (const int count : {SQLITE_DBSTATUS_CACHE_HIT, SQLITE_DBSTATUS_CACHE_MISS}) {
        int pages = 0;
        int highest = 0;
        sqlite3_db_status(database_, count, &pages, &highest, 1);
    }
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
    ask(kInstructionsBetweenChecks);
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
    TemporaryFileLayer::bound(database_, bytes);
    fileSize_ = bytes;
    most_ = kInstructionsAtMost;
    if (bytes < (kInstructionsAtMost - kInstructionsAtLeast) / kInstructionsPerByte) {
        most_ = kInstructionsAtLeast + bytes * kInstructionsPerByte;
    }
    mostRows_ = kRowsAtLeast + bytes / kBytesPerRow;
}

qint64 StatementWatch::pagesTaken() const {
    qint64 taken = ownPages_;
    for (const int count : {SQLITE_DBSTATUS_CACHE_HIT, SQLITE_DBSTATUS_CACHE_MISS}) {
        int pages = 0;
        int highest = 0;
        sqlite3_db_status(database_, count, &pages, &highest, 0);
        taken += pages;
    }
    return taken;
}

bool StatementWatch::areTooMany(qint64 pages, qint64 instructions) const {
    const qint64 beyond = pages - kPagesPerInstruction * instructions;
    if (beyond <= 0) {
        return false;  // as most are; without a division
    }
    const qint64 rest = (beyond * pageSize_ - kPageBytesAtLeast) / kRoundsOfFile;
    return rest > fileSize_ && rest > presentFileSize();
}

/// Larger than the size that is known while a long transaction is under way.
qint64 StatementWatch::presentFileSize() const {
    sqlite3_file* file = nullptr;
    sqlite3_int64 size = 0;
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    const bool isFile = file != nullptr && file->pMethods != nullptr;  // none in memory
    return isFile && file->pMethods->xFileSize(file, &size) == SQLITE_OK ? size : 0;
}

void StatementWatch::requireEnding(sqlite3_stmt* statement, qint64 row, qint64 pages) const {
    const auto taken =
        static_cast<quint32>(sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_VM_STEP, 0));
    if (taken > most_ || row > mostRows_ || areTooMany(pages, taken)) {
        throwEndless();
    }
}

int StatementWatch::isToEnd(void* watch) {
    auto& self = *static_cast<StatementWatch*>(watch);
    self.taken_ += self.between_;
    return self.isToEnd() ? 1 : 0;
}

bool StatementWatch::isToEnd() {
    const qint64 pages = pagesTaken();
    if (taken_ > most_ || areTooMany(pages, taken_) || (readsSchema_ && readsStatistics())) {
        return true;
    }
    const qint64 work = taken_ + kInstructionsOfPage * pages;
    if (work < nextQuestion_) {
        return false;
    }
    nextQuestion_ = work + kInstructionsBetweenQuestions;
    isUnwanted_ = isWanted_ && !isWanted_();
    return isUnwanted_;
}

void StatementWatch::takePage() {
    ++ownPages_;
    if (ownPages_ % kPagesBetweenChecks == 0 && isToEnd()) {
        throw Error(QStringLiteral("interrupted"), Error::Cause::Interrupted);
    }
}

void StatementWatch::requireWanted() {
    if (++asked_ % kPagesBetweenChecks == 0 && isWanted_ && !isWanted_()) {
        isUnwanted_ = true;
        throw Error(QStringLiteral("interrupted"), Error::Cause::Interrupted);
    }
}

void StatementWatch::throwEndless() {
    throw Error(QStringLiteral("the statement does not end: the file is damaged"));
}

}  // namespace varo::data
