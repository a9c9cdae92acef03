#include "hostile/shared_pictures.h"

#include "support/test_library.h"

#include <QtEndian>

#include <sqlite3.h>
#include <tuple>
#include <vector>

namespace varo::test {

namespace {

using namespace Qt::StringLiterals;

// As SQLite lays out pages and cells; both numbers of a picture take three bytes in either size.
constexpr qsizetype kPage = 4096;
constexpr qsizetype kLeastLocal = (kPage - 12) * 32 / 255 - 23;
constexpr qsizetype kOverflow = kPage - 4;
constexpr qsizetype kSmall = 20'000;
constexpr qsizetype kLarge = kSmall + 236 * kOverflow;
constexpr int kFormulas = 100;

QByteArray threeBytes(qsizetype number) {
    QByteArray bytes;
    for (const int shift : {14, 7, 0}) {
        bytes += static_cast<char>((shift > 0 ? 0x80 : 0) | (number >> shift & 0x7f));
    }
    return bytes;
}

qsizetype numberAt(const QByteArray& bytes, qsizetype& at) {
    qsizetype number = 0;
    quint8 byte = 0x80;
    while ((byte & 0x80) != 0) {
        byte = static_cast<quint8>(bytes[at++]);
        number = number << 7 | (byte & 0x7f);
    }
    return number;
}

/// A row of a table that goes on in other pages.
struct Cell {
    qsizetype at;
    qsizetype payload;  ///< bytes
    qsizetype next;     ///< where the number of the next page is
};

std::vector<Cell> longCells(const QByteArray& bytes) {
    std::vector<Cell> cells;
    for (qsizetype page = kPage; page < bytes.size(); page += kPage) {
        const char* const header = bytes.constData() + page;
        if (*header != 13) {
            continue;
        }
        for (int cell = 0; cell < qFromBigEndian<quint16>(header + 3); ++cell) {
            Cell found{page + qFromBigEndian<quint16>(header + 8 + 2 * cell), 0, 0};
            qsizetype at = found.at;
            found.payload = numberAt(bytes, at);
            numberAt(bytes, at);  // of the row
            const qsizetype local = kLeastLocal + (found.payload - kLeastLocal) % kOverflow;
            found.next = at + (local > kPage - 35 ? kLeastLocal : local);
            if (found.payload > kSmall) {
                cells.push_back(found);
            }
        }
    }
    return cells;
}

}  // namespace

qint64 sharePictures(const QString& path) {
    QByteArray statements;
    for (const auto& [first, last, size] :
         {std::tuple{10, 10, kLarge}, {11, 9 + kFormulas, kSmall}}) {
        statements +=
            u"With Recursive N (I) As (Select %1 Union All Select I + 1 From N "
            "Where I < %2) Insert Into Formula (Name, PicType, PID, OrderID, Pic) "
            "Select 'n', 2, 1, I, Cast('BM' || zeroblob(%3) As Blob) From N;"_s.arg(first)
                .arg(last)
                .arg(size - 2)
                .toUtf8();
    }
    sqlite3* database = nullptr;
    sqlite3_open(path.toUtf8().constData(), &database);
    sqlite3_exec(database, statements.constData(), nullptr, nullptr, nullptr);
    sqlite3_close(database);
    QByteArray bytes = fileContent(path);
    const std::vector<Cell> cells = longCells(bytes);
    QByteArray shared;
    for (const Cell& cell : cells) {
        if (cell.payload > kLarge) {
            shared = bytes.mid(cell.next, 4);
        }
    }
    for (const Cell& cell : cells) {
        if (cell.payload < kLarge) {
            const qsizetype type = bytes.indexOf(threeBytes(2 * kSmall + 12), cell.at);
            bytes.replace(type, 3, threeBytes(2 * kLarge + 12));
            bytes.replace(cell.at, 3, threeBytes(cell.payload - kSmall + kLarge));
            bytes.replace(cell.next, 4, shared);
        }
    }
    QFile file(path);
    if (cells.size() != kFormulas || !file.open(QIODevice::WriteOnly) ||
        file.write(bytes) != bytes.size()) {
        throw data::Error(u"the pictures were not shared"_s);
    }
    return qint64{kFormulas} * kLarge;
}

}  // namespace varo::test
