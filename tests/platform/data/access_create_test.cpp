#include "platform/data/access/index_tree.h"
#include "platform/data/access/page_check.h"
#include "platform/data/access/tree_index_keeper.h"
#include "platform/data/access_created_file.h"
#include "platform/data/access_row_editor.h"
#include "support/access_files.h"

#include <bit>

namespace varo::access {

namespace {

constexpr Version kVersions[] = {Version::Jet4, Version::Ace12};

/// What is wrong with the indexes of a table.
std::string indexFindings(PageFile& file, const TableDefinition& table) {
    QStringList all;
    for (const Index& index : table.indexes) {
        all += checkIndex(file, table, index) + checkIndexRows(file, table, index);
    }
    return all.join(u'\n').toStdString();
}

/// The same, with the numbers of keys that the definition states.
std::string findings(PageFile& file, const TableDefinition& table) {
    std::string all = indexFindings(file, table);
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const Layout& layout = file.layout();
        const int at = layout.realIndexes + static_cast<int>(i) * layout.realIndexEntry + 4;
        if (table.indexes[i].isUnique && Bytes(*file.page(table.page)).u32(at) != table.rowCount) {
            all += "a unique index has another number of keys than rows";
        }
    }
    return all;
}

void expectDefined(const TableDefinition& found, const NewTable& ordered) {
    ASSERT_EQ(static_cast<qsizetype>(found.columns.size()), ordered.columns.size());
    EXPECT_EQ(found.columnNumbers, ordered.columns.size());
    EXPECT_EQ(found.variableColumns,
              std::count_if(ordered.columns.begin(), ordered.columns.end(),
                            [](const NewColumn& column) { return !isFixed(column); }));
    for (qsizetype i = 0; i < ordered.columns.size(); ++i) {
        const Column& column = found.columns[static_cast<std::size_t>(i)];
        const NewColumn& wanted = ordered.columns[i];
        EXPECT_EQ(column.name, wanted.name);
        EXPECT_EQ(column.type, wanted.type);
        EXPECT_EQ(column.isAutoNumber, wanted.isAutoNumber);
        EXPECT_EQ(column.size, fieldSize(wanted));
        if (wanted.type == FieldType::Decimal) {
            EXPECT_EQ(column.precision, wanted.precision);
            EXPECT_EQ(column.scale, wanted.scale);
        }
    }
    ASSERT_EQ(static_cast<qsizetype>(found.indexes.size()), ordered.indexes.size());
    for (qsizetype i = 0; i < ordered.indexes.size(); ++i) {
        const Index& index = found.indexes[static_cast<std::size_t>(i)];
        const NewIndex& wanted = ordered.indexes[i];
        EXPECT_EQ(index.names, QStringList(wanted.name));
        EXPECT_EQ(index.isPrimary, wanted.isPrimary);
        EXPECT_EQ(index.isUnique, wanted.isUnique || wanted.isPrimary);
        EXPECT_EQ(index.isRequired, wanted.isRequired || wanted.isPrimary);
        EXPECT_EQ(index.ignoresNulls, wanted.ignoresNulls);
        ASSERT_EQ(static_cast<qsizetype>(index.columns.size()), wanted.columns.size());
        for (qsizetype j = 0; j < wanted.columns.size(); ++j) {
            const IndexColumn& column = index.columns[static_cast<std::size_t>(j)];
            EXPECT_EQ(found.columnByNumber(column.column)->name, wanted.columns[j].name);
            EXPECT_EQ(column.isDescending, wanted.columns[j].isDescending);
        }
    }
}

/// A value for the row with this number, another one for each.
Value valueFor(const Column& column, int row) {
    switch (column.type) {
        case FieldType::YesNo:
            return qint64{row % 2};
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return qint64{row % 200};
        case FieldType::Date:
            return Text{u"2026-01-01 00:%1:%2"_s.arg(row / 60, 2, 10, QLatin1Char('0'))
                            .arg(row % 60, 2, 10, QLatin1Char('0'))
                            .toUtf8()};
        case FieldType::Guid:
            return Text{
                u"{00000000-0000-0000-0000-%1}"_s.arg(row, 12, 10, QLatin1Char('0')).toUtf8()};
        case FieldType::Text:
            return Text{u"值%1"_s.arg(row).toUtf8()};
        case FieldType::Memo:
            return Text{QByteArray(row * 40, 'm')};
        case FieldType::Ole:
        case FieldType::Binary:
            return QByteArray(1 + row % 500, static_cast<char>(row));
        default:
            return row / 4.0;
    }
}

/// What the catalog says of the objects, and who may do what with them, with names for numbers.
std::set<QByteArray> objectsAndRights(PageFile& file) {
    std::map<QByteArray, QByteArray> names;
    std::set<QByteArray> found;
    const Model objects = readAll(file, readTable(file, kCatalogPage));
    for (const auto& [place, row] : objects) {
        names[shown(row[0])] = shown(row[2]);
    }
    for (const auto& [place, row] : objects) {
        found.insert(shown({row[2], row[3], row[7]}) + names[shown(row[1])]);
    }
    for (const auto& [place, row] : readAll(file, readTable(file, kCatalogPage + 1))) {
        const QByteArray sid = maskedSid(*file.page(0), std::get<QByteArray>(row[1])).toHex();
        found.insert(names[shown(row[0])] + ' ' + sid + ' ' + shown({row[2], row[3]}));
    }
    return found;
}

TEST(AccessCreate, MasksTheIdentifiersOfUsersAsTheProgramDoes) {
    // Read from files of the Access program.
    const QByteArray page =
        newHeaderPage(Version::Jet4, std::bit_cast<double>(quint64{0x40E29FF17D1F72BC}));
    const std::pair<const char*, const char*> kUsers[] = {
        {"\x02\x01", "a733"}, {"\x02\x03", "a731"}, {"\x02\x04", "a736"}, {"\x03\x01", "a633"}};
    for (const auto& [sid, masked] : kUsers) {
        EXPECT_EQ(maskedSid(page, sid).toHex(), masked);
    }
}

TEST(AccessCreate, MakesFilesWithSoundSystemTables) {
    for (const Version version : kVersions) {
        const Created created(version);
        const Header& header = created.file->header();
        EXPECT_EQ(header.version, version);
        EXPECT_FALSE(header.isEncoded || header.hasPassword);
        EXPECT_EQ(created.tables(), QStringList());
        QStringList names{u"MSysObjects"_s, u"MSysACEs"_s, u"MSysQueries"_s,
                          u"MSysRelationships"_s};
        for (PageNumber page = 2; page < 6; ++page) {
            const TableDefinition table = readTable(*created.file, page);
            EXPECT_TRUE(table.isSystem);
            EXPECT_EQ(findings(*created.file, table), "") << page;
        }
        const TableDefinition catalog = readTable(*created.file, 2);
        for (const auto& [place, row] : readAll(*created.file, catalog)) {
            const QByteArray name = std::get<Text>(row.at(2)).utf8;
            if (name.startsWith("MSysComplex")) {
                names.append(QString::fromUtf8(name));
                const auto page = static_cast<PageNumber>(std::get<qint64>(row.at(0)));
                EXPECT_EQ(findings(*created.file, readTable(*created.file, page)), "");
            }
        }
        EXPECT_EQ(names.size(), version == Version::Jet4 ? 4 : 14);
        EXPECT_EQ(printed(u"mdb-tables"_s, {u"-S"_s, u"-1"_s, created.path}),
                  names.join(u'\n') + u'\n');
        EXPECT_EQ(QDir(created.folder.path()).entryList(QDir::Files).size(), 1);
    }
}

TEST(AccessCreate, NamesObjectsAndRightsAsTheProgramDoes) {
    const std::pair<Version, QString> kFiles[] = {{Version::Jet4, u"indexed.mdb"_s},
                                                  {Version::Ace12, u"indexed.accdb"_s}};
    for (const auto& [version, name] : kFiles) {
        const QString path = test::accessFile(name);
        if (path.isEmpty()) {
            GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with the file";
        }
        PageFile real(path, *readHeader(PageTestFile::content(path).left(kHeaderLength)),
                      data::Access::Read);
        const std::set<QByteArray> expected = objectsAndRights(real);
        for (const QByteArray& line : objectsAndRights(*Created(version).file)) {
            EXPECT_TRUE(expected.contains(line)) << line.constData();
        }
    }
}

TEST(AccessCreate, LeavesAFileThatIsThere) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"there.mdb"_s);
    PageTestFile::write(path, "content");
    EXPECT_THROW(createFile(path, Version::Jet4), data::Error);
    EXPECT_THROW(createFile(folder.filePath(u"a.accdb"_s), Version::Ace14), data::Error);
    EXPECT_THROW(createFile(folder.filePath(u"no/a.mdb"_s), Version::Jet4), data::Error);
    EXPECT_EQ(PageTestFile::content(path), "content");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList(u"there.mdb"_s));
}

