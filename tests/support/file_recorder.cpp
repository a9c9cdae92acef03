#include "support/file_recorder.h"

#include <QCryptographicHash>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <random>
#include <set>
#include <sqlite3.h>

namespace varo::test {

namespace {

/// A file of the layer: SQLite's part, then the file of the layer below.
struct RecordedFile {
    sqlite3_file base;
    struct Recording* recording;
    QString* path;
    sqlite3_file* below() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

struct Recording {
    sqlite3_vfs* below = nullptr;
    std::vector<FileChange> changes;
};

RecordedFile& of(sqlite3_file* file) {
    return *reinterpret_cast<RecordedFile*>(file);
}

int closeFile(sqlite3_file* file) {
    sqlite3_file* below = of(file).below();
    delete of(file).path;
    return below->pMethods != nullptr ? below->pMethods->xClose(below) : SQLITE_OK;
}

int readFile(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xRead(below, bytes, count, offset);
}

int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    of(file).recording->changes.push_back({FileChange::Kind::Write, *of(file).path, offset,
                                           QByteArray(static_cast<const char*>(bytes), count)});
    sqlite3_file* below = of(file).below();
    return below->pMethods->xWrite(below, bytes, count, offset);
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    of(file).recording->changes.push_back({FileChange::Kind::Truncate, *of(file).path, size});
    sqlite3_file* below = of(file).below();
    return below->pMethods->xTruncate(below, size);
}

int syncFile(sqlite3_file* file, int flags) {
    of(file).recording->changes.push_back({FileChange::Kind::Sync, *of(file).path});
    sqlite3_file* below = of(file).below();
    return below->pMethods->xSync(below, flags);
}

int fileSize(sqlite3_file* file, sqlite3_int64* size) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xFileSize(below, size);
}

int lockFile(sqlite3_file* file, int lock) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xLock(below, lock);
}

int unlockFile(sqlite3_file* file, int lock) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xUnlock(below, lock);
}

int checkReservedLock(sqlite3_file* file, int* result) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xCheckReservedLock(below, result);
}

int fileControl(sqlite3_file* file, int operation, void* argument) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xFileControl(below, operation, argument);
}

int sectorSize(sqlite3_file* file) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xSectorSize(below);
}

int deviceCharacteristics(sqlite3_file* file) {
    sqlite3_file* below = of(file).below();
    return below->pMethods->xDeviceCharacteristics(below);
}

// A layer of version 1 neither shares memory nor maps files.
const sqlite3_io_methods kMethods = {1,
                                     closeFile,
                                     readFile,
                                     writeFile,
                                     truncateFile,
                                     syncFile,
                                     fileSize,
                                     lockFile,
                                     unlockFile,
                                     checkReservedLock,
                                     fileControl,
                                     sectorSize,
                                     deviceCharacteristics,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr};

Recording& of(sqlite3_vfs* layer) {
    return *static_cast<Recording*>(layer->pAppData);
}

int openFile(sqlite3_vfs* layer, const char* name, sqlite3_file* file, int flags, int* given) {
    RecordedFile& opened = of(file);
    sqlite3_vfs* below = of(layer).below;
    opened.base.pMethods = nullptr;
    const int result = below->xOpen(below, name, opened.below(), flags, given);
    if (result == SQLITE_OK) {
        opened.recording = &of(layer);
        opened.path = new QString(QString::fromUtf8(name));
        opened.base.pMethods = &kMethods;
    }
    return result;
}

int deleteFile(sqlite3_vfs* layer, const char* name, int syncsFolder) {
    const int result = of(layer).below->xDelete(of(layer).below, name, syncsFolder);
    if (result == SQLITE_OK) {
        of(layer).changes.push_back(
            {FileChange::Kind::Delete, QString::fromUtf8(name), 0, {}, syncsFolder != 0});
    }
    return result;
}

