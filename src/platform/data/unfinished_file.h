#pragma once

#include <QFile>
#include <QRandomGenerator>
#include <QString>

namespace varo::data {

/// A file beside the one that it is to become; removed unless it has been renamed.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const QString& finalPath)
        : path_(QStringLiteral("%1.%2.tmp")
                    .arg(finalPath)
                    .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'))) {}
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile() { QFile::remove(path_); }

    const QString& path() const { return path_; }

  private:
    QString path_;
};

}  // namespace varo::data
