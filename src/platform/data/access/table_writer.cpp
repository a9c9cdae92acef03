#include "platform/data/access/table_writer.h"

#include "platform/data/access/column_default.h"
#include "platform/data/access/long_value.h"
#include "platform/data/access/step.h"
#include "platform/data/access/stored_value.h"

#include <QRandomGenerator>
#include <QUuid>

#include <algorithm>
#include <limits>

namespace varo::access {

namespace {

constexpr std::size_t kMostPlaces = 16;  ///< of a row that moved again and again
constexpr int kPlaceBytes = 4;
constexpr int kKeyCount = 4;  ///< within what a definition begins with for each index

[[noreturn]] void refuse(const Column& column, const QString& reason) {
    throw data::Error(QStringLiteral("column %1: %2").arg(column.name, reason));
}

bool isLong(const Column& column) {
    return column.type == FieldType::Memo || column.type == FieldType::Ole;
}

bool isKept(const FieldChange& change) {
    return std::holds_alternative<Kept>(change);
}

Row rowOf(const Layout& layout, const TableDefinition& table, const QByteArray& bytes) {
    const auto page = std::make_shared<const QByteArray>(bytes);
    return {layout, table, page, Bytes(*page)};
}

Fields fieldsOf(const TableDefinition& table, const Row& row) {
    Fields fields;
    for (const Column& column : table.columns) {
        if (column.type == FieldType::YesNo && !column.isComputed) {
            fields.push_back(row.isYes(column) ? std::optional(QByteArray()) : std::nullopt);
        } else {
            const auto field = row.field(column);
            fields.push_back(field ? std::optional(field->toByteArray()) : std::nullopt);
        }
    }
    return fields;
}

/// Whether one of the index's columns has another field in `after` than in `before`.
bool isConcerned(const TableDefinition& table, const Index& index, const Fields& before,
                 const Fields& after) {
    return std::any_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& column) {
        const int position = table.positionOf(column.column);
        return position >= 0 && before[static_cast<std::size_t>(position)] !=
                                    after[static_cast<std::size_t>(position)];
    });
}

FoundRow requireRow(PageFile& file, RowPlace place) {
    auto found = findRow(file, place);
    if (!found) {
        throw data::Error(QStringLiteral("the row was removed"));
    }
    return *found;
}

QByteArray bytesOf(RowPlace place) {
    QByteArray bytes(kPlaceBytes, '\0');
    place.write(bytes.data());
    return bytes;
}

}  // namespace

TableWriter::TableWriter(PageFile& file, const TableDefinition& table, const TableRules& rules,
                         IndexKeeper& indexes, RowFollower* follower)
    : file_(file),
      table_(table),
      rules_(rules),
      indexes_(indexes),
      follower_(follower),
      pages_(file, table.page, table.ownedPages, table.pagesWithRoom) {
    const Layout& layout = file.layout();
    if (!rules.refusal.isEmpty()) {
        throw data::Error(rules.refusal);
    }
    if (static_cast<qsizetype>(table.indexes.size()) * layout.realIndexEntry >
        layout.pageSize - layout.realIndexes) {
        throwDamaged("a table has more indexes than there can be");
    }
}

/// What the row is to hold for a change that is not Kept. Long values are written later.
std::optional<QByteArray> TableWriter::newField(const FieldChange& change, std::size_t column) {
    const Column& of = table_.columns[column];
    if (of.isComputed || of.type == FieldType::Complex) {
        refuse(of, QStringLiteral("fields of this column are not written"));
    }
    const auto* value = std::get_if<Value>(&change);
    if (value == nullptr) {
        if (!isLong(of)) {
            refuse(of, QStringLiteral("the column has no long values"));
        }
        const QByteArray& field = std::get<LongField>(change).bytes;
        requireAllowed(longValueSize(Bytes(field)) == 0 ? QByteArray() : field, column);
        return field;
    }
    auto field = storedValue(*value, of);
    if (of.isAutoNumber) {
        fillAutoNumber(field, of);
    }
    requireAllowed(field, column);
    return field;
}

void TableWriter::requireAllowed(const std::optional<QByteArray>& field, std::size_t column) const {
    const Column& of = table_.columns[column];
    const bool isText = of.type == FieldType::Text || of.type == FieldType::Memo;
    if (rules_.columns[column].isRequired && !field && of.type != FieldType::YesNo) {
        refuse(of, QStringLiteral("a value is required"));
    }
    if (!rules_.columns[column].allowsEmpty && isText && field && field->isEmpty()) {
        refuse(of, QStringLiteral("an empty text is not allowed"));
    }
}

