#pragma once

#include "platform/data/connection.h"
#include "platform/data/error.h"

#include <QString>

namespace varo {

/// Why a library does not open.
enum class OpenFailure {
    None,
    Missing,  ///< there is no such file
    NotPermitted,
    Locked,     ///< by another program or connection
    NoLibrary,  ///< in no format that is read, damaged, or cannot be read
    Structure,  ///< its tables do not keep what is stored in them (see library_structure.h)
};

struct OpenResult {
    OpenFailure failure = OpenFailure::None;
    data::Error::Cause cause = data::Error::Cause::Other;
    QString description;  ///< what the store says of the failure, in English; "" when nothing
};

/// The same as ConnectLibrary, with the reason.
OpenResult openLibrary(const QString& folder, const QString& fileName, data::Connection& connection,
                       data::Access access = data::Access::Write);

/// True when nothing is at `path`, false also when its folder may not be looked into.
bool isMissing(const QString& path);

/// Points `connection` at the library `fileName` in `folder` (with its trailing separator) and
/// opens it, closing what was open. Returns false, with the connection closed, on any failure and
/// for a file whose tables do not keep what is stored in them (see library_structure.h); a file
/// that lacks a table opens. Shows nothing.
bool ConnectLibrary(const QString& folder, const QString& fileName, data::Connection& connection,
                    const QString& password);

/// Closes the record set if it is open. Never fails.
void CloseRecordset(data::Recordset& recordSet) noexcept;

/// Splits a full path behind its last separator. The path must contain one.
void SplitFilePath(const QString& path, QString& folder, QString& fileName);

/// `path` with the platform's separators, from text in which `\` or `/` may separate.
QString normalisedPath(const QString& path);

/// The same for a folder, ending in exactly one separator; "" stays "".
QString normalisedFolder(const QString& folder);

}  // namespace varo
