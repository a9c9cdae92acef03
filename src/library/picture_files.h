#pragma once

#include <QString>

namespace varo {

/// The path with `extension` (".bmp") at its end, appended unless it is there in any letter case.
QString withExtension(const QString& path, const QString& extension);

/// Whether both paths lead to one file that is there.
bool isSameFile(const QString& one, const QString& other);

/// A copy of a file beside the place that it is meant for. It takes that place when all else has
/// gone well, and goes away otherwise.
class PictureCopy {
  public:
    /// The copy will replace `target`.
    explicit PictureCopy(const QString& target);
    ~PictureCopy();
    PictureCopy(const PictureCopy&) = delete;
    PictureCopy& operator=(const PictureCopy&) = delete;

    /// Where the copy lies, and where it will.
    QString path() const { return path_; }
    QString target() const { return target_; }

    /// Makes the copy. Returns false when the file cannot be read, is larger than any picture that
    /// a library takes, or its copy cannot be written.
    bool take(const QString& file);

    /// Puts the copy in the place of the target, in one step: the target is the old file or the
    /// new one. Returns false, with the target as it was, when that fails.
    bool replaceTarget();

  private:
    QString target_;
    QString path_;
};

/// A file out of the way of another one that may take its place. It comes back unless the other one
/// is to stay.
class FileAside {
  public:
    /// Moves the file at `path`, if there is one, aside.
    explicit FileAside(const QString& path);
    ~FileAside();
    FileAside(const FileAside&) = delete;
    FileAside& operator=(const FileAside&) = delete;

    /// Whether another file can take its place; false leaves everything as it is.
    bool isClear() const { return clear_; }

    /// The file at the old path stays; the one moved aside goes away.
    void discard() { discarded_ = true; }

  private:
    QString path_;
    QString aside_;
    bool clear_ = true;
    bool discarded_ = false;
};

}  // namespace varo