void TableWriter::requireIndexed(const Fields& fields) const {
    for (const Index& index : table_.indexes) {
        for (const IndexColumn& column : index.columns) {
            const int position = index.isRequired ? table_.positionOf(column.column) : -1;
            if (position >= 0 && !fields[static_cast<std::size_t>(position)] &&
                table_.columns[static_cast<std::size_t>(position)].type != FieldType::YesNo) {
                refuse(table_.columns[static_cast<std::size_t>(position)],
                       QStringLiteral("the index %1 requires a value").arg(index.names.value(0)));
            }
        }
    }
}

/// Takes the next number for a field that is NULL; remembers a greater one that was given.
void TableWriter::fillAutoNumber(std::optional<QByteArray>& field, const Column& column) {
    if (column.type == FieldType::Guid) {
        if (!field) {
            const Value guid = Text{QUuid::createUuid().toByteArray()};
            field = storedValue(guid, column);
        }
        return;
    }
    const int at = file_.layout().autoNumber;
    const auto last = static_cast<qint32>(Bytes(*file_.page(table_.page)).u32(at));
    qint32 number = 0;
    if (field) {
        number = static_cast<qint32>(Bytes(*field).u32(0));
    } else if (rules_.hasRandomNumbers) {
        number = static_cast<qint32>(QRandomGenerator::global()->generate());
        field = storedValue(Value(qint64{number}), column);
    } else if (last == std::numeric_limits<qint32>::max()) {
        refuse(column, QStringLiteral("there are no more auto-numbers"));
    } else {
        number = last + 1;
        field = storedValue(Value(qint64{number}), column);
    }
    if (number > last && !rules_.hasRandomNumbers) {
        qToLittleEndian(number, file_.change(table_.page) + at);
    }
}

QByteArray TableWriter::writeLongValue(const QByteArray& value, const Column& column) {
    LongValueWriter writer(file_, table_.longValuePagesOf(column), value.size());
    writer.append(Bytes(value));
    return writer.finish().bytes;
}

/// The fields of a new row: NULL where nothing is said, and the columns' defaults for NULL.
std::vector<FieldChange> TableWriter::withDefaults(std::vector<FieldChange> changes) const {
    for (std::size_t i = 0; i < table_.columns.size(); ++i) {
        const Column& column = table_.columns[i];
        const QString& expression = rules_.columns[i].defaultExpression;
        if (isKept(changes.at(i))) {
            changes[i] = Value();
        }
        const auto* value = std::get_if<Value>(&changes[i]);
        if (expression.isEmpty() || column.isAutoNumber || column.isComputed || value == nullptr ||
            !std::holds_alternative<std::monostate>(*value)) {
            continue;
        }
        const auto found = defaultValue(expression, column);
        if (!found) {
            refuse(column,
                   QStringLiteral("only the Access program can calculate its default value"));
        }
        changes[i] = *found;
    }
    return changes;
}

RowPlace TableWriter::insert(const std::vector<FieldChange>& given) {
    Step step(file_);
    const std::vector<FieldChange> changes = withDefaults(given);
    Fields fields(table_.columns.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        fields[i] = newField(changes[i], i);
    }
    requireIndexed(fields);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (isLong(table_.columns[i]) && fields[i] && std::holds_alternative<Value>(changes[i])) {
            fields[i] = writeLongValue(*fields[i], table_.columns[i]);
        }
    }
    const QByteArray bytes = encodeRow(table_, fields);
    const RowPlace place = pages_.add(Bytes(bytes));
    const Row row = rowOf(file_.layout(), table_, bytes);
    for (std::size_t i = 0; i < table_.indexes.size(); ++i) {
        insertEntry(i, place, row);
    }
    addToCount(file_.layout().tableRowCount, 1);
    if (follower_ != nullptr) {
        follower_->inserted(row);
    }
    step.keep();
    return place;
}

