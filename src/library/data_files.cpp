#include "library/data_files.h"

#include "store/attempt.h"
#include "store/library_connection.h"

#include <QCollator>
#include <QDir>

#include <algorithm>

namespace varo {

namespace {

const auto kArrow = QStringLiteral("->");

QStringList patterns() {
    return {QStringLiteral("*.mdb"), QStringLiteral("*.accdb")};
}

}  // namespace

QString parameterOf(const DataTableName& name) {
    return name.file + kArrow + name.table;
}

DataTableName dataTableOf(const QString& parameter) {
    const qsizetype arrow = parameter.indexOf(kArrow);
    if (arrow < 0) {
        return {parameter, {}};
    }
    return {parameter.first(arrow), parameter.sliced(arrow + kArrow.size())};
}

QStringList dataFiles(const QString& folder) {
    QStringList names =
        QDir(normalisedFolder(folder)).entryList(patterns(), QDir::Files | QDir::Hidden);
    names.removeIf([](const QString& name) { return name.contains(kArrow); });
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::ranges::sort(names, collator);
    return names;
}

std::optional<QString> dataFilePath(const QString& folder, const QString& file) {
    const bool hasFolder = file.contains(u'/') || file.contains(u'\\') ||
                           (QDir::separator() == u'\\' && file.contains(u':'));
    if (hasFolder || !QDir::match(patterns(), file)) {
        return std::nullopt;
    }
    return normalisedFolder(folder) + file;
}

bool openDataFile(const QString& folder, const QString& file, data::Connection& connection) {
    const auto path = dataFilePath(folder, file);
    return path && attempt([&] {
               data::Connection opened;
               opened.open(*path);
               connection = std::move(opened);
           });
}

}  // namespace varo
