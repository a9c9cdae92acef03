#include "platform/data/temporary_files.h"

#include <QByteArray>

#include <cstddef>
#include <new>

namespace varo::data {

namespace {

// What a statement sorts has values of several tables, and some of them in many rows.
constexpr qint64 kBytesAtLeast = 64 << 20;
constexpr qint64 kTimesFile = 8;

constexpr int kBounded = SQLITE_OPEN_TEMP_DB | SQLITE_OPEN_TRANSIENT_DB | SQLITE_OPEN_TEMP_JOURNAL;

/// The methods of a temporary file, in the memory of that file behind its usual content.
struct BoundedMethods {
    sqlite3_io_methods methods;
    const sqlite3_io_methods* usual;
    const qint64* most;
};

constexpr int placeOfMethods(const sqlite3_vfs& usual) {
    constexpr int kUnit = alignof(std::max_align_t);
    return (usual.szOsFile + kUnit - 1) / kUnit * kUnit;
}

int writeBounded(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    const auto& bounded = *reinterpret_cast<const BoundedMethods*>(file->pMethods);
    return offset + count > *bounded.most ? kTemporaryFileFull
                                          : bounded.usual->xWrite(file, bytes, count, offset);
}

}  // namespace

/// Passes everything on, and looks at the files that are opened.
struct TemporaryFileLayer::Layer : sqlite3_vfs {
    explicit Layer(sqlite3_vfs* below) : sqlite3_vfs(*below), usual(below) {
        iVersion = 1;  // of a layer that tells the time in days
        szOsFile = placeOfMethods(*usual) + static_cast<int>(sizeof(BoundedMethods));
        zName = name.constData();
        xOpen = openFile;
        xDelete = [](auto* layer, auto* path, int syncsFolder) {
            return of(layer).usual->xDelete(of(layer).usual, path, syncsFolder);
        };
        xAccess = [](auto* layer, auto* path, int flags, int* result) {
            return of(layer).usual->xAccess(of(layer).usual, path, flags, result);
        };
        xFullPathname = [](auto* layer, auto* path, int size, char* full) {
            return of(layer).usual->xFullPathname(of(layer).usual, path, size, full);
        };
        xRandomness = [](auto* layer, int size, char* bytes) {
            return of(layer).usual->xRandomness(of(layer).usual, size, bytes);
        };
        xSleep = [](auto* layer, int time) {
            return of(layer).usual->xSleep(of(layer).usual, time);
        };
        xCurrentTime = [](auto* layer, double* days) {
            return of(layer).usual->xCurrentTime(of(layer).usual, days);
        };
        xDlOpen = nullptr;  // extensions are not loaded
        xGetLastError = [](auto* layer, int size, char* text) {
            return of(layer).usual->xGetLastError(of(layer).usual, size, text);
        };
    }

    static Layer& of(sqlite3_vfs* layer) { return *static_cast<Layer*>(layer); }

    static int openFile(sqlite3_vfs* layer, const char* path, sqlite3_file* file, int flags,
                        int* given) {
        Layer& self = of(layer);
        const int result = self.usual->xOpen(self.usual, path, file, flags, given);
        if (result == SQLITE_OK && (flags & kBounded) != 0) {
            void* place = reinterpret_cast<char*>(file) + placeOfMethods(*self.usual);
            auto* bounded = new (place) BoundedMethods{*file->pMethods, file->pMethods, &self.most};
            bounded->methods.xWrite = writeBounded;
            file->pMethods = &bounded->methods;
        }
        return result;
    }

    sqlite3_vfs* usual;
    QByteArray name = "bounded-" + QByteArray::number(reinterpret_cast<quintptr>(this), 16);
    qint64 most = kBytesAtLeast;
};

TemporaryFileLayer::TemporaryFileLayer()
    : layer_(std::make_unique<Layer>(sqlite3_vfs_find(nullptr))) {}
TemporaryFileLayer::~TemporaryFileLayer() = default;

int TemporaryFileLayer::open(const char* path, sqlite3** database, int flags) const {
    // Only for this connection, which keeps it.
    int result = sqlite3_vfs_register(layer_.get(), 0);
    if (result == SQLITE_OK) {
        result = sqlite3_open_v2(path, database, flags, layer_->zName);
        sqlite3_vfs_unregister(layer_.get());
    }
    return result;
}

void TemporaryFileLayer::bound(sqlite3* database, qint64 fileSize) {
    sqlite3_vfs* layer = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_VFS_POINTER, &layer);
    if (layer != nullptr && layer->xOpen == Layer::openFile) {
        Layer::of(layer).most = kBytesAtLeast + kTimesFile * fileSize;
    }
}

}  // namespace varo::data
