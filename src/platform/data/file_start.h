#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

namespace varo::data {

/// The first `length` bytes of the file at `path`, fewer when the file is shorter. Changes nothing:
/// no journal is looked at. Throws Error when the file cannot be read.
///
/// Reads through SQLite's file layer: closing any other handle of a file would take from this
/// process the locks that SQLite holds on it.
QByteArray fileStart(const QString& path, int length);

/// The same from `offset` on, which is at least 0.
QByteArray fileBytes(const QString& path, qint64 offset, int length);

/// Reads any pieces of one file in the same way.
class FileReader {
  public:
    explicit FileReader(const QString& path);
    ~FileReader();
    Q_DISABLE_COPY_MOVE(FileReader)

    /// `length` bytes from `offset` on, which is at least 0; fewer at the end of the file.
    QByteArray read(qint64 offset, int length);

  private:
    struct File;
    std::unique_ptr<File> file_;
};

/// Hands all bytes of the file at `path` to `take`, piece by piece; the rest as above. What `take`
/// throws ends it.
void readBytes(const QString& path, const std::function<void(const QByteArray&)>& take);

}  // namespace varo::data
