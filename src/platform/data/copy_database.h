#pragma once

#include "platform/data/connection.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace varo::data {

/// The SHA-256 of the file that is open on `connection`, as it is at one moment. Throws Error when
/// the file is locked or cannot be read; no transaction or snapshot of the connection may be open.
QByteArray databaseDigest(Connection& connection);

/// Copies that file, as it is at one moment, to `path`, replacing a file that is there. The copy
/// appears whole, after `beforeItAppears` has been called with its SHA-256, or not at all. Throws
/// Error as databaseDigest() does, or when the copy cannot be written.
void copyDatabase(Connection& connection, const QString& path,
                  const std::function<void(const QByteArray& digest)>& beforeItAppears);

/// Copies the database file `source` in the same way to `target`, where the copy takes the place of
/// what is there as replaceDatabase() says. Throws Error also when the source cannot be opened.
void copyDatabase(const QString& source, const QString& target);

/// Puts a copy of the closed file `copy`, which nobody else uses, in the place of the database at
/// `path`, whose permissions it gets, as replaceDatabase() does; `copy` stays. Where `path` is a
/// link, the file that it leads to is replaced. Throws Error, with the file at `path` as it was.
void restoreDatabase(const QString& copy, const QString& path);

}  // namespace varo::data
