#pragma once

#include <QByteArrayView>

namespace varo::data {

/// What a journal begins with while it is to be rolled back, and ends with when it names a file
/// with the journals of several databases.
inline constexpr QByteArrayView kJournalMagic("\xD9\xD5\x05\xF9\x20\xA1\x63\xD7", 8);

/// Bytes of the longest of the heads below.
inline constexpr int kSideFileHead = 8;

// Whether a file whose first bytes are `head` can be what SQLite leaves beside a database. An empty
// file always can.

/// A rollback journal. The first bytes are zero until its pages are safe on the disk, and again
/// after the commit; of a head that was being written the rest is missing or zero.
bool beginsJournal(QByteArrayView head);

/// A write-ahead log.
bool beginsLog(QByteArrayView head);

/// The index of a write-ahead log, written by a machine of any byte order.
bool beginsLogIndex(QByteArrayView head);

}  // namespace varo::data
