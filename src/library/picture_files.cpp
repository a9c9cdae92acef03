#include "library/picture_files.h"

#include "store/picture_transfer.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

namespace varo {

QString withExtension(const QString& path, const QString& extension) {
    return path.endsWith(extension, Qt::CaseInsensitive) ? path : path + extension;
}

bool isSameFile(const QString& one, const QString& other) {
    const QString path = QFileInfo(one).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(other).canonicalFilePath();
}

PictureCopy::PictureCopy(const QString& target)
    : target_(target), path_(target + QStringLiteral(".new")) {
    QFile::remove(path_);
}

PictureCopy::~PictureCopy() {
    QFile::remove(path_);
}

bool PictureCopy::take(const QString& file) {
    const QFileInfo original(file);
    // The original may be one that nobody may write to.
    return original.isFile() && original.size() / kPictureChunk <= kPictureChunkLimit &&
           QFile::copy(file, path_) &&
           QFile::setPermissions(path_, QFile::ReadOwner | QFile::WriteOwner);
}

bool PictureCopy::replaceTarget() {
    std::error_code error;
    std::filesystem::rename(QFileInfo(path_).filesystemFilePath(),
                            QFileInfo(target_).filesystemFilePath(), error);
    return !error;
}

FileAside::FileAside(const QString& path) : path_(path), aside_(path + QStringLiteral(".old")) {
    QFile::remove(aside_);
    clear_ = !QFileInfo::exists(path) || (QFileInfo(path).isFile() && QFile::rename(path, aside_));
}

FileAside::~FileAside() {
    if (!clear_) {
        return;
    }
    if (!discarded_) {
        QFile::remove(path_);
        QFile::rename(aside_, path_);
    }
    QFile::remove(aside_);
}

}  // namespace varo
