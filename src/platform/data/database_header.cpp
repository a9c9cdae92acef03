#include "platform/data/database_header.h"

#include "platform/data/file_start.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace varo::data {

namespace {

constexpr QByteArrayView kSignature("SQLite format 3\0", 16);

// Places of numbers in the header.
constexpr int kPageSize = 16;
constexpr int kWriteFormat = 18;
constexpr int kReadFormat = 19;
constexpr int kChanges = 24;
constexpr int kPages = 28;
constexpr int kSchemaVersion = 40;
constexpr int kEncoding = 56;
constexpr int kPagesValidFor = 92;

constexpr char kWithLog = 2;

}  // namespace

qint32 newMark() {
    return QRandomGenerator::global()->bounded(1, std::numeric_limits<qint32>::max());
}

std::optional<DatabaseHeader> headerIn(const QByteArray& bytes) {
    if (!bytes.startsWith(kSignature)) {
        return std::nullopt;
    }
    DatabaseHeader header;
    header.bytes = bytes.first(std::min<qsizetype>(bytes.size(), kDatabaseHead));
    if (header.bytes.size() < kDatabaseHead) {
        return header;
    }
    const auto number = [&](qsizetype place) {
        return qFromBigEndian<quint32>(header.bytes.constData() + place);
    };
    const qint64 size = qFromBigEndian<quint16>(bytes.constData() + kPageSize);
    header.pageSize = size == 1 ? 65536 : size;
    header.changes = number(kChanges);
    header.writesAhead = bytes[kWriteFormat] == kWithLog && bytes[kReadFormat] == kWithLog;
    header.schemaVersion = number(kSchemaVersion);
    header.encoding = number(kEncoding);
    header.mark = number(kMarkPlace);
    if (number(kPagesValidFor) == header.changes) {
        header.statedPages = number(kPages);
    }
    return header;
}

std::optional<DatabaseHeader> databaseHeader(const QString& path) {
    auto header = headerIn(fileStart(path, kDatabaseHead));
    if (header && header->pageSize > 0) {
        header->pageCount = (QFileInfo(path).size() + header->pageSize - 1) / header->pageSize;
    }
    return header;
}

}  // namespace varo::data
