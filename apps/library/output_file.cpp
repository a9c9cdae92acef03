#include "library/output_file.h"

#include "library/text_error.h"
#include "platform/data/connection.h"
#include "platform/data/error.h"
#include "platform/data/side_file_heads.h"
#include "platform/data/side_files.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

namespace varo {

namespace {

struct SideFile {
    const char* suffix;
    bool (*begins)(QByteArrayView head);
};

constexpr std::array kSideFiles = {
    SideFile{data::kJournalSuffix, data::beginsJournal},
    SideFile{data::kLogSuffix, data::beginsLog},
    SideFile{data::kLogIndexSuffix, data::beginsLogIndex},
};

bool isThere(const QFileInfo& file) {
    return file.exists() || file.isSymLink();
}

bool isLibrary(const QString& path) {
    try {
        data::Connection connection;
        connection.open(path, data::Access::Read);
        return std::ranges::all_of(std::array{"Tree", "Formula", "RecentVar"}, [&](auto table) {
            return connection.structure(QLatin1StringView(table)).has_value();
        });
    } catch (const data::Error&) {
        return false;
    }
}

bool beginsAs(const QString& path, const SideFile& kind) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && kind.begins(file.read(data::kSideFileHead));
}

/// `hasLibrary`: there is a file at `path` that the side files can belong to.
void requireOwnSideFiles(const QString& path, bool hasLibrary, bool force) {
    for (const SideFile& kind : kSideFiles) {
        const QFileInfo file(path + QLatin1StringView(kind.suffix));
        if (!isThere(file)) {
            continue;
        }
        if (!file.isFile() || file.isSymLink()) {
            throw TextError(file.filePath(),
                            QStringLiteral("this is no regular file and is not removed"));
        }
        if (!force && !(hasLibrary && beginsAs(file.filePath(), kind))) {
            throw TextError(file.filePath(),
                            QStringLiteral("this does not belong to a library \"%1\" and would be "
                                           "removed")
                                .arg(path));
        }
    }
}

}  // namespace

void requireReplaceable(const QString& path, bool force) {
    const QFileInfo file(path);
    if (file.exists() && !file.isFile()) {
        throw TextError(path, file.isDir()
                                  ? QStringLiteral("the library would replace a folder")
                                  : QStringLiteral("this is no regular file and is not replaced"));
    }
    const bool isEmpty = file.isFile() && file.size() == 0;
    // Opening a database recovers it, so what lies beside it is looked at first.
    requireOwnSideFiles(file.absoluteFilePath(), file.isFile() && !isEmpty, force);
    if (isThere(file) && !isEmpty && !force && !isLibrary(path)) {
        throw TextError(path, QStringLiteral("this is no library; \"--force\" replaces it"));
    }
}

void removeForeignSideFiles(const QString& path) {
    bool areOwn = true;
    try {
        data::requireSideFilesOf(path, data::databaseHeader(path));
    } catch (const data::Error&) {
        areOwn = false;
    }
    for (const SideFile& kind : kSideFiles) {
        const QString file = path + QLatin1StringView(kind.suffix);
        if (!areOwn || !beginsAs(file, kind)) {
            QFile::remove(file);
        }
    }
}

void requireFree(const QString& path) {
    if (isThere(QFileInfo(path))) {
        throw TextError(path, QStringLiteral("there is a file already"));
    }
    requireOwnSideFiles(path, false, false);
}

}  // namespace varo
