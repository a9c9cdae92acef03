#include "platform/data/file_start.h"

#include "platform/data/error.h"

#include <QFileInfo>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <sqlite3.h>
#include <vector>

namespace varo::data {

namespace {

struct NameDeleter {
    void operator()(sqlite3_filename name) const noexcept { sqlite3_free_filename(name); }
};
using Name = std::unique_ptr<const char, NameDeleter>;

/// The absolute path with links resolved, which the file layer does not follow.
QString finalPath(const QString& path) {
    const QFileInfo file(path);
    return file.exists() ? file.canonicalFilePath() : file.absoluteFilePath();
}

/// An open file of SQLite's file layer.
class LayerFile {
  public:
    explicit LayerFile(const QString& path)
        : path_(path),
          name_(sqlite3_create_filename(finalPath(path).toUtf8().constData(), "", "", 0, nullptr)) {
        sqlite3_vfs* layer = sqlite3_vfs_find(nullptr);
        bytes_.resize(static_cast<std::size_t>(layer->szOsFile) / sizeof(std::max_align_t) + 1);
        const int result = layer->xOpen(layer, name_.get(), file(),
                                        SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, nullptr);
        if (result != SQLITE_OK) {
            close();
            fail(result);
        }
    }
    LayerFile(const LayerFile&) = delete;
    LayerFile& operator=(const LayerFile&) = delete;
    ~LayerFile() { close(); }

    /// The bytes from `offset` on, `length` of them or as many as there are.
    QByteArray read(qint64 offset, int length) {
        if (offset < 0) {
            fail(SQLITE_MISUSE);
        }
        qint64 size = 0;
        check(file()->pMethods->xFileSize(file(), &size));
        const qint64 left = std::max<qint64>(size - offset, 0);
        QByteArray bytes(static_cast<qsizetype>(std::min<qint64>(left, length)), '\0');
        if (!bytes.isEmpty()) {
            check(file()->pMethods->xRead(file(), bytes.data(), static_cast<int>(bytes.size()),
                                          offset));
        }
        return bytes;
    }

  private:
    sqlite3_file* file() { return reinterpret_cast<sqlite3_file*>(bytes_.data()); }

    void close() {
        if (file()->pMethods != nullptr) {
            file()->pMethods->xClose(file());
        }
    }

    void check(int result) const {
        if (result != SQLITE_OK) {
            fail(result);
        }
    }

    [[noreturn]] void fail(int result) const {
        throw Error(QStringLiteral("%1: %2").arg(path_, QString::fromUtf8(sqlite3_errstr(result))));
    }

    QString path_;
    Name name_;
    std::vector<std::max_align_t> bytes_;
};

}  // namespace

QByteArray fileStart(const QString& path, int length) {
    return fileBytes(path, 0, length);
}

QByteArray fileBytes(const QString& path, qint64 offset, int length) {
    return LayerFile(path).read(offset, length);
}

struct FileReader::File : LayerFile {
    using LayerFile::LayerFile;
};

FileReader::FileReader(const QString& path) : file_(std::make_unique<File>(path)) {}
FileReader::~FileReader() = default;

QByteArray FileReader::read(qint64 offset, int length) {
    return file_->read(offset, length);
}

void readBytes(const QString& path, const std::function<void(const QByteArray&)>& take) {
    constexpr int kPiece = 1 << 20;
    LayerFile file(path);
    qint64 offset = 0;
    for (QByteArray piece = file.read(0, kPiece); !piece.isEmpty();
         piece = file.read(offset, kPiece)) {
        take(piece);
        offset += piece.size();
    }
}

}  // namespace varo::data
