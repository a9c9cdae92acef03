// library_seeds TEMPLATE FOLDER writes the seeds of the library fuzzer into FOLDER: libraries with
// the tables of TEMPLATE, in the smallest pages, with and without something beside them.

#include "library_mutator.h"
#include "memory_database.h"

#include <fstream>
#include <iostream>
#include <iterator>

using namespace varo::fuzz;

namespace {

constexpr auto kContent = R"(
INSERT INTO TableInfo VALUES ('DBVersion', '2.0');
INSERT INTO Tree VALUES (1, 'beams', 0, 1), (2, 'simple', 1, 1), (3, 'fixed', 1, 2), (4, 'a', 3, 1);
INSERT INTO Formula VALUES (1, 'deflection', 'F*L^3/(48*E*I)', 'F: load', 2, 2, 1, x'424d000102'),
                           (2, 'moment', 'F*L/4', '', 0, 2, 2, NULL),
                           (3, 'top', 'a+b', NULL, 2, 0, 1, zeroblob(2000));
INSERT INTO RecentVar VALUES ('F', 1, '30', 0, ''), ('E', 1, '206', 2, 'library.mdb->Tree'),
                             ('L', 0, '2.5', 1, 'span'), ('a', 3, '1', 0, NULL);
INSERT INTO Property VALUES (1, 'p', 1, 1, 1), (2, 'p', 2, 1, 2), (3, 'p', 0, 0, 1);
INSERT INTO FilterCond VALUES (1, 1, 0, 1), (2, 1, 1, 4), (3, 1, 1, 3), (4, 1, 3, 4), (1, 2, 0, 4);
INSERT INTO FilterExpressions VALUES (1, 2, '', 'x', 1, 1, '1'), (1, 4, '', 'y', 2, 7, 'a'),
                                     (2, 1, '', 'x', 1, 3, '0'))";

void write(const std::string& path, const LibraryInput& input) {
    const std::string bytes = input.bytes();
    std::ofstream(path, std::ios::binary).write(bytes.data(), std::ssize(bytes));
}

std::string libraryOf(const std::string& schema, const std::string& content) {
    MemoryDatabase database;
    database.execute("PRAGMA page_size = 512");
    return database.execute(schema) && database.execute(content) ? database.file() : "";
}

}  // namespace

int main(int argc, char** argv) {
    std::ifstream file(argc > 2 ? argv[1] : "");
    const std::string schema{std::istreambuf_iterator<char>(file), {}};
    LibraryInput input;
    input.library = libraryOf(schema, kContent);
    if (argc < 3 || schema.empty() || input.library.empty()) {
        std::cerr << "no seeds were made\n";
        return 1;
    }
    const std::string folder = argv[2];
    write(folder + "/library", input);
    input.side = SideFile::Journal;
    input.sideContent = hotJournal(input.library);
    write(folder + "/journal", input);
    LibraryInput table;
    table.library = libraryOf("CREATE TABLE [钢 1] (E DOUBLE, N TEXT(20), D DATETIME, B BLOB)",
                              "INSERT INTO [钢 1] VALUES (206.5, 'Q235', '2020-01-01', x'00')");
    write(folder + "/table", table);
    LibraryInput ahead = LibraryInput();
    ahead.library = input.library;
    ahead.library[18] = ahead.library[19] = 2;
    write(folder + "/ahead", ahead);
}