void TableWriter::update(RowPlace place, const std::vector<FieldChange>& changes) {
    Step step(file_);
    const FoundRow found = requireRow(file_, place);
    const Row before(file_.layout(), table_, found.page, found.bytes);
    const Fields old = fieldsOf(table_, before);
    Fields fields = old;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (table_.columns[i].isComputed) {
            refuse(table_.columns[i], QStringLiteral("only the Access program can calculate it"));
        }
        if (!isKept(changes.at(i))) {
            fields[i] = newField(changes[i], i);
        }
    }
    requireIndexed(fields);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = table_.columns[i];
        if (!isLong(column) || isKept(changes[i])) {
            continue;
        }
        if (fields[i] && std::holds_alternative<Value>(changes[i])) {
            fields[i] = writeLongValue(*fields[i], column);
        }
    }
    const QByteArray bytes = encodeRow(table_, fields);
    replaceRow(place, bytes);
    const Row after = rowOf(file_.layout(), table_, bytes);
    std::vector<std::size_t> concerned;
    for (std::size_t i = 0; i < table_.indexes.size(); ++i) {
        if (isConcerned(table_, table_.indexes[i], old, fields)) {
            concerned.push_back(i);
            removeEntry(i, place, before);
        }
    }
    // Not before, since a memo can be in an index.
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = table_.columns[i];
        if (isLong(column) && !isKept(changes[i]) && old[i]) {
            freeLongValue(file_, table_.longValuePagesOf(column), Bytes(*old[i]));
        }
    }
    for (const std::size_t index : concerned) {
        insertEntry(index, place, after);
    }
    if (follower_ != nullptr) {
        follower_->changed(before, after);
    }
    step.keep();
}

void TableWriter::remove(RowPlace place) {
    Step step(file_);
    const FoundRow found = requireRow(file_, place);
    const Row row(file_.layout(), table_, found.page, found.bytes);
    for (std::size_t i = 0; i < table_.indexes.size(); ++i) {
        removeEntry(i, place, row);
    }
    for (const Column& column : table_.columns) {
        const auto field = row.field(column);
        if (field && column.type == FieldType::Complex) {
            refuse(column,
                   QStringLiteral("rows with attachments or several values are not removed"));
        }
        if (field && isLong(column)) {
            freeLongValue(file_, table_.longValuePagesOf(column), *field);
        }
    }
    for (const RowPlace each : placesOf(place)) {
        pages_.remove(each);
    }
    addToCount(file_.layout().tableRowCount, -1);
    if (follower_ != nullptr) {
        follower_->removed(row);
    }
    step.keep();
}

/// The places of a row: the first one, those to which it refers, the last of which has the row.
std::vector<RowPlace> TableWriter::placesOf(RowPlace place) {
    std::vector<RowPlace> places{place};
    for (;;) {
        const Page page = file_.page(places.back().page, PageKind::Data);
        const RowEntry entry = rowEntry(file_.layout(), Bytes(*page), places.back().row);
        if (!entry.hasMoved) {
            return places;
        }
        if (places.size() == kMostPlaces) {
            throwDamaged("a row refers to others without end");
        }
        places.push_back(RowPlace::read(Bytes(*page), entry.begin));
    }
}

/// Puts the row where it was if that page has room, else at its first place, else elsewhere with a
/// reference to it at the first place.
void TableWriter::replaceRow(RowPlace place, const QByteArray& bytes) {
    std::vector<RowPlace> places = placesOf(place);
    using Kind = RowPage::Kind;
    const Bytes content(bytes);
    if (pages_.replace(places.back(), content, places.size() == 1 ? Kind::Row : Kind::MovedHere)) {
        return;
    }
    for (; places.size() > 1; places.pop_back()) {
        pages_.remove(places.back());
    }
    if (pages_.replace(place, content, Kind::Row)) {
        return;
    }
    const QByteArray reference = bytesOf(pages_.add(content, Kind::MovedHere));
    if (!pages_.replace(place, Bytes(reference), Kind::Reference)) {
        throw data::Error(QStringLiteral("the page of the row has no room to refer to it"));
    }
}

void TableWriter::insertEntry(std::size_t index, RowPlace place, const Row& row) {
    if (indexes_.inserted(table_.indexes[index], place, row)) {
        addToCount(keyCount(index), 1);
    }
}

void TableWriter::removeEntry(std::size_t index, RowPlace place, const Row& row) {
    if (indexes_.removed(table_.indexes[index], place, row)) {
        addToCount(keyCount(index), -1);
    }
}

/// Where the table's definition counts the different keys of an index.
int TableWriter::keyCount(std::size_t index) const {
    const Layout& layout = file_.layout();
    return layout.realIndexes + static_cast<int>(index) * layout.realIndexEntry + kKeyCount;
}

/// Changes a count in the table's definition. One that is already too small stays 0.
void TableWriter::addToCount(int at, int change) {
    char* count = file_.change(table_.page) + at;
    const qint64 number = qint64{qFromLittleEndian<quint32>(count)} + change;
    qToLittleEndian(static_cast<quint32>(std::max<qint64>(number, 0)), count);
}

}  // namespace varo::access
