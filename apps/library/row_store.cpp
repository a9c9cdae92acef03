#include "library/row_store.h"

#include "library/picture_reader.h"

namespace varo {

namespace {

void storePicture(data::Connection& connection, qint32 formula, const QByteArray& bytes) {
    data::BlobField field =
        connection.field(QStringLiteral("Formula"), QStringLiteral("Pic"), formula);
    field.replace(bytes.size());
    field.appendChunk(std::span(bytes.constData(), static_cast<size_t>(bytes.size())));
}

/// What is stored as the identifier; of NULL the table makes its next one.
data::Argument identifier(qint32 id, Numbering numbering) {
    return numbering == Numbering::Next ? data::Argument(nullptr) : data::Argument(id);
}

qint32 storedIdentifier(const data::Connection& connection, qint32 id, Numbering numbering) {
    return numbering == Numbering::Next ? connection.lastInsertedId() : id;
}

}  // namespace

qint32 storeFolder(data::Connection& connection, const FolderRow& row, Numbering numbering) {
    connection.execute(QStringLiteral("insert into Tree(ID,Name,PID,OrderID) values(?,?,?,?)"),
                       {identifier(row.id, numbering), row.name, row.parent, row.order});
    return storedIdentifier(connection, row.id, numbering);
}

qint32 storeFormula(data::Connection& connection, const FormulaRow& row, Numbering numbering,
                    PictureReader& pictures) {
    connection.execute(
        QStringLiteral("insert into Formula(ID,Name,Formula,Memo,PicType,PID,OrderID) "
                       "values(?,?,?,?,?,?,?)"),
        {identifier(row.id, numbering), row.name, row.expression, row.memo, row.pictureType,
         row.folder, row.order});
    const qint32 id = storedIdentifier(connection, row.id, numbering);
    if (row.picture) {
        storePicture(connection, id, pictures.read(*row.picture));
    }
    return id;
}

void storeValues(data::Connection& connection, const std::vector<ValueRow>& rows) {
    for (const ValueRow& row : rows) {
        connection.execute(
            QStringLiteral("insert into RecentVar(VarName,FormulaID,[Value],VarSourceType,VarMemo) "
                           "values(?,?,?,?,?)"),
            {row.name, row.formula, row.value, row.source, row.memo});
    }
}

void storeConditions(data::Connection& connection, const LibraryRows& rows) {
    for (const PropertyRow& row : rows.properties) {
        connection.execute(
            QStringLiteral("insert into Property(PropID,PropName,FilterID,NodeID,NodeType) "
                           "values(?,?,?,?,?)"),
            {row.id, row.name, row.filter, row.node, row.nodeType});
    }
    for (const ConditionRow& row : rows.conditions) {
        connection.execute(
            QStringLiteral("insert into FilterCond(ID,UserID,ParentID,Type) values(?,?,?,?)"),
            {row.id, row.user, row.parent, row.type});
    }
    for (const ExpressionRow& row : rows.expressions) {
        connection.execute(
            QStringLiteral("insert into FilterExpressions(FilterID,ExpID,TableName,FieldName,"
                           "FieldType,CompareType,TheConst) values(?,?,?,?,?,?,?)"),
            {row.filter, row.id, row.table, row.field, row.fieldType, row.compare, row.constant});
    }
}

}  // namespace varo
