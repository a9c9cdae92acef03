#pragma once

#include <QtGlobal>

#include <memory>
#include <sqlite3.h>

namespace varo::data {

/// SQLite's result, one of SQLITE_FULL, when a statement needs a temporary file that is too large.
inline constexpr int kTemporaryFileFull = SQLITE_FULL | 0x7f00;

/// The default file layer of SQLite, for one connection whose temporary files are bounded: those in
/// which a statement sorts rows and tells different ones, which rows that share one long value fill
/// without end. The journals of savepoints are not among them; they have each page once.
class TemporaryFileLayer {
  public:
    TemporaryFileLayer();
    ~TemporaryFileLayer();
    Q_DISABLE_COPY_MOVE(TemporaryFileLayer)

    /// Opens a connection on this layer, which must outlive it: sqlite3_open_v2().
    int open(const char* path, sqlite3** database, int flags) const;

    /// Lets each temporary file of a connection get as long as a statement on a file of so many
    /// bytes can need. Does nothing for a connection on another layer.
    static void bound(sqlite3* database, qint64 fileSize);

  private:
    struct Layer;
    std::unique_ptr<Layer> layer_;
};

}  // namespace varo::data
