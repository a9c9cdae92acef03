#pragma once

#include "platform/data/access/page_file.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>
#include <stdexcept>

namespace varo::access {

/// A file of pages of which each has its own number in its bytes, and whose map of free pages
/// marks none of the file and all behind it.
class PageTestFile {
  public:
    explicit PageTestFile(int pageCount) {
        constexpr int kPageSize = 4096;
        constexpr int kMapLength = 69;
        QByteArray bytes;
        for (int number = 0; number < pageCount; ++number) {
            bytes.append(kPageSize, static_cast<char>(number));
        }
        char* page = bytes.data() + kPageSize;
        std::fill_n(page, kPageSize, '\0');
        page[0] = 1;
        page[1] = 1;
        // Two rows: the map of free pages, and one for a table.
        const int rows[] = {kPageSize - kMapLength, kPageSize - 2 * kMapLength};
        qToLittleEndian<quint16>(2, page + 12);
        for (int row = 0; row < 2; ++row) {
            qToLittleEndian<quint16>(static_cast<quint16>(rows[row]), page + 14 + row * 2);
        }
        for (int number = pageCount; number < (kMapLength - 5) * 8; ++number) {
            char& byte = page[rows[0] + 5 + number / 8];
            byte = static_cast<char>(byte | 1 << number % 8);
        }
        write(path(), bytes);
    }

    QString path() const { return folder.filePath(QStringLiteral("file.mdb")); }

    std::unique_ptr<PageFile> open(data::Access access = data::Access::Write) const {
        Header header{};
        header.version = Version::Jet4;
        return std::make_unique<PageFile>(path(), header, access);
    }

    QByteArray content() const { return content(path()); }
    static QByteArray content(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            throw std::runtime_error("a file cannot be written");
        }
    }

    QTemporaryDir folder;
};

/// The Error that `work` throws, "" when it throws none.
template <class Work>
QString refusal(Work work) {
    try {
        work();
    } catch (const data::Error& error) {
        return error.description();
    }
    return {};
}

}  // namespace varo::access
