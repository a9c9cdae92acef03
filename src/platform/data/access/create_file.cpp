#include "platform/data/access/create_file.h"

#include "platform/data/access/catalog_writer.h"
#include "platform/data/access/file_layer.h"
#include "platform/data/access/row_page.h"
#include "platform/data/access/system_tables.h"
#include "platform/data/unfinished_file.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace varo::access {

namespace {

constexpr PageNumber kFirstFreePage = kCatalogPage + kSystemTableCount;

/// The present time in days since 1899-12-30, as the Access program counts them.
double daysNow() {
    const QDateTime now = QDateTime::currentDateTime();
    return static_cast<double>(QDate(1899, 12, 30).daysTo(now.date())) +
           now.time().msecsSinceStartOfDay() / 86'400'000.0;
}

/// The page with the maps of the free pages and of those released by a program that has the file
/// open. All pages behind the first ones are free.
QByteArray mapsPage(const Layout& layout) {
    constexpr int kBits = 5;
    QByteArray free(kMapBytes, '\0');
    std::fill(free.begin() + kBits, free.end(), '\xFF');
    free[kBits] = static_cast<char>(0xFF << kFirstFreePage);
    const QByteArray released(kMapBytes, '\0');
    QByteArray bytes(layout.pageSize, '\0');
    RowPage::clear(layout, bytes.data(), kMapsPage);
    RowPage page(layout, bytes.data());
    page.add(Bytes(free), RowPage::Kind::Row);
    page.add(Bytes(released), RowPage::Kind::Row);
    return bytes;
}

/// The pages that others refer to by their numbers; those of the system tables are not written yet.
QByteArray firstPages(Version version) {
    QByteArray bytes = newHeaderPage(version, daysNow());
    const Layout& layout = readHeader(bytes)->layout();
    bytes += mapsPage(layout);
    bytes.append(kSystemTableCount * static_cast<qsizetype>(layout.pageSize), '\0');
    return bytes;
}

void addObjects(CatalogWriter& catalog) {
    for (const SystemObject& object : systemObjects()) {
        catalog.addObject(object.object);
    }
    for (const SystemObject& object : systemObjects()) {
        for (const SystemRight& right : object.rights) {
            catalog.addRight(object.object.id, right.user, right.mask, right.isInherited);
        }
    }
}

/// The tables for fields of many values, which the program looks into whenever a table is made.
void addComplexTables(PageFile& file, CatalogWriter& catalog) {
    for (const ComplexTable& table : complexTables()) {
        const PageNumber page = file.add();
        const auto id = static_cast<qint32>(page);
        defineTable(file, page, table.table);
        catalog.addObject({.id = id,
                           .parent = kTablesContainer,
                           .name = table.table.name,
                           .type = kTableType,
                           .flags = table.flags,
                           .owner = KnownUser::Engine});
        catalog.addRight(id, KnownUser::Admin, kAdministers);
        catalog.addRight(id, KnownUser::Users, kReads);
    }
}

void fill(PageFile& file) {
    file.begin();
    PageNumber page = kCatalogPage;
    for (const NewTable& table : systemTables()) {
        defineTable(file, page++, table);
    }
    CatalogWriter catalog(file);
    addObjects(catalog);
    if (file.header().version >= Version::Ace12) {
        addComplexTables(file, catalog);
    }
    file.commit();
}

void requireNothingAt(const QString& path) {
    const QFileInfo info(path);
    if (info.exists() || info.isSymLink()) {
        throw data::Error(QStringLiteral("%1 is there already").arg(path));
    }
}

[[noreturn]] void throwFailed(const QFile& file) {
    throw data::Error(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
}

}  // namespace

void createFile(const QString& path, Version version) {
    if (version != Version::Jet4 && version != Version::Ace12) {
        throw data::Error(QStringLiteral("Access files of this version are not created"));
    }
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    requireNothingAt(absolutePath);
    const data::UnfinishedFile unfinished(absolutePath);
    const QByteArray start = firstPages(version);
    QFile file(unfinished.path());
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) ||
        file.write(start) != start.size() || !file.flush()) {
        throwFailed(file);
    }
    file.close();
    {
        PageFile pages(unfinished.path(), *readHeader(start), data::Access::Write);
        fill(pages);
    }
    // Fails when there is a file by now.
    if (!file.rename(absolutePath)) {
        throwFailed(file);
    }
    FileLayer::current().syncFolderOf(absolutePath);
}

}  // namespace varo::access
