#pragma once

#include <QFile>

namespace varo::data {

/// Whether what the write-ahead log `log`, which is open, holds shows that it can be applied to the
/// database at `path`, which has pages of the size that the log says and which nobody changes
/// meanwhile. That is so when nothing in it is to be applied; when the database has all of it
/// already, so that nothing is changed; and when the database has the latest first page of the log,
/// with its mark and its count of commits, and of the pages that no later commit wrote the latest
/// ones, too: then the log has been written into it as far as to that commit. (Pages that a later
/// commit wrote are not written into it before that one is.)
///
/// A database that none of the commits has reached may be an earlier copy, which has been put in
/// the place of the one that the log is of: that is false. Takes the time of reading the log, and a
/// page of the database for each in it. Throws Error when a file cannot be read.
bool isLogOf(const QString& path, QFile& log);

}  // namespace varo::data
