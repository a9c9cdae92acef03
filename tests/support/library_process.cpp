// Works on a library in a process of its own, and writes one line for each thing that it has done:
//
// lock PATH: keeps everybody else out of the library until it is killed; read PATH lets others
// read, and write as far as to the commit; write PATH lets them read.
//
// spill PATH: writes half of a transaction into the library and waits to be killed.

#include <cstdio>
#include <cstdlib>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <unistd.h>

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
constexpr struct {
    std::string_view command;
    const char* statements;
    const char* said;
} Holds[] = {
    {"lock", "BEGIN EXCLUSIVE", "locked"},
    {"read", "BEGIN; SELECT count(*) FROM sqlite_schema", "reading"},
    {"write", "BEGIN IMMEDIATE", "writing"},
    {"spill",
     "PRAGMA cache_size = 1; BEGIN IMMEDIATE; CREATE TABLE Spilled (Bytes);"
     "INSERT INTO Spilled VALUES (randomblob(1000000));"
     "INSERT INTO Spilled VALUES (randomblob(1000000))",
     "spilled"},
};

int hold(const char* path, const char* statements, const char* said) {
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(path, &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
        sqlite3_exec(database, statements, nullptr, nullptr, nullptr) != SQLITE_OK) {
        return 1;
    }
    say(said);
    for (;;) {
        pause();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view command = argc > 2 ? argv[1] : "";
    for (const auto& each : Holds) {
        if (command == each.command) {
            return hold(argv[2], each.statements, each.said);
        }
    }
    return 1;
}
