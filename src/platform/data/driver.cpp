#include "platform/data/driver.h"

#include "platform/data/access/access_driver.h"
#include "platform/data/error.h"
#include "platform/data/sqlite_driver.h"

#include <QFileInfo>

#include <utility>

namespace varo::data {

HandleUser::HandleUser(DatabaseFile& file) : file_(&file) {
    file.users_.push_back(this);
}

HandleUser::~HandleUser() {
    if (file_ != nullptr) {
        std::erase(file_->users_, this);
    }
}

void DatabaseFile::releaseUsers() noexcept {
    for (HandleUser* user : std::exchange(users_, {})) {
        user->release();
        user->file_ = nullptr;
    }
}

void DatabaseFile::releaseUndone() noexcept {
    for (HandleUser* user : users_) {
        user->releaseUndone();
    }
}

std::unique_ptr<DatabaseFile> openDatabaseFile(const QString& path, Access access) {
    if (!QFileInfo(path).isFile()) {
        throw Error(QStringLiteral("%1: no such file").arg(path));
    }
    static const SqliteDriver sqlite;
    static const access::AccessDriver accessFiles;
    for (const Driver* driver : std::initializer_list<const Driver*>{&sqlite, &accessFiles}) {
        if (auto file = driver->open(path, access)) {
            return file;
        }
    }
    throw Error(QStringLiteral("%1: not a database file").arg(path));
}

}  // namespace varo::data
