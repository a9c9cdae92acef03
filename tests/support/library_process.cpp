// Works on a library in a process of its own, and writes one line for each thing that it has done:
//
// lock PATH: keeps everybody else out of the library until it is killed; read PATH lets others
// read, and write as far as to the commit; write PATH lets them read.
//
// log PATH: gives the database a write-ahead log, stores a row of Item in it and keeps it open.
//
// spill PATH: writes half of a transaction into the library and waits to be killed.
//
// exclusive PATH STATEMENT: takes a lock for good, stores a row of Item, and kills itself when the
// next commit, of the statement, has written a page.
//
// These are for databases of SQLite; lock, read and write are for Access files, too.
//
// session PATH FOLDER COUNT: saves COUNT filters for formula 1, one over the other, with the backup
// in FOLDER, and waits to be killed; a line is the number of filters that have been saved.
//
// restore PATH FOLDER WRITES: saves a filter in the same way, cancels and ends, or kills itself
// after so many writes into the library.

#include "library/condition_text.h"
#include "library/property_session.h"
#include "platform/data/access/file_layer.h"
#include "platform/data/access/file_lock.h"
#include "store/library_connection.h"
#include "support/recording_questions.h"

#include <QFile>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <unistd.h>

using namespace varo;

namespace {

// Unbuffered, so that nothing said is lost when the process is killed.
void say(const std::string& line) {
    const std::string text = line + '\n';
    if (write(STDOUT_FILENO, text.data(), text.size()) < 0) {
        std::exit(1);
    }
}

// What a process can be in the middle of. In the last, the small cache makes SQLite write into the
// file before the commit, after the journal that undoes it.
struct Hold {
    std::string_view command;
    const char* statements;
    const char* said;
};
constexpr Hold Holds[] = {
    {"lock", "BEGIN EXCLUSIVE", "locked"},
    {"read", "BEGIN; SELECT count(*) FROM sqlite_schema", "reading"},
    {"write", "BEGIN IMMEDIATE", "writing"},
    {"log", "PRAGMA journal_mode = WAL; INSERT INTO Item (Name) VALUES ('in the log')", "logged"},
    {"spill",
     "PRAGMA cache_size = 1; BEGIN IMMEDIATE; CREATE TABLE Spilled (Bytes);"
     "INSERT INTO Spilled VALUES (randomblob(1000000));"
     "INSERT INTO Spilled VALUES (randomblob(1000000))",
     "spilled"},
};

/// The database, on which the statements have been run; null when that fails.
sqlite3* opened(const char* path, const char* statements) {
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(path, &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
        sqlite3_exec(database, statements, nullptr, nullptr, nullptr) != SQLITE_OK) {
        sqlite3_close(database);
        return nullptr;
    }
    return database;
}

/// Takes the lock that keeps others from an Access file; false for a file of another kind.
bool lockedAccessFile(const char* path, std::string_view command) {
    static QFile file;
    file.setFileName(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadWrite) || file.read(4) != QByteArray("\0\1\0\0", 4)) {
        return false;
    }
    using namespace access;
    lock(file.handle(), command == "write" ? LockByte::Writer : LockByte::Readers,
         command == "read" ? LockKind::Shared : LockKind::Alone, 0);
    return true;
}

int hold(const char* path, const Hold& what) {
    if (!lockedAccessFile(path, what.command) && opened(path, what.statements) == nullptr) {
        return 1;
    }
    say(what.said);
    for (;;) {
        pause();
    }
}

// Kills the process after `left` writes into databases, or into Access files and beside them.
struct KillAfterWrites {
    struct PageLayer : access::FileLayer {
        void write(int descriptor, const QByteArray& bytes, qint64 offset) override {
            if (left-- == 0) {
                raise(SIGKILL);
            }
            FileLayer::write(descriptor, bytes, offset);
        }
    };
    static inline int left = 0;
    static inline PageLayer pages;
    static inline sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
    static inline sqlite3_vfs files = *usual;
    static inline sqlite3_io_methods methods{};
    static inline const sqlite3_io_methods* usualMethods = nullptr;

    static void install(int writes) {
        left = writes;
        PageLayer::setCurrent(&pages);
        files.zName = "killing";
        files.xOpen = [](sqlite3_vfs*, auto* name, auto* file, int flags, int* out) {
            const int result = usual->xOpen(usual, name, file, flags, out);
            if (result == SQLITE_OK && (flags & SQLITE_OPEN_MAIN_DB) != 0) {
                usualMethods = file->pMethods;
                methods = *usualMethods;
                methods.xWrite = [](auto* written, auto* bytes, int length, sqlite3_int64 at) {
                    if (left-- == 0) {
                        raise(SIGKILL);
                    }
                    return usualMethods->xWrite(written, bytes, length, at);
                };
                file->pMethods = &methods;
            }
            return result;
        };
        sqlite3_vfs_register(&files, 1);
    }
};

int exclusive(const char* path, const char* statement) {
    KillAfterWrites::install(-1);
    sqlite3* database = opened(path,
                               "PRAGMA locking_mode = EXCLUSIVE;"
                               "INSERT INTO Item (Name) VALUES ('under the lock'); BEGIN;"
                               "INSERT INTO Item (Name) VALUES ('in the second commit')");
    if (database == nullptr ||
        sqlite3_exec(database, statement, nullptr, nullptr, nullptr) != SQLITE_OK) {
        return 1;
    }
    say("exclusive");
    KillAfterWrites::left = 1;
    return sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr);
}

int session(const char* path, const char* ownFolder, int count, bool isCancelled) {
    test::RecordingQuestions questions;
    clsDBFuncs funcs(questions);
    PropertySession session(QString::fromLocal8Bit(ownFolder), funcs);
    QString folder;
    QString name;
    SplitFilePath(QString::fromLocal8Bit(path), folder, name);
    if (!session.SetConnection(folder, name, {}).isEmpty() ||
        !session.InitForm(1, NodeTypeFormula).isEmpty()) {
        return 1;
    }
    const qint32 property = session.add().value_or(0);
    for (int number = 1; number <= count; ++number) {
        const QString text = QStringLiteral("a = %1 and b = %1").arg(number);
        if (!session.saveFilter(property, parseCondition(text).tree)) {
            return 1;
        }
        say(std::to_string(number));
    }
    if (isCancelled) {
        return session.cancel().isEmpty() ? 0 : 1;
    }
    for (;;) {
        pause();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view command = argc > 2 ? argv[1] : "";
    for (const auto& each : Holds) {
        if (command == each.command) {
            return hold(argv[2], each);
        }
    }
    if (command == "exclusive" && argc > 3) {
        return exclusive(argv[2], argv[3]);
    }
    if (command == "session" && argc > 4) {
        return session(argv[2], argv[3], std::atoi(argv[4]), false);
    }
    if (command == "restore" && argc > 4) {
        KillAfterWrites::install(std::atoi(argv[4]));
        return session(argv[2], argv[3], 1, true);
    }
    return 1;
}