TEST(AccessCreate, MakesTablesAsOrdered) {
    const QList<NewTable> tables{everyType(), wideTable(60), wideTable(1), wideTable(255)};
    for (const Version version : kVersions) {
        const Created created(version, tables);
        QStringList names;
        for (const NewTable& table : tables) {
            SCOPED_TRACE(table.name.toStdString());
            names.append(table.name);
            const TableDefinition found = created.table(table.name);
            expectDefined(found, table);
            EXPECT_EQ(findings(*created.file, found), "");
            QStringList columns;
            for (const NewColumn& column : table.columns) {
                columns.append(column.name);
            }
            EXPECT_EQ(printed(u"mdb-export"_s, {created.path, table.name}),
                      columns.join(u',') + u'\n');
        }
        EXPECT_EQ(created.tables(), names);
        EXPECT_EQ(printed(u"mdb-tables"_s, {u"-1"_s, created.path}), names.join(u'\n') + u'\n');
        EXPECT_EQ(findings(*created.file, readTable(*created.file, 2)), "");
        EXPECT_EQ(findings(*created.file, readTable(*created.file, 3)), "");
        const auto rights = objectsAndRights(*created.file);
        for (const char* sid : {"0201", "0301"}) {
            EXPECT_TRUE(rights.contains("'" + names.back().toUtf8() + ' ' + sid + " 1048319|0|"));
        }
    }
    EXPECT_TRUE(printed(u"mdb-schema"_s, {Created(Version::Jet4, {everyType()}).path})
                    .contains(u"[文本]\t\t\tText (255)"_s));
}

