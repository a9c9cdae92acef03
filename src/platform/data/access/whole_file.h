#pragma once

#include "platform/data/access/page_file.h"

#include <functional>
#include <memory>
#include <optional>

namespace varo::access {

/// What the file at `path` says of itself; nothing when it is no Access file. Throws data::Error
/// when it cannot be read, or is of a version that is not known.
std::optional<Header> headerOf(const QString& path);

/// Whether PageFile::beginReading() would have to wait now. Throws data::Error as that does.
bool isReadingLocked(const QString& path, const Header& header);

/// Keeps other programs of ours from writing to the file while the result lives, after what a
/// program has left half-written has been taken back. Throws data::Error when the file is locked or
/// cannot be written.
std::unique_ptr<PageFile> lockedFile(const QString& path, const Header& header);

/// Gives the file the content of the closed file `copy` in one transaction, after
/// `requireUnchanged` has been called while nobody else can write. A file that is longer than the
/// copy stays so: the further pages become free. Throws data::Error, also what `requireUnchanged`
/// throws; the file is then as it was.
void overwriteFile(const QString& path, const Header& header, const QString& copy,
                   const std::function<void()>& requireUnchanged);

}  // namespace varo::access
