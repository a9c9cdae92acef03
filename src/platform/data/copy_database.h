#pragma once

#include "platform/data/connection.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace varo::data {

/// The SHA-256 of all in which the file that is open on `connection`, as it is at one moment,
/// differs from the closed file `base`: together with `base` it determines the file. It takes the
/// time of reading both files, however little differs. Throws Error when a file cannot be read or
/// the database is locked; no transaction or snapshot of the connection may be open.
QByteArray differenceDigest(Connection& connection, const QString& base);

/// That digest of two files with the same content.
QByteArray noDifference();

/// Copies the file that is open on `connection`, as it is at one moment, to `path`, replacing a
/// file that is there. The copy appears whole, after `beforeItAppears` has been called, or not at
/// all. Throws Error as differenceDigest() does, or when the copy cannot be written.
void copyDatabase(Connection& connection, const QString& path,
                  const std::function<void()>& beforeItAppears);

/// Makes a new database at `target`, a copy of the file `source` but for the mark of one of
/// SQLite's (see newMark()), which is its own. The copy appears in the same way and takes the place
/// of what is there as replaceDatabase() says. Throws Error also when the source cannot be opened.
void copyDatabase(const QString& source, const QString& target);

/// Gives the database at `path` the content of the closed file `copy`, which nobody else uses and
/// which stays; an Access file that has grown keeps its length. This is one transaction on the same
/// file: every program that has the file open sees the content, and a program that is killed
/// meanwhile leaves a journal by which the next one that opens the file takes it back. The file
/// must differ from `copy` as `difference`, a differenceDigest(), says.
///
/// Where there is no file, or one that is damaged beyond opening it, a copy takes its place, with
/// its permissions, as replaceDatabase() does. Where `path` is a link, it is about the file that it
/// leads to.
///
/// Throws Error, with the file at `path` as it was, when it is locked, write-protected, of another
/// format or not as `difference` says, or cannot be written.
void restoreDatabase(const QString& copy, const QString& path, const QByteArray& difference);

}  // namespace varo::data
