#include "access_bases.h"

#include "platform/data/access/catalog.h"
#include "platform/data/access/create_file.h"
#include "platform/data/access/reading.h"
#include "platform/data/access/virtual_table.h"
#include "promise.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <set>

namespace varo::fuzz {

namespace {

using namespace access;
using namespace Qt::Literals::StringLiterals;

constexpr PageNumber kCatalog = 2;
constexpr int kDefinitionNext = 4;

QByteArray contentOf(const QString& path) {
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "a base file can be read");
    return file.readAll();
}

/// Of every type that these versions have, with long values of all three kinds and indexes of
/// several levels.
NewTable everyType() {
    using enum FieldType;
    NewTable table{.name = u"Every"_s};
    table.columns = {{.name = u"ID"_s, .type = Long, .isAutoNumber = true},
                     {.name = u"Name"_s, .size = 60},
                     {.name = u"Bytes"_s, .type = Binary, .size = 100},
                     {.name = u"Number"_s, .type = Decimal, .precision = 28, .scale = 5}};
    for (const FieldType type :
         {YesNo, Byte, Integer, Money, Single, Double, Date, Guid, Memo, Ole}) {
        table.columns.append({.name = u"C%1"_s.arg(static_cast<int>(type)), .type = type});
    }
    table.indexes = {{.name = u"PrimaryKey"_s, .columns = {u"ID"_s}, .isPrimary = true},
                     {.name = u"Name"_s, .columns = {u"Name"_s, u"C3"_s}, .ignoresNulls = true},
                     {.name = u"Down"_s, .columns = {{u"C7"_s, true}}},
                     {.name = u"Guid"_s, .columns = {u"C15"_s}}};
    return table;
}

/// A value of a column for row `i`, NULL in some.
Value valueFor(const Column& column, int i) {
    if ((i + column.number) % 9 == 0) {
        return {};
    }
    switch (column.type) {
        case FieldType::Text:
            return Text{"row " + QByteArray::number(i * 7919 % 400).repeated(i % 8) + " 梁"};
        case FieldType::Memo:
            return Text{QByteArray("长 text ").repeated(i % 40 == 0 ? 500 : i % 12)};
        case FieldType::Ole:
            return QByteArray(i % 50 == 0 ? 9000 : i % 11 == 0 ? 300 : i % 30, 'o');
        case FieldType::Binary:
            return QByteArray(i % 100, 'b');
        case FieldType::Date:
            return Text{"2004-05-06 07:08:" + QByteArray::number(10 + i % 50)};
        case FieldType::Guid:
            return Text{"{00000000-0000-4000-8000-" +
                        QByteArray::number(i).rightJustified(12, '0') + '}'};
        case FieldType::YesNo:
        case FieldType::Byte:
        case FieldType::Integer:
            return qint64{i % 2};
        case FieldType::Long:
            return qint64{i};
        default:
            return i * 0.25 - 30;
    }
}

void addRows(PageFile& file, const NewTable& created, int rows) {
    const auto tables = userTables(file);
    const auto entry = std::find_if(tables.begin(), tables.end(), [&](const CatalogEntry& each) {
        return each.name == created.name;
    });
    require(entry != tables.end(), "a table that was created is there");
    SeenTables seen = onlyTable(file, entry->name, entry->page);
    TableWriter& writer = seen.writerOf(seen.tables.front());
    for (int i = 0; i < rows; ++i) {
        std::vector<FieldChange> fields;
        for (const Column& column : seen.tables.front().definition.columns) {
            fields.emplace_back(column.isAutoNumber ? Value() : valueFor(column, i));
        }
        const RowPlace place = writer.insert(fields);
        if (i % 13 == 5) {
            writer.remove(place);
        }
    }
}

void create(const QString& path, Version version) {
    createFile(path, version);
    PageFile file(path, *readHeader(contentOf(path).left(kHeaderLength)), data::Access::Write);
    constexpr int kRows = 120;
    const NewTable table = everyType();
    NewTable plain{.name = u"Plain"_s, .columns = {{.name = u"Number"_s, .type = FieldType::Long}}};
    file.begin();
    createTable(file, table);
    createTable(file, plain);
    addRows(file, table, kRows);
    addRows(file, plain, 2);
    file.commit();
}

void insert(std::set<PageNumber>& pages, PageFile& file, RowPlace map) {
    pages.insert(map.page);
    const std::vector<PageNumber> marked = markedPages(file, map);
    pages.insert(marked.begin(), marked.end());
}

AccessBaseTable baseTable(PageFile& file, const QString& name, PageNumber page) {
    std::set<PageNumber> pages;
    for (PageNumber each = page; each != 0;) {
        pages.insert(each);
        each = access::Bytes(*file.page(each)).u32(kDefinitionNext);
    }
    const TableDefinition table = readTable(file, page);
    insert(pages, file, table.ownedPages);
    insert(pages, file, table.pagesWithRoom);
    for (const LongValuePages& maps : table.longValuePages) {
        insert(pages, file, maps.owned);
        insert(pages, file, maps.withRoom);
    }
    for (const Index& index : table.indexes) {
        insert(pages, file, index.pages);
    }
    return {name, page, {pages.begin(), pages.end()}};
}

/// Lets a commit to a copy of the file stop before its journal is removed.
void makeJournal(AccessBase& base, PageFile& file) {
    const int pageSize = file.layout().pageSize;
    PageChanges changes;
    changes.begin(file.pageCount(), pageSize);
    base.committed = base.content.left(qsizetype{file.pageCount()} * pageSize);
    const std::vector<PageNumber>& pages = base.tables.back().pages;
    for (const PageNumber number : {PageNumber{1}, pages.front(), pages.back()}) {
        if (changes.find(number)) {
            continue;
        }
        char* bytes = changes.change(number, file.page(number));
        bytes[pageSize - 1] = static_cast<char>(bytes[pageSize - 1] ^ 1);
        base.committedPages.push_back(number);
    }
    base.committedPages.push_back(changes.append());
    base.committed.append(pageSize, '\0');
    for (const PageNumber number : base.committedPages) {
        base.committed.replace(qsizetype{number} * pageSize, pageSize, *changes.find(number));
    }
    const auto journal = Journal::write(
        Journal::pathOf(base.path), pageSize,
        {qint64{file.pageCount()} * pageSize, 0600, [&](PageNumber n) { return file.page(n); }},
        changes);
    base.journal = contentOf(Journal::pathOf(base.path));
    journal->remove();
}

AccessBase baseAt(const QString& path) {
    AccessBase base;
    base.path = path;
    base.content = contentOf(path);
    const auto header = readHeader(base.content.left(kHeaderLength));
    require(header && !header->isEncoded && !header->hasPassword, "a base file is an Access file");
    base.header = *header;
    PageFile file(path, base.header, data::Access::Read);
    const Reading reading(file);
    base.tables.push_back(baseTable(file, u"MSysObjects"_s, kCatalog));
    for (const CatalogEntry& entry : userTables(file)) {
        base.tables.push_back(baseTable(file, entry.name, entry.page));
    }
    makeJournal(base, file);
    return base;
}

}  // namespace

