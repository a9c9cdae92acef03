#include "platform/data/create_database.h"

#include "platform/data/error.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <filesystem>
#include <memory>
#include <sqlite3.h>

namespace varo::data {

namespace {

// Removes the file at its path unless it has been given its final name.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const QString& finalPath)
        : path_(QStringLiteral("%1.%2.tmp")
                    .arg(finalPath)
                    .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'))),
          finalPath_(finalPath) {}
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile() {
        if (!finished_) {
            QFile::remove(path_);
        }
    }

    const QString& path() const { return path_; }

    void finish() {
        std::error_code failure;
        std::filesystem::rename(path_.toStdU16String(), finalPath_.toStdU16String(), failure);
        if (failure) {
            throw Error(QStringLiteral("%1: %2").arg(
                finalPath_, QString::fromLocal8Bit(failure.message().c_str())));
        }
        finished_ = true;
    }

  private:
    QString path_;
    QString finalPath_;
    bool finished_ = false;
};

void writeDatabase(const QString& path, const QString& script) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.toUtf8().constData(), &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> handle(opened, sqlite3_close_v2);
    const QByteArray statements = "BEGIN;\n" + script.toUtf8() + "\n;COMMIT;";
    if (result != SQLITE_OK ||
        sqlite3_exec(opened, statements.constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw Error(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errmsg(opened))));
    }
}

void requireNothingAt(const QString& path) {
    const QFileInfo info(path);
    if (info.exists() || info.isSymLink()) {
        throw Error(QStringLiteral("%1 is there already").arg(path));
    }
}

}  // namespace

void createDatabase(const QString& path, const QString& script) {
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    requireNothingAt(absolutePath);
    UnfinishedFile file(absolutePath);
    writeDatabase(file.path(), script);
    requireNothingAt(absolutePath);
    file.finish();
}

}  // namespace varo::data
