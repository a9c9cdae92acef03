#include "platform/data/side_file_heads.h"

#include <QtEndian>

#include <algorithm>

namespace varo::data {

namespace {

/// The first number of `head`, which has one.
quint32 firstNumber(QByteArrayView head) {
    return qFromBigEndian<quint32>(head.data());
}

}  // namespace

bool beginsJournal(QByteArrayView head) {
    head = head.first(std::min(head.size(), kJournalMagic.size()));
    while (head.endsWith('\0')) {
        head.chop(1);
    }
    return kJournalMagic.startsWith(head);
}

bool beginsLog(QByteArrayView head) {
    constexpr quint32 kMagic = 0x377f0682;  // the last bit is a byte order
    return head.isEmpty() ||
           (head.size() >= qsizetype{sizeof kMagic} && (firstNumber(head) & ~1U) == kMagic);
}

bool beginsLogIndex(QByteArrayView head) {
    constexpr quint32 kFormat = 3007000;
    return head.isEmpty() ||
           (head.size() >= qsizetype{sizeof kFormat} &&
            (firstNumber(head) == kFormat || qbswap(firstNumber(head)) == kFormat));
}

}  // namespace varo::data
