// Works on a library in a process of its own, and writes a line when it has done so:
//
// lock PATH: keeps everybody else out of the library until it is killed; read PATH lets others
// read, and write as far as to the commit; write PATH lets them read.
//
// spill PATH: writes half of a transaction into the library and waits to be killed.

#include <cstdio>
#include <sqlite3.h>
#include <string_view>
#include <unistd.h>

namespace {

// What a process can be in the middle of. In the last, the small cache makes SQLite write into the
// file before the commit, after the journal that undoes it.
constexpr struct {
    std::string_view command;
    const char* statements;
    const char* said;
} kHolds[] = {
    {"lock", "BEGIN EXCLUSIVE", "locked"},
    {"read", "BEGIN; SELECT count(*) FROM sqlite_schema", "reading"},
    {"write", "BEGIN IMMEDIATE", "writing"},
    {"spill",
     "PRAGMA cache_size = 1; BEGIN IMMEDIATE; CREATE TABLE Spilled (Bytes);"
     "INSERT INTO Spilled VALUES (randomblob(1000000)), (randomblob(1000000))",
     "spilled"},
};

}  // namespace

int main(int argc, char** argv) {
    for (const auto& [command, statements, said] : kHolds) {
        sqlite3* database = nullptr;
        if (argc == 3 && command == argv[1] &&
            sqlite3_open_v2(argv[2], &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
            sqlite3_exec(database, statements, nullptr, nullptr, nullptr) == SQLITE_OK) {
            std::puts(said);
            std::fflush(stdout);
            pause();
        }
    }
    return 1;
}
