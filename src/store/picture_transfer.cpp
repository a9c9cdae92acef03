#include "store/picture_transfer.h"

#include <QFile>

#include <array>
#include <span>

namespace varo {

namespace {

using Chunk = std::array<char, kPictureChunk>;

/// A failure of the file, not of the database.
class FileError : public data::Error {
  public:
    FileError(const QFile& file, const QString& what)
        : data::Error(QStringLiteral("%1: %2").arg(file.fileName(), what)) {}
};

[[noreturn]] void throwFailure(const QFile& file) {
    throw FileError(file, file.errorString());
}

void openFile(QFile& file, QIODevice::OpenMode mode) {
    if (!file.open(mode | QIODevice::Unbuffered)) {
        throwFailure(file);
    }
}

void requirePictureSize(qint64 total, const QFile& file) {
    if (total / kPictureChunk > kPictureChunkLimit) {
        throw FileError(file, QStringLiteral("%1 bytes are too many for a picture").arg(total));
    }
}

/// Calls `move` with a buffer for the bytes that fill no chunk, if any, and then for each full
/// chunk.
template <class Move>
void moveInChunks(qint64 total, Move move) {
    Chunk buffer;
    if (const qint64 rest = total % kPictureChunk; rest > 0) {
        move(std::span(buffer).first(static_cast<std::size_t>(rest)));
    }
    for (qint64 left = total / kPictureChunk; left > 0; --left) {
        move(std::span(buffer));
    }
}

void copyToFile(data::BlobField& field, QFile& file) {
    const qint64 total = field.size();
    requirePictureSize(total, file);
    moveInChunks(total, [&](std::span<char> chunk) {
        field.getChunk(chunk);
        const auto length = static_cast<qint64>(chunk.size());
        if (file.write(chunk.data(), length) != length) {
            throwFailure(file);
        }
    });
}

void writeFile(data::BlobField& field, const QString& fileName) {
    QFile file(fileName);
    openFile(file, QIODevice::WriteOnly | QIODevice::Truncate);
    try {
        copyToFile(field, file);
    } catch (const data::Error&) {
        file.remove();
        throw;
    }
}

void copyToField(data::BlobField& field, QFile& file) {
    const qint64 total = file.size();
    requirePictureSize(total, file);
    if (total == 0) {
        return;
    }
    field.replace(total);
    moveInChunks(total, [&](std::span<char> chunk) {
        const auto length = static_cast<qint64>(chunk.size());
        const qint64 count = file.read(chunk.data(), length);
        if (count < 0) {
            throwFailure(file);
        }
        if (count < length) {
            throw FileError(file, QStringLiteral("the file ended early"));
        }
        field.appendChunk(chunk);
    });
}

}  // namespace

bool ReadFileToField(data::BlobField& field, const QString& fileName, QString& failure) {
    try {
        QFile file(fileName);
        openFile(file, QIODevice::ReadOnly);
        copyToField(field, file);
    } catch (const FileError& error) {
        failure = error.description();
        return false;
    }
    return true;
}

bool WriteFieldToFile(data::BlobField& field, const QString& fileName, QString& failure) {
    try {
        writeFile(field, fileName);
    } catch (const data::Error& error) {
        failure = error.description();
        return false;
    }
    return true;
}

}  // namespace varo
