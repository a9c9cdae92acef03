#include "platform/data/access/system_tables.h"

#include <initializer_list>
#include <utility>

namespace varo::access {

namespace {

using namespace Qt::Literals::StringLiterals;

constexpr int kLongestText = 255;
constexpr int kLongestBinary = 510;

int longest(FieldType type) {
    return type == FieldType::Text ? kLongestText : kLongestBinary;
}

QList<NewColumn> columns(ColumnRole role,
                         std::initializer_list<std::pair<QString, FieldType>> described) {
    QList<NewColumn> all;
    for (const auto& [name, type] : described) {
        all.append({.name = name, .type = type, .size = longest(type), .role = role});
    }
    return all;
}

NewTable catalogTable() {
    using enum FieldType;
    NewTable table{.name = u"MSysObjects"_s, .isSystem = true};
    table.columns = columns(ColumnRole::Catalog, {{u"Id"_s, Long},
                                                  {u"ParentId"_s, Long},
                                                  {u"Name"_s, Text},
                                                  {u"Type"_s, Integer},
                                                  {u"DateCreate"_s, Date},
                                                  {u"DateUpdate"_s, Date},
                                                  {u"Owner"_s, Binary},
                                                  {u"Flags"_s, Long},
                                                  {u"Database"_s, Memo},
                                                  {u"Connect"_s, Memo},
                                                  {u"ForeignName"_s, Text},
                                                  {u"RmtInfoShort"_s, Binary},
                                                  {u"RmtInfoLong"_s, Ole},
                                                  {u"Lv"_s, Ole},
                                                  {u"LvProp"_s, Ole},
                                                  {u"LvModule"_s, Ole},
                                                  {u"LvExtra"_s, Ole}});
    table.columns[6].role = ColumnRole::Sid;
    table.indexes = {
        {.name = u"ParentIdName"_s, .columns = {u"ParentId"_s, u"Name"_s}, .isUnique = true},
        {.name = u"Id"_s, .columns = {u"Id"_s}, .isUnique = true, .isPrimary = true}};
    return table;
}

NewTable rightsTable() {
    using enum FieldType;
    NewTable table{.name = u"MSysACEs"_s, .isSystem = true};
    table.columns = columns(
        ColumnRole::Catalog,
        {{u"ObjectId"_s, Long}, {u"SID"_s, Binary}, {u"ACM"_s, Long}, {u"FInheritable"_s, YesNo}});
    table.columns[1].role = ColumnRole::Sid;
    table.indexes = {{.name = u"ObjectId"_s, .columns = {u"ObjectId"_s}, .isRequired = true}};
    return table;
}

NewTable queriesTable() {
    using enum FieldType;
    NewTable table{.name = u"MSysQueries"_s, .isSystem = true};
    table.columns = columns(ColumnRole::Catalog, {{u"ObjectId"_s, Long},
                                                  {u"Attribute"_s, Byte},
                                                  {u"Order"_s, Binary},
                                                  {u"Name1"_s, Text},
                                                  {u"Name2"_s, Text},
                                                  {u"Expression"_s, Memo},
                                                  {u"Flag"_s, Integer},
                                                  {u"LvExtra"_s, Long}});
    table.indexes = {{.name = u"ObjectIdAttribute"_s,
                      .columns = {u"ObjectId"_s, u"Attribute"_s, u"Order"_s},
                      .isUnique = true,
                      .isPrimary = true}};
    return table;
}

NewTable relationshipsTable() {
    using enum FieldType;
    NewTable table{.name = u"MSysRelationships"_s, .isSystem = true};
    table.columns = columns(ColumnRole::Catalog, {{u"szRelationship"_s, Text},
                                                  {u"grbit"_s, Long},
                                                  {u"ccolumn"_s, Long},
                                                  {u"icolumn"_s, Long},
                                                  {u"szObject"_s, Text},
                                                  {u"szColumn"_s, Text},
                                                  {u"szReferencedObject"_s, Text},
                                                  {u"szReferencedColumn"_s, Text}});
    for (const QString& name : {u"szRelationship"_s, u"szObject"_s, u"szReferencedObject"_s}) {
        table.indexes.append({.name = name, .columns = {name}, .ignoresNulls = true});
    }
    return table;
}

NewTable complexColumnsTable() {
    using enum FieldType;
    NewTable table{.name = u"MSysComplexColumns"_s};
    table.columns = columns(ColumnRole::Catalog, {{u"ColumnName"_s, Text},
                                                  {u"ComplexTypeObjectID"_s, Long},
                                                  {u"FlatTableID"_s, Long},
                                                  {u"ConceptualTableID"_s, Long},
                                                  {u"ComplexID"_s, Long}});
    table.columns[4].isAutoNumber = true;
    const auto addIndex = [&](const QString& name, const QString& column, bool isPrimary) {
        table.indexes.append({.name = name,
                              .columns = {column},
                              .isUnique = isPrimary,
                              .isPrimary = isPrimary,
                              .ignoresNulls = true,
                              .isRequired = true});
    };
    addIndex(u"IdxID"_s, u"ComplexID"_s, true);
    addIndex(u"IdxConceptualTableID"_s, u"ConceptualTableID"_s, false);
    addIndex(u"IdxFlatTableID"_s, u"FlatTableID"_s, false);
    return table;
}

NewTable attachmentsTable() {
    using enum FieldType;
    return {.name = u"MSysComplexType_Attachment"_s,
            .columns = columns(ColumnRole::Attachment, {{u"FileURL"_s, Memo},
                                                        {u"FileName"_s, Text},
                                                        {u"FileType"_s, Text},
                                                        {u"FileData"_s, Ole},
                                                        {u"FileTimeStamp"_s, Date},
                                                        {u"FileFlags"_s, Long}})};
}

}  // namespace

std::vector<NewTable> systemTables() {
    return {catalogTable(), rightsTable(), queriesTable(), relationshipsTable()};
}

std::vector<SystemObject> systemObjects() {
    using enum KnownUser;
    constexpr qint32 kContainers = 0x0F000000;  // which has no row itself
    constexpr qint32 kDatabases = 0x0F000002;
    constexpr qint32 kRelationships = 0x0F000003;
    constexpr qint32 kDatabase = 0x10000000;
    constexpr int kContainerType = 3;
    constexpr int kDatabaseType = 2;
    constexpr quint32 kSystem = 0x80000000;
    constexpr quint32 kCreates = 0xF00FE;
    const auto object = [](qint32 id, qint32 parent, const QString& name, int type,
                           KnownUser owner) {
        return NewObject{.id = id,
                         .parent = parent,
                         .name = name,
                         .type = type,
                         .flags = kSystem,
                         .owner = owner};
    };
    std::vector<SystemObject> objects{
        {object(kTablesContainer, kContainers, u"Tables"_s, kContainerType, Engine),
         {{Creator, kCreates, true}, {Admin, 0xFFEFF, true}, {Users, 0xFFEFF, true}}},
        {object(kDatabases, kContainers, u"Databases"_s, kContainerType, Engine),
         {{Admin, kAdministers}}},
        {object(kRelationships, kContainers, u"Relationships"_s, kContainerType, Engine),
         {{Creator, kCreates, true}, {Admin, kAdministers | 1}, {Users, 0xFFFFF, true}}},
        {object(kDatabase, kDatabases, u"MSysDb"_s, kDatabaseType, Admin),
         {{Admin, kAdministers | 0xE}, {Users, 0xE}}}};
    auto id = static_cast<qint32>(kCatalogPage);
    for (const NewTable& table : systemTables()) {
        objects.push_back({object(id++, kTablesContainer, table.name, kTableType, Engine),
                           {{Admin, kAdministers}, {Users, kReads}}});
    }
    // Users do not read the rights; the administrator may make others the owner of relationships.
    constexpr std::size_t kFirstTable = 4;
    objects[kFirstTable + 1].rights.pop_back();
    objects[kFirstTable + 3].rights.front().mask |= 0x80000;
    return objects;
}

std::vector<ComplexTable> complexTables() {
    using enum FieldType;
    constexpr quint32 kSystem = 0x80000000;
    constexpr quint32 kPattern = 0x80030000;
    std::vector<ComplexTable> tables{{complexColumnsTable(), kSystem}};
    for (const auto& [name, type] : {std::pair{u"UnsignedByte"_s, Byte},
                                     {u"Short"_s, Integer},
                                     {u"Long"_s, Long},
                                     {u"IEEESingle"_s, Single},
                                     {u"IEEEDouble"_s, Double},
                                     {u"GUID"_s, Guid},
                                     {u"Decimal"_s, Decimal},
                                     {u"Text"_s, Text}}) {
        tables.push_back({{.name = u"MSysComplexType_"_s + name,
                           .columns = {{.name = u"Value"_s, .type = type, .size = longest(type)}}},
                          kPattern});
    }
    tables.push_back({attachmentsTable(), kPattern});
    return tables;
}

}  // namespace varo::access
