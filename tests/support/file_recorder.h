#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace varo::test {

/// One change that a program makes to a file, or that it waits for until it is on the disk.
struct FileChange {
    enum class Kind { Write, Truncate, Sync, Delete };
    Kind kind;
    QString path;
    qint64 offset = 0;  ///< of what is written; the new size of a file that is truncated
    QByteArray bytes = {};
    bool isDurable = false;  ///< of a deletion: it is on the disk when the next change begins
};

/// Records the changes that SQLite makes to the files of databases opened while it lives. One at a
/// time.
class FileRecorder {
  public:
    FileRecorder();
    ~FileRecorder();
    FileRecorder(const FileRecorder&) = delete;
    FileRecorder& operator=(const FileRecorder&) = delete;

    const std::vector<FileChange>& changes() const;

  private:
    struct Layer;
    std::unique_ptr<Layer> layer_;
};

/// Files and their content.
using Disk = QHash<QString, QByteArray>;

/// Calls `check` with every disk that a crash can leave after some of `changes` to `disk`: after
/// each change, the last one whole or half; and with what had not been synced lost, all of it, one
/// change of it, or some hundred times a random part, the same in every run. Each disk once.
/// Returns how many there were.
int forEachCrash(const Disk& disk, const std::vector<FileChange>& changes,
                 const std::function<void(const Disk&)>& check);

}  // namespace varo::test
