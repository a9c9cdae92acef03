#pragma once

#include <cstring>
#include <sqlite3.h>
#include <string>

namespace varo::fuzz {

/// A database in memory, in which nothing takes long. Statements that fail do nothing.
class MemoryDatabase {
  public:
    /// The one in `file`; an empty one for "".
    explicit MemoryDatabase(const std::string& file = {}) {
        sqlite3_open(":memory:", &database_);
        sqlite3_db_config(database_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
        sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, 1 << 20);
        sqlite3_progress_handler(
            database_, 100'000, [](void*) { return 1; }, nullptr);
        if (!file.empty()) {
            auto* const copy = static_cast<unsigned char*>(sqlite3_malloc64(file.size()));
            std::memcpy(copy, file.data(), file.size());
            const auto size = static_cast<sqlite3_int64>(file.size());
            sqlite3_deserialize(database_, "main", copy, size, size,
                                SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
        }
    }
    ~MemoryDatabase() { sqlite3_close(database_); }
    MemoryDatabase(const MemoryDatabase&) = delete;
    MemoryDatabase& operator=(const MemoryDatabase&) = delete;

    bool execute(const std::string& statements) {
        return sqlite3_exec(database_, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    /// The content of its file; "" when there is none.
    std::string file() {
        sqlite3_int64 size = 0;
        unsigned char* const bytes = sqlite3_serialize(database_, "main", &size, 0);
        std::string content;
        if (bytes != nullptr) {
            content.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
        }
        sqlite3_free(bytes);
        return content;
    }

  private:
    sqlite3* database_ = nullptr;
};

}  // namespace varo::fuzz