TEST(AccessCreate, KeepsTheRowsOfSuchTables) {
    constexpr int kRows = 300;
    for (const NewTable& ordered : {everyType(), wideTable(60)}) {
        for (const Version version : kVersions) {
            Created created(version, {ordered});
            const TableDefinition table = created.table(ordered.name);
            const TableRules rules = readTableRules(*created.file, table);
            TreeIndexKeeper indexes(*created.file, table, ordered.name);
            created.file->begin();
            TableWriter writer(*created.file, table, rules, indexes);
            Model rows;
            for (int i = 1; i <= kRows; ++i) {
                std::vector<FieldChange> fields;
                Values values;
                for (const Column& column : table.columns) {
                    fields.emplace_back(column.isAutoNumber ? FieldChange(Kept())
                                                            : valueFor(column, i));
                    values.push_back(column.isAutoNumber ? qint64{i} : valueFor(column, i));
                }
                const RowPlace place = writer.insert(fields);
                if (i % 3 == 0) {
                    writer.remove(place);
                } else {
                    rows[rowNumber(place)] = values;
                }
            }
            created.file->commit();
            created.open();
            Model found = readAll(*created.file, table);
            ASSERT_EQ(found.size(), rows.size());
            for (const auto& [number, values] : rows) {
                EXPECT_EQ(shown(found[number]), shown(values));
            }
            EXPECT_EQ(findings(*created.file, created.table(ordered.name)), "");
            EXPECT_EQ(checkPages(*created.file), QStringList());
            expectExported(created.path, ordered.name, table, rows);
        }
    }
}

TEST(AccessCreate, StatesWhatColumnsAndIndexesDemand) {
    NewTable ordered{.name = u"T"_s};
    ordered.columns = {{.name = u"ID"_s, .type = FieldType::Long},
                       {.name = u"名称"_s, .size = 3, .isRequired = true, .allowsEmpty = false},
                       textColumn(u"free"_s, 3),
                       {.name = u"must"_s, .type = FieldType::Double, .isRequired = true}};
    ordered.indexes = {{.name = u"Key"_s, .columns = {u"ID"_s}, .isPrimary = true},
                       {.name = u"Free"_s, .columns = {u"free"_s}, .isUnique = true}};
    for (const Version version : kVersions) {
        Created created(version, {ordered});
        const TableDefinition table = created.table(u"T"_s);
        const TableRules rules = readTableRules(*created.file, table);
        TreeIndexKeeper indexes(*created.file, table, u"T"_s);
        created.file->begin();
        TableWriter writer(*created.file, table, rules, indexes);
        const auto refused = [&](std::vector<FieldChange> fields) {
            return refusal([&] { writer.insert(fields); }).toStdString();
        };
        const Value null;
        const Value text = Text{"abc"};
        const Value empty = Text{""};
        EXPECT_EQ(refused({Value(qint64{1}), text, empty, Value(1.0)}), "");
        EXPECT_EQ(refused({Value(qint64{1}), text, null, Value(1.0)}),
                  "table T, index Key: another row has these values already");
        EXPECT_EQ(refused({null, text, null, Value(1.0)}),
                  "column ID: the index Key requires a value");
        EXPECT_EQ(refused({Value(qint64{2}), null, null, Value(1.0)}),
                  "column 名称: a value is required");
        EXPECT_EQ(refused({Value(qint64{2}), empty, null, Value(1.0)}),
                  "column 名称: an empty text is not allowed");
        EXPECT_EQ(refused({Value(qint64{2}), text, null, null}),
                  "column must: a value is required");
        EXPECT_NE(refused({Value(qint64{2}), Text{"four"}, null, Value(1.0)}), "");
        EXPECT_EQ(refused({Value(qint64{2}), text, null, Value(1.0)}), "");
        EXPECT_EQ(refused({Value(qint64{3}), text, null, Value(1.0)}), "");
        EXPECT_EQ(refused({Value(qint64{4}), text, empty, Value(1.0)}),
                  "table T, index Free: another row has these values already");
        created.file->commit();
        EXPECT_TRUE(printed(u"mdb-prop"_s, {created.path, u"T"_s})
                        .contains(u"name: 名称\n\tAllowZeroLength: no\n\tRequired: yes\n"_s));
    }
}

