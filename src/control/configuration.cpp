#include "control/configuration.h"

#include "store/library_connection.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace varo {

namespace {

const auto kSection = QStringLiteral("Access");
const auto kNodeCount = QStringLiteral("NodeCount");
const auto kRootNodeText = QStringLiteral("RootNodeText");
const auto kRootNodeName = QStringLiteral("RootNodeName");
const auto kRootNodePath = QStringLiteral("RootNodePath");

/// The value of the leading digits of `text`; 0 when it starts with none, at most the largest int.
int leadingCount(const QString& text) {
    qint64 value = 0;
    for (const QChar c : text.trimmed()) {
        if (c < u'0' || c > u'9' || value > std::numeric_limits<int>::max()) {
            break;
        }
        value = value * 10 + (c.unicode() - u'0');
    }
    return static_cast<int>(std::min<qint64>(value, std::numeric_limits<int>::max()));
}

QString filePath(const QString& folder, const char* name) {
    return normalisedFolder(folder) + QString::fromLatin1(name);
}

/// Replaces `to`, if it is there, by `from` in one step.
bool moveFile(const QString& from, const QString& to) {
    std::error_code failure;
    std::filesystem::rename(QFileInfo(from).filesystemFilePath(),
                            QFileInfo(to).filesystemFilePath(), failure);
    return !failure;
}

/// A library's folder as it is kept: absolute, also where the file names it from its own folder.
QString absoluteFolder(const QString& folder, const QString& written) {
    return normalisedFolder(QDir::cleanPath(QDir(folder).filePath(normalisedFolder(written))));
}

}  // namespace

Configuration::Configuration(colFormulaDB& libraries) : libraries_(libraries) {
    file_.setFileName(QString::fromLatin1(kConfigFileName));
}

bool Configuration::exists(const QString& folder) {
    return !folder.isEmpty() && QFileInfo(filePath(folder, kConfigFileName)).isFile();
}

bool Configuration::recover(const QString& folder) {
    return exists(folder) || (!folder.isEmpty() && takeBack(folder) && exists(folder));
}

bool Configuration::putAside(const QString& folder) {
    return !exists(folder) ||
           moveFile(filePath(folder, kConfigFileName), filePath(folder, kBackupFileName));
}

bool Configuration::takeBack(const QString& folder) {
    const QString backup = filePath(folder, kBackupFileName);
    return !QFileInfo(backup).isFile() || moveFile(backup, filePath(folder, kConfigFileName));
}

void Configuration::remove(const QString& folder) {
    QFile::remove(filePath(folder, kConfigFileName));
}

void Configuration::removeBackup(const QString& folder) {
    QFile::remove(filePath(folder, kBackupFileName));
}

bool Configuration::ReadConfigFile(const QString& folder, QString& errorText) {
    libraries_.Clear();
    file_.setFolder(folder);
    QString count;
    const bool read = file_.check() && file_.readValue(kSection, kNodeCount, count) &&
                      readLibraries(folder, leadingCount(count));
    if (!read) {
        errorText = file_.lastError();
    }
    return read;
}

bool Configuration::readLibraries(const QString& folder, int count) {
    const std::array keys{kRootNodeText, kRootNodeName, kRootNodePath};
    // A count that promises more than the file holds ends at the first key that is missing.
    QString value;
    bool present = true;
    for (int i = 1; i <= count && present; ++i) {
        for (const QString& key : keys) {
            const QString numbered = key + QString::number(i);
            file_.requireKey(kSection, numbered);
            present = present && file_.readValue(kSection, numbered, value);
        }
    }
    if (!file_.check()) {
        return false;
    }
    for (int i = 1; i <= count; ++i) {
        if (!addLibrary(folder, i)) {
            return false;
        }
    }
    return true;
}

bool Configuration::addLibrary(const QString& folder, int number) {
    const QString digits = QString::number(number);
    QString text;
    QString name;
    QString path;
    if (!file_.readValue(kSection, kRootNodeText + digits, text) ||
        !file_.readValue(kSection, kRootNodeName + digits, name) ||
        !file_.readValue(kSection, kRootNodePath + digits, path)) {
        return false;
    }
    QString key;
    bool added = false;
    libraries_.Add(name, absoluteFolder(folder, path), text, key, QString(), added);
    return true;
}

void Configuration::readCompleteLibraries(const QString& folder) {
    libraries_.Clear();
    file_.setFolder(folder);
    const auto isNamed = [this](int number) {
        QString value;
        const std::array keys{kRootNodeText, kRootNodeName, kRootNodePath};
        return std::ranges::any_of(keys, [&](const QString& key) {
            return file_.readValue(kSection, key + QString::number(number), value);
        });
    };
    for (int i = 1; isNamed(i); ++i) {
        addLibrary(folder, i);
    }
}

/// How the file writes the folders that it names.
QHash<QString, QString> Configuration::writtenFolders(const QString& folder) {
    QHash<QString, QString> folders;
    QString written;
    for (int i = 1; file_.readValue(kSection, kRootNodePath + QString::number(i), written); ++i) {
        folders.insert(absoluteFolder(folder, written), written);
    }
    return folders;
}

bool Configuration::WriteConfigFile(const QString& folder, QString& errorText) {
    file_.setFolder(folder);
    if (!exists(folder)) {
        file_.setSource(QString::fromLatin1(kBackupFileName));
    }
    const QHash<QString, QString> folders = writtenFolders(folder);
    bool written = file_.prepareSection(kSection);
    if (libraries_.Count() > 0) {
        written =
            written && file_.writeValue(kSection, kNodeCount, QString::number(libraries_.Count()));
    }
    int i = 0;
    for (const clsFormulaDB& library : libraries_) {
        const QString number = QString::number(++i);
        written = written &&
                  file_.writeValue(kSection, kRootNodeText + number, library.FormulaNodeText) &&
                  file_.writeValue(kSection, kRootNodeName + number, library.FormulaDBName) &&
                  file_.writeValue(kSection, kRootNodePath + number,
                                   folders.value(library.FormulaDBPath, library.FormulaDBPath));
    }
    written = written && file_.save();
    if (!written) {
        errorText = file_.lastError();
    }
    return written;
}

}  // namespace varo
