#pragma once

#include "platform/data/access/catalog.h"
#include "platform/data/access/create_file.h"
#include "platform/data/access_page_files.h"

#include <QProcess>

#include <algorithm>

namespace varo::access {

using namespace Qt::Literals::StringLiterals;

/// A file that createFile() has made, with these tables, open for writing.
class Created {
  public:
    explicit Created(Version version, const QList<NewTable>& tables = {})
        : path(folder.filePath(version == Version::Jet4 ? u"new.mdb"_s : u"new.accdb"_s)) {
        createFile(path, version);
        open();
        file->begin();
        for (const NewTable& table : tables) {
            createTable(*file, table);
        }
        file->commit();
        open();
    }

    void open() {
        file.reset();
        file = std::make_unique<PageFile>(
            path, *readHeader(PageTestFile::content(path).left(kHeaderLength)),
            data::Access::Write);
    }

    TableDefinition table(const QString& name) const {
        for (const CatalogEntry& entry : userTables(*file)) {
            if (entry.name == name) {
                return readTable(*file, entry.page);
            }
        }
        throw data::Error(u"no table %1"_s.arg(name));
    }

    QStringList tables() const {
        QStringList names;
        for (const CatalogEntry& entry : userTables(*file)) {
            names.append(entry.name);
        }
        return names;
    }

    QTemporaryDir folder;
    QString path;
    std::unique_ptr<PageFile> file;
};

/// What an independent reader prints.
inline QString printed(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0
               ? QString::fromUtf8(process.readAllStandardOutput())
               : u"failed"_s;
}

inline NewColumn textColumn(const QString& name, int size) {
    return {.name = name, .type = FieldType::Text, .size = size};
}

inline NewTable everyType() {
    using enum FieldType;
    NewTable table{.name = u"各种类型"_s};
    table.columns = {{.name = u"ID"_s, .type = Long, .isAutoNumber = true}};
    for (const FieldType type :
         {YesNo, Byte, Integer, Long, Money, Single, Double, Date, Ole, Memo, Guid}) {
        table.columns.append({.name = u"列%1"_s.arg(int(type)), .type = type});
    }
    table.columns += {textColumn(u"文本"_s, 255),
                      {.name = u"二进制"_s, .type = Binary, .size = 510},
                      {.name = u"小数"_s, .type = Decimal, .precision = 28, .scale = 10}};
    table.indexes = {{.name = u"主键"_s, .columns = {u"ID"_s}, .isPrimary = true},
                     {.name = u"文本"_s, .columns = {u"文本"_s, u"列3"_s}, .ignoresNulls = true},
                     {.name = u"降序"_s, .columns = {{u"列7"_s, true}}},
                     {.name = u"标识"_s, .columns = {u"列15"_s}, .isUnique = true}};
    return table;
}

/// Of which each name takes 2 + 2 * 60 bytes: the definition is longer than one, two or more pages.
inline NewTable wideTable(int columns) {
    NewTable table{.name = u"宽 %1"_s.arg(columns)};
    for (int i = 0; i < columns; ++i) {
        const QString name = u"%1列"_s.arg(i) + QString(56, u'长');
        table.columns.append(i % 2 == 0 ? textColumn(name, 10)
                                        : NewColumn{.name = name, .type = FieldType::Integer});
    }
    for (int i = 0; i < std::min(columns, 32); ++i) {
        table.indexes.append({.name = u"I%1"_s.arg(i), .columns = {table.columns[i].name}});
    }
    return table;
}

}  // namespace varo::access
