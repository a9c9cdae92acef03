#include "platform/data/driver.h"

#include "platform/data/error.h"
#include "platform/data/sqlite_driver.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
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

const Driver& driverFor(const QString& path) {
    if (!QFileInfo(path).isFile()) {
        throw Error(QStringLiteral("%1: no such file").arg(path));
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Error(QStringLiteral("%1: %2").arg(path, file.errorString()));
    }
    const QByteArray head = file.read(HeadBytes);

    static const SqliteDriver sqlite;
    for (const Driver* driver : {static_cast<const Driver*>(&sqlite)}) {
        if (driver->reads(std::span(head.constData(), static_cast<std::size_t>(head.size())))) {
            return *driver;
        }
    }
    throw Error(QStringLiteral("%1: not a database file").arg(path));
}

}  // namespace varo::data
