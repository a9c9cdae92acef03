#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace varo::data {

/// The first `length` bytes of the file at `path`, fewer when the file is shorter. Changes nothing:
/// no journal is looked at. Throws Error when the file cannot be read.
///
/// Reads through SQLite's file layer: closing any other handle of a file would take from this
/// process the locks that SQLite holds on it.
QByteArray fileStart(const QString& path, int length);

/// The same from `offset` on, which is at least 0.
QByteArray fileBytes(const QString& path, qint64 offset, int length);

/// Hands all bytes of the file at `path` to `take`, piece by piece; the rest as above. What `take`
/// throws ends it.
void readBytes(const QString& path, const std::function<void(const QByteArray&)>& take);

}  // namespace varo::data
