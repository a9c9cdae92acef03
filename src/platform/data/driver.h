#pragma once

#include <QString>

#include <memory>
#include <span>
#include <sqlite3.h>
#include <vector>

namespace varo::data {

class DatabaseFile;

/// Something that refers to the handle of an open file, and lets go of it before the handle closes.
class HandleUser {
  public:
    explicit HandleUser(DatabaseFile& file);
    HandleUser(const HandleUser&) = delete;
    HandleUser& operator=(const HandleUser&) = delete;

    /// Null once the file has been closed.
    DatabaseFile* file() const noexcept { return file_; }

  protected:
    virtual ~HandleUser();

    /// Gives back everything that was taken from the handle.
    virtual void release() noexcept = 0;

  private:
    friend class DatabaseFile;
    DatabaseFile* file_;
};

/// The bytes of one long-binary field. Everything that fails throws Error; so does everything after
/// the file has been closed.
class LongBinary {
  public:
    virtual ~LongBinary() = default;
    virtual qint64 size() = 0;
    virtual void read(qint64 offset, std::span<char> chunk) = 0;

    /// Replaces the content by `total` bytes of any value, which write() then overwrites.
    virtual void replace(qint64 total) = 0;
    virtual void write(qint64 offset, std::span<const char> chunk) = 0;
};

/// An open file, seen through SQLite: whatever the file's format, its tables are reached with SQL
/// on handle(). Long-binary fields have a way of their own, since not every format offers them
/// there.
class DatabaseFile {
  public:
    DatabaseFile() = default;
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;
    virtual ~DatabaseFile() = default;

    virtual sqlite3* handle() const noexcept = 0;

    /// The field `column` of the row of `table` whose column ID is `id`; throws Error when there is
    /// no such row.
    virtual std::shared_ptr<LongBinary> field(const QString& table, const QString& column,
                                              qint32 id) = 0;

    /// Makes every user of the handle let go; to be called before destruction.
    void releaseUsers() noexcept;

  private:
    friend class HandleUser;
    std::vector<HandleUser*> users_;
};

/// Opens the files of one format.
class Driver {
  public:
    virtual ~Driver() = default;

    /// True when a file that begins with these bytes (HeadBytes, or the whole of a shorter file) is
    /// in the driver's format.
    virtual bool reads(std::span<const char> head) const noexcept = 0;

    /// Opens an existing file and reads its structure. Throws Error.
    virtual std::unique_ptr<DatabaseFile> open(const QString& path) const = 0;
};

/// How many bytes of a file a driver is shown.
inline constexpr qint64 HeadBytes = 64;

/// The driver for the file at `path`, told by its content. Throws Error when the file is missing or
/// no driver reads it.
const Driver& driverFor(const QString& path);

}  // namespace varo::data
