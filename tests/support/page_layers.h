#pragma once

#include "platform/data/access/file_layer.h"
#include "platform/data/error.h"
#include "support/file_recorder.h"

#include <QFileInfo>
#include <QSet>

#include <sys/stat.h>
#include <vector>

namespace varo::test {

/// While it lives, Access files are written through it. Nothing is waited for: neither for locks,
/// which are asked for as often as ever, nor until changes are on the disk.
class PageLayer : public access::FileLayer {
  public:
    PageLayer() { setCurrent(this); }
    ~PageLayer() override { setCurrent(&before_); }
    Q_DISABLE_COPY_MOVE(PageLayer)

    void sync(int) override {}
    void syncFolderOf(const QString&) override {}
    void sleep(int) override { ++sleeps; }

    int sleeps = 0;

  private:
    FileLayer& before_ = current();
};

/// Records the changes, those of pages in pieces that can be lost alone. A new file, or a removal,
/// is on the disk when its folder has been synchronized.
class PageRecorder final : public PageLayer {
  public:
    std::vector<FileChange> changes;

    int create(const QString& path, unsigned permissions) override {
        newFiles_.insert(path);
        return FileLayer::create(path, permissions);
    }
    void write(int descriptor, const QByteArray& bytes, qint64 offset) override {
        constexpr qsizetype kPiece = 2048;
        for (qsizetype at = 0; at < bytes.size(); at += kPiece) {
            changes.push_back(
                {FileChange::Kind::Write, pathOf(descriptor), offset + at, bytes.mid(at, kPiece)});
        }
        FileLayer::write(descriptor, bytes, offset);
    }
    void resize(int descriptor, qint64 size) override {
        changes.push_back({FileChange::Kind::Truncate, pathOf(descriptor), size});
        FileLayer::resize(descriptor, size);
    }
    void sync(int descriptor) override {
        const QString path = pathOf(descriptor);
        if (newFiles_.contains(path)) {
            synced_.insert(path);
        } else {
            changes.push_back({FileChange::Kind::Sync, path});
        }
    }
    void remove(const QString& path) override {
        newFiles_.remove(path);
        changes.push_back({FileChange::Kind::Delete, path});
        FileLayer::remove(path);
    }
    void syncFolderOf(const QString& path) override {
        if (!QFileInfo::exists(path)) {
            changes.push_back({FileChange::Kind::Delete, path, 0, {}, true});
        } else if (synced_.remove(path)) {
            newFiles_.remove(path);
            changes.push_back({FileChange::Kind::Sync, path});
        }
    }

  private:
    static QString pathOf(int descriptor) {
        return QFileInfo(QStringLiteral("/proc/self/fd/%1").arg(descriptor)).symLinkTarget();
    }

    QSet<QString> newFiles_;  ///< whose folder has not been synchronized since
    QSet<QString> synced_;    ///< those of them that have been themselves
};

/// Lets the change with this number, from 1, fail, and all after it if it `staysFull`.
class FailingLayer final : public PageLayer {
  public:
    FailingLayer(int failing, bool staysFull) : left_(failing), staysFull_(staysFull) {}

    bool hasFailed() const { return left_ <= 0; }

    int create(const QString& path, unsigned permissions) override {
        count();
        return FileLayer::create(path, permissions);
    }
    void write(int descriptor, const QByteArray& bytes, qint64 offset) override {
        constexpr qsizetype kSector = 512;
        const bool fails = --left_ == 0 || (left_ < 0 && staysFull_);
        struct stat file {};
        ::fstat(descriptor, &file);
        // A file that grows may end anywhere; what is overwritten is so by sectors.
        const qsizetype third = bytes.size() / 3;
        const qsizetype part = offset >= file.st_size ? third : third / kSector * kSector;
        FileLayer::write(descriptor, fails ? bytes.first(part) : bytes, offset);
        if (fails) {
            throw data::Error(QStringLiteral("the disk is full"));
        }
    }
    void resize(int descriptor, qint64 size) override {
        count();
        FileLayer::resize(descriptor, size);
    }
    void sync(int) override { count(); }
    void remove(const QString& path) override {
        count();
        FileLayer::remove(path);
    }
    void syncFolderOf(const QString&) override { count(); }

  private:
    void count() {
        --left_;
        if (left_ == 0 || (left_ < 0 && staysFull_)) {
            throw data::Error(QStringLiteral("the disk is full"));
        }
    }

    int left_;
    bool staysFull_;
};

}  // namespace varo::test