qsizetype AccessBase::placeOf(const AccessInput& input, const AccessEdit& edit) const {
    const auto pageCount = static_cast<std::size_t>(content.size() / pageSize());
    const auto pageAmong = [&](const AccessBaseTable& of) {
        return std::size_t{of.pages[edit.page % of.pages.size()]};
    };
    const std::size_t page = edit.place == AccessPlace::TablePage     ? pageAmong(table(input))
                             : edit.place == AccessPlace::CatalogPage ? pageAmong(tables.front())
                                                                      : edit.page % pageCount;
    return static_cast<qsizetype>(page) * pageSize() + edit.offset % pageSize();
}

SeenTables onlyTable(PageFile& file, const QString& name, PageNumber page) {
    SeenTables seen{file, {}};
    SeenTable table;
    table.entry = {name, page};
    table.definition = readTable(file, page);
    seen.tables.push_back(std::move(table));
    return seen;
}

std::vector<AccessBase> makeAccessBases(const QString& folder) {
    std::vector<AccessBase> bases;
    const auto nextPath = [&] {
        const QString own = folder + QString::number(bases.size());
        require(QDir().mkpath(own), "the sandbox can be written to");
        return own + u"/file.mdb"_s;
    };
    constexpr Version kVersions[kSmallAccessBases] = {Version::Jet4, Version::Ace12};
    for (const Version version : kVersions) {
        const QString path = nextPath();
        create(path, version);
        bases.push_back(baseAt(path));
    }
    const QString given = qEnvironmentVariable("VARO_ACCESS_FILES");
    if (!given.isEmpty()) {
        for (const QFileInfo& file :
             QDir(given).entryInfoList({u"*.mdb"_s, u"*.accdb"_s}, QDir::Files, QDir::Name)) {
            const QString path = nextPath();
            require(QFile::copy(file.filePath(), path) &&
                        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner),
                    "the sandbox can be written to");
            bases.push_back(baseAt(path));
        }
    }
    return bases;
}

}  // namespace varo::fuzz
