#include "library_mutator.h"

#include "memory_database.h"

#include <array>
#include <cstring>

namespace varo::fuzz {

namespace {

constexpr std::string_view kJournalMagic("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);
constexpr std::size_t kSector = 512;

constexpr std::array kTables{"Tree",       "Formula",           "RecentVar", "Property",
                             "FilterCond", "FilterExpressions", "TableInfo"};
constexpr std::array kColumns{"ID",        "Name",        "PID",      "OrderID",  "Formula",
                              "PicType",   "Pic",         "VarName",  "Value",    "VarMemo",
                              "FormulaID", "PropID",      "PropName", "FilterID", "NodeID",
                              "NodeType",  "UserID",      "ParentID", "Type",     "ExpID",
                              "FieldName", "CompareType", "TheConst", "rowid"};
constexpr std::array kValues{"NULL",
                             "0",
                             "-1",
                             "ID",
                             "PID",
                             "1",
                             "2",
                             "4",
                             "'x'",
                             "'1 a'",
                             "2147483647",
                             "2147483648",
                             "-9223372036854775808",
                             "1e308",
                             "9e999",
                             "x'00ff'",
                             "zeroblob(3000)",
                             "printf('%.*c', 3000, 'x')",
                             "char(0)",
                             "x'd800'",
                             "rowid",
                             "rowid % 2",
                             "'a.mdb->Tree'"};

/// Statements of a schema; % is the name of a table.
constexpr std::array kDefinitions{
    "CREATE VIEW % AS WITH RECURSIVE a(b) AS (SELECT 1 UNION ALL SELECT b FROM a) SELECT b AS ID "
    "FROM a",
    "CREATE VIEW % AS SELECT 1 AS ID, 'n' AS Name, 0 AS PID, 1 AS OrderID",
    "CREATE TRIGGER T AFTER INSERT ON % BEGIN DELETE FROM Formula; END",
    "CREATE TRIGGER T BEFORE UPDATE ON % BEGIN SELECT RAISE(IGNORE); END",
    "CREATE TRIGGER T AFTER DELETE ON % BEGIN INSERT INTO Tree (Name) VALUES (zeroblob(1e9)); END",
    "CREATE VIRTUAL TABLE % USING fts5(Name)",
    "CREATE VIRTUAL TABLE % USING dbstat",
    "CREATE VIRTUAL TABLE % USING rtree(ID, a, b)",
    "CREATE TABLE % (ID INTEGER PRIMARY KEY)",
    "CREATE TABLE % (ID TEXT PRIMARY KEY, Name) WITHOUT ROWID",
    "CREATE TABLE % (ID, Name) STRICT",
    "CREATE TABLE % AS SELECT 1",
    "CREATE INDEX I ON % (abs(ID))",
    "CREATE INDEX I ON % (rowid + 1)",
    "CREATE UNIQUE INDEX I ON % (Name) WHERE Name > 'a'",
    "CREATE INDEX I ON % (Name COLLATE other)",
    "CREATE TABLE sqlite_stat1 (tbl, idx, stat)"};

/// What a definition of a table can have besides.
constexpr std::array kClauses{", G AS (zeroblob(1000000000))",
                              ", G AS (ID + 1) STORED",
                              ", CHECK (ID IN (WITH RECURSIVE a(b) AS (SELECT 1 UNION ALL SELECT b "
                              "+ 1 FROM a) SELECT b FROM a))",
                              ", CHECK (Name < 'a')",
                              ", D DEFAULT (randomblob(1000000000))",
                              ", D TEXT DEFAULT 'x' NOT NULL",
                              ", C TEXT COLLATE other",
                              ", U UNIQUE ON CONFLICT REPLACE",
                              ", UNIQUE (OrderID)",
                              ", R REFERENCES Formula (ID) ON DELETE CASCADE",
                              ", ID",
                              ", \"\"",
                              ", FOREIGN KEY (PID) REFERENCES Tree (ID)"};

template <std::size_t count>
std::string oneOf(const std::array<const char*, count>& all, Chance& chance) {
    return all[chance.below(count)];
}

std::string filled(std::string pattern, const std::string& name) {
    const std::size_t at = pattern.find('%');
    return at == std::string::npos ? pattern : pattern.replace(at, 1, name);
}

std::string literal(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += std::string(c == '\'' ? 2 : 1, c);
    }
    return quoted + "'";
}

void changeSchema(MemoryDatabase& database, Chance& chance) {
    const std::string table = oneOf(kTables, chance);
    const std::string definition = filled(oneOf(kDefinitions, chance), table);
    const std::string where = " WHERE rowid = " + std::to_string(1 + chance.below(20));
    const std::string update = "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET ";
    switch (chance.below(7)) {
        case 0:
            database.execute("DROP TABLE " + table);
            database.execute(definition);
            break;
        case 1:
            database.execute(definition);
            break;
        case 2:
            database.execute(update + "sql = " + literal(definition) + where);
            break;
        case 3:
            database.execute(update + "sql = substr(sql, 1, length(sql) - 1) || " +
                             literal(oneOf(kClauses, chance) + ")") + where);
            break;
        case 4:
            database.execute(update + "rootpage = " + std::to_string(chance.below(30)) + where);
            break;
        case 5:
            database.execute(
                update + "type = " +
                literal(oneOf(std::array{"table", "view", "index", "trigger"}, chance)) + where);
            break;
        default:
            database.execute("ALTER TABLE " + table + " RENAME COLUMN " + oneOf(kColumns, chance) +
                             " TO " + oneOf(kColumns, chance));
    }
}

void changeValues(MemoryDatabase& database, Chance& chance) {
    const std::string table = oneOf(kTables, chance);
    const std::string where =
        chance.below(2) == 0 ? " WHERE rowid = " + std::to_string(1 + chance.below(6)) : "";
    if (chance.below(4) == 0) {
        database.execute("INSERT INTO " + table + " SELECT * FROM " + table + where);
        return;
    }
    database.execute("UPDATE " + table + " SET " + oneOf(kColumns, chance) + " = " +
                     oneOf(kValues, chance) + where);
}

std::size_t pageSizeOf(const std::string& library) {
    const std::size_t size = library.size() < 100
                                 ? 0
                                 : std::size_t{static_cast<std::uint8_t>(library[16])} << 8 |
                                       static_cast<std::uint8_t>(library[17]);
    return size < 512 ? 512 : size;
}

/// Changes the header of a page, the place of one of its cells or the beginning of one.
void changePage(std::string& library, Chance& chance) {
    const std::size_t pageSize = pageSizeOf(library);
    if (library.size() < pageSize) {
        return;
    }
    const std::size_t page = chance.below(library.size() / pageSize);
    const std::size_t header = page * pageSize + (page == 0 ? 100 : 0);
    const std::size_t cells = header + 8 + 2 * chance.below(8);
    const std::size_t cell = std::size_t{static_cast<std::uint8_t>(library[cells])} << 8 |
                             static_cast<std::uint8_t>(library[cells + 1]);
    const std::array<std::size_t, 4> places{header + chance.below(12), cells + chance.below(2),
                                            page * pageSize + cell % pageSize + chance.below(8),
                                            chance.below(100)};
    const std::size_t place = std::min(places[chance.below(4)], library.size() - 1);
    constexpr std::array<std::uint8_t, 10> kBytes{0, 1, 2, 5, 10, 13, 0x7f, 0x80, 0x81, 0xff};
    library[place] = static_cast<char>(chance.below(2) == 0 ? kBytes[chance.below(kBytes.size())]
                                                            : chance.below(256));
    if (chance.below(8) == 0) {  // two pages that lead to the same
        const std::size_t other = chance.below(library.size() / pageSize) * pageSize;
        std::memmove(library.data() + other, library.data() + page * pageSize, pageSize);
    }
}

void changeSideFile(LibraryInput& input, Chance& chance, const std::string& victim) {
    input.side = static_cast<SideFile>(chance.below(3));
    input.sideContent.clear();
    if (input.side == SideFile::None) {
        return;
    }
    input.sideContent = hotJournal(input.library, chance.below(2) == 0 ? victim : std::string());
    if (input.side == SideFile::Log) {
        input.sideContent.replace(0, 4, "\x37\x7f\x06\x82");
    }
    if (chance.below(2) == 0) {
        input.sideContent[chance.below(std::min<std::size_t>(input.sideContent.size(), 40))] =
            static_cast<char>(chance.below(256));
    }
}

std::string bigEndian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift);
    }
    return bytes;
}

}  // namespace