TEST(AccessCreate, KeepsPropertiesOutOfTheRowOfTheCatalog) {
    constexpr int kMostInRow = 64;
    const Created created(
        Version::Jet4,
        {{.name = u"T"_s,
          .columns = {{.name = u"a"_s, .type = FieldType::Date, .isRequired = true}}}});
    const auto details = tableDetails(*created.file, created.table(u"T"_s).page);
    EXPECT_GT(details.properties.size(), kMostInRow);
}

TEST(AccessCreate, AddsTablesToFilesOfTheProgram) {
    if (test::accessFiles().isEmpty()) {
        GTEST_SKIP() << "VARO_ACCESS_FILES names no folder with Access files";
    }
    for (const QString& real : test::accessFiles()) {
        const Header header = *readHeader(PageTestFile::content(real).left(kHeaderLength));
        const QTemporaryDir folder;
        const QString path = folder.filePath(QFileInfo(real).fileName());
        PageTestFile::write(path, PageTestFile::content(real));
        PageFile file(path, header, data::Access::Write);
        if (header.isJet3()) {
            continue;
        }
        NewTable added = everyType();
        added.name += u"2";
        file.begin();
        createTable(file, added);
        const CatalogEntry entry = userTables(file).back();
        EXPECT_EQ(entry.name, added.name) << path.toStdString();
        expectDefined(readTable(file, entry.page), added);
        EXPECT_EQ(indexFindings(file, readTable(file, 2)), "");
        EXPECT_EQ(indexFindings(file, readTable(file, 3)), "");
        file.commit();
        EXPECT_TRUE(printed(u"mdb-tables"_s, {u"-1"_s, path}).contains(added.name + u'\n'));
    }
}

TEST(AccessCreate, RefusesWhatNoFileCanHave) {
    Created created(Version::Ace12, {wideTable(1)});
    const NewTable fine = everyType();
    const auto with = [&](auto change) {
        NewTable table = fine;
        change(table);
        return table;
    };
    const NewColumn counter{.name = u"n"_s, .type = FieldType::Long, .isAutoNumber = true};
    const NewTable refused[] = {
        wideTable(1),
        wideTable(256),
        with([](NewTable& table) { table.name.clear(); }),
        with([](NewTable& table) { table.name = u"a.b"_s; }),
        with([](NewTable& table) { table.name = QString(65, u'a'); }),
        with([](NewTable& table) { table.name = u"msysobjects"_s; }),
        with([](NewTable& table) { table.columns.clear(); }),
        with([](NewTable& table) { table.columns.append(table.columns[1]); }),
        with([&](NewTable& table) { table.columns.append(counter); }),
        with([](NewTable& table) { table.columns[1].isAutoNumber = true; }),
        with([](NewTable& table) { table.columns[1].type = FieldType::BigInteger; }),
        with([](NewTable& table) { table.columns[1].type = FieldType::Complex; }),
        with([](NewTable& table) { table.columns.append(textColumn(u"x"_s, 256)); }),
        with([](NewTable& table) { table.columns.append(textColumn(u"x"_s, 0)); }),
        with([](NewTable& table) { table.columns.back().precision = 29; }),
        with([](NewTable& table) {
            for (int i = 0; i < 240; ++i) {
                table.columns.append({.name = QString::number(i), .type = FieldType::Guid});
            }
        }),
        with([](NewTable& table) { table.indexes[0].columns.clear(); }),
        with([](NewTable& table) { table.indexes[0].columns = {u"none"_s}; }),
        with([](NewTable& table) { table.indexes[1].columns = {u"列11"_s}; }),
        with([](NewTable& table) { table.indexes[1].isPrimary = true; }),
        with([](NewTable& table) { table.indexes[1].name = table.indexes[0].name; }),
    };
    EXPECT_THROW(createTable(*created.file, fine), data::Error);  // without a transaction
    created.file->begin();
    const quint32 pages = created.file->pageCount();
    for (const NewTable& table : refused) {
        EXPECT_THROW(createTable(*created.file, table), data::Error) << &table - refused;
    }
    EXPECT_EQ(created.file->pageCount(), pages);
    EXPECT_EQ(created.tables(), QStringList(wideTable(1).name));
    createTable(*created.file, fine);
    EXPECT_EQ(findings(*created.file, created.table(fine.name)), "");
}

}  // namespace

}  // namespace varo::access