void apply(const FileChange& change, Disk& disk) {
    switch (change.kind) {
        case FileChange::Kind::Write: {
            QByteArray& content = disk[change.path];
            const qsizetype end = change.offset + change.bytes.size();
            if (content.size() < end) {
                content.append(end - content.size(), '\0');
            }
            content.replace(change.offset, change.bytes.size(), change.bytes);
            break;
        }
        case FileChange::Kind::Truncate:
            disk[change.path].resize(change.offset);
            break;
        case FileChange::Kind::Sync:
            break;
        case FileChange::Kind::Delete:
            disk.remove(change.path);
            break;
    }
}

QByteArray digest(const Disk& disk) {
    QStringList paths = disk.keys();
    paths.sort();
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QString& path : paths) {
        hash.addData(path.toUtf8());
        hash.addData(QByteArray::number(disk[path].size()) + '\n');
        hash.addData(disk[path]);
    }
    return hash.result();
}

/// Those of the first `count` changes that nothing has brought onto the disk for certain.
std::vector<std::size_t> unsynced(const std::vector<FileChange>& changes, std::size_t count) {
    std::vector<std::size_t> found;
    QSet<QString> synced;
    for (std::size_t i = count; i-- > 0;) {
        const FileChange& change = changes[i];
        if (change.kind == FileChange::Kind::Sync) {
            synced.insert(change.path);
        } else if (change.kind == FileChange::Kind::Delete ? !change.isDurable
                                                           : !synced.contains(change.path)) {
            found.push_back(i);
        }
    }
    return found;
}

}  // namespace

struct FileRecorder::Layer {
    Recording recording;
    sqlite3_vfs vfs;
};

FileRecorder::FileRecorder() : layer_(std::make_unique<Layer>()) {
    layer_->recording.below = sqlite3_vfs_find(nullptr);
    layer_->vfs = *layer_->recording.below;
    layer_->vfs.zName = "recorder";
    layer_->vfs.pNext = nullptr;
    layer_->vfs.pAppData = &layer_->recording;
    layer_->vfs.szOsFile += static_cast<int>(sizeof(RecordedFile));
    layer_->vfs.xOpen = openFile;
    layer_->vfs.xDelete = deleteFile;
    sqlite3_vfs_register(&layer_->vfs, 1);
}

FileRecorder::~FileRecorder() {
    sqlite3_vfs_unregister(&layer_->vfs);
    sqlite3_vfs_register(layer_->recording.below, 1);
}

const std::vector<FileChange>& FileRecorder::changes() const {
    return layer_->recording.changes;
}

int forEachCrash(const Disk& disk, const std::vector<FileChange>& changes,
                 const std::function<void(const Disk&)>& check, int subsets) {
    std::minstd_rand random;
    QSet<QByteArray> seen;
    const auto visit = [&](const Disk& state) {
        const QByteArray key = digest(state);
        if (!seen.contains(key)) {
            seen.insert(key);
            check(state);
        }
    };
    Disk whole = disk;
    visit(whole);
    for (std::size_t count = 1; count <= changes.size(); ++count) {
        FileChange half = changes[count - 1];
        half.bytes.truncate(half.bytes.size() / 2);
        Disk torn = whole;
        apply(half, torn);
        visit(torn);
        apply(changes[count - 1], whole);
        visit(whole);
        const std::vector<std::size_t> lost = unsynced(changes, count);
        const auto without = [&](auto isLost) {
            Disk state = disk;
            for (std::size_t i = 0; i < count; ++i) {
                if (!isLost(i)) {
                    apply(changes[i], state);
                }
            }
            visit(state);
        };
        without([&](std::size_t i) { return std::ranges::find(lost, i) != lost.end(); });
        for (const std::size_t each : lost) {
            without([&](std::size_t i) { return i == each; });
        }
        for (int i = 0; i < subsets; ++i) {
            std::set<std::size_t> chosen;
            std::ranges::copy_if(lost, std::inserter(chosen, chosen.end()),
                                 [&](std::size_t) { return random() % 2 == 0; });
            without([&](std::size_t each) { return chosen.contains(each); });
        }
    }
    return static_cast<int>(seen.size());
}

}  // namespace varo::test