std::string hotJournal(const std::string& library, const std::string& super) {
    constexpr std::uint32_t kNonce = 7;
    const std::size_t pageSize = pageSizeOf(library);
    const auto pages = static_cast<std::uint32_t>(library.size() / pageSize);
    std::string journal(kJournalMagic);
    for (const std::uint32_t number :
         {pages, kNonce, pages, std::uint32_t{kSector}, static_cast<std::uint32_t>(pageSize)}) {
        journal += bigEndian(number);
    }
    journal.resize(kSector);
    for (std::uint32_t page = 0; page < pages; ++page) {
        const std::string content = library.substr(page * pageSize, pageSize);
        std::uint32_t sum = kNonce;
        for (std::size_t at = pageSize - 200; at > 0 && at < pageSize; at -= 200) {
            sum += static_cast<std::uint8_t>(content[at]);
        }
        journal += bigEndian(page + 1) + content + bigEndian(sum);
    }
    if (!super.empty()) {
        std::uint32_t sum = 0;
        for (const char c : super) {
            sum += static_cast<std::uint32_t>(static_cast<signed char>(c));
        }
        const auto lockingPage = static_cast<std::uint32_t>(0x40000000 / pageSize + 1);
        journal += bigEndian(lockingPage) + super +
                   bigEndian(static_cast<std::uint32_t>(super.size())) + bigEndian(sum);
        journal += kJournalMagic;
    }
    return journal;
}

void changeLibrary(LibraryInput& input, Chance& chance, const std::string& victim) {
    const std::size_t kind = chance.below(8);
    if (kind < 3) {
        changePage(input.library, chance);
    } else if (kind == 7) {
        changeSideFile(input, chance, victim);
    } else {
        MemoryDatabase database(input.library);
        kind < 5 ? changeSchema(database, chance) : changeValues(database, chance);
        if (std::string changed = database.file(); !changed.empty()) {
            input.library = std::move(changed);
        }
    }
}

}  // namespace varo::fuzz
