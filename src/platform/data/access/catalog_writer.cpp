#include "platform/data/access/catalog_writer.h"

#include "platform/data/access/tree_index_keeper.h"

#include <QDateTime>

#include <map>

namespace varo::access {

namespace {

constexpr PageNumber kRightsPage = kCatalogPage + 1;
constexpr PageNumber kRelationshipsPage = kCatalogPage + 3;

/// Adds a row with these values, by the names of their columns, to a table of the Access program.
void addRow(PageFile& file, PageNumber page, const QString& name,
            const std::map<QString, Value>& values) {
    const TableDefinition table = readTable(file, page);
    TableRules rules;
    rules.columns.resize(table.columns.size());
    std::vector<FieldChange> fields(table.columns.size());
    for (const auto& [column, value] : values) {
        const int position = table.column(column);
        if (position < 0) {
            throwDamaged("a table of the Access program lacks a column");
        }
        fields[static_cast<std::size_t>(position)] = value;
    }
    TreeIndexKeeper indexes(file, table, name);
    TableWriter(file, table, rules, indexes).insert(fields);
}

qint64 withSign(quint32 bits) {
    return static_cast<qint32>(bits);
}

}  // namespace

CatalogWriter::CatalogWriter(PageFile& file) : file_(file) {}

QByteArray CatalogWriter::sid(KnownUser user) const {
    const auto known = [&] {
        switch (user) {
            case KnownUser::Users:
                return QByteArray("\x02\x01");
            case KnownUser::Engine:
                return QByteArray("\x02\x03");
            case KnownUser::Creator:
                return QByteArray("\x02\x04");
            default:
                return QByteArray("\x03\x01");
        }
    };
    return maskedSid(*file_.page(0, PageKind::Header), known());
}

void CatalogWriter::addObject(const NewObject& object) {
    const Value time =
        Text{QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toUtf8()};
    std::map<QString, Value> values{
        {QStringLiteral("Id"), qint64{object.id}},
        {QStringLiteral("ParentId"), qint64{object.parent}},
        {QStringLiteral("Name"), Text{object.name.toUtf8()}},
        {QStringLiteral("Type"), qint64{object.type}},
        {QStringLiteral("DateCreate"), time},
        {QStringLiteral("DateUpdate"), time},
        {QStringLiteral("Owner"), sid(object.owner)},
        {QStringLiteral("Flags"), withSign(object.flags)},
    };
    if (!object.properties.isEmpty()) {
        values.emplace(QStringLiteral("LvProp"), object.properties);
    }
    addRow(file_, kCatalogPage, QStringLiteral("MSysObjects"), values);
}

void CatalogWriter::addRight(qint32 object, KnownUser user, quint32 mask, bool isInherited) {
    addRow(file_, kRightsPage, QStringLiteral("MSysACEs"),
           {{QStringLiteral("ObjectId"), qint64{object}},
            {QStringLiteral("SID"), sid(user)},
            {QStringLiteral("ACM"), withSign(mask)},
            {QStringLiteral("FInheritable"), qint64{isInherited}}});
}

void CatalogWriter::addRelationship(const QString& name, const RelationshipSide& referencing,
                                    const RelationshipSide& referenced, quint32 flags) {
    const auto text = [](const QString& of) { return Text{of.toUtf8()}; };
    const std::vector<const Column*> from = referencing.columns();
    const std::vector<const Column*> to = referenced.columns();
    for (std::size_t i = 0; i < from.size(); ++i) {
        addRow(file_, kRelationshipsPage, QStringLiteral("MSysRelationships"),
               {{QStringLiteral("szRelationship"), text(name)},
                {QStringLiteral("grbit"), withSign(flags)},
                {QStringLiteral("ccolumn"), static_cast<qint64>(from.size())},
                {QStringLiteral("icolumn"), static_cast<qint64>(i)},
                {QStringLiteral("szObject"), text(referencing.table.name)},
                {QStringLiteral("szColumn"), text(from[i]->name)},
                {QStringLiteral("szReferencedObject"), text(referenced.table.name)},
                {QStringLiteral("szReferencedColumn"), text(to.at(i)->name)}});
    }
}

}  // namespace varo::access
