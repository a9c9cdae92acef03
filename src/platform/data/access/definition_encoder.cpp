#include "platform/data/access/definition_encoder.h"

#include "platform/data/access/definition_format.h"

#include <algorithm>

namespace varo::access {

namespace {

constexpr quint32 kMark = 0x659;       ///< of a definition, a column and the name of an index
constexpr quint32 kIndexMark = 0x783;  ///< of the tree of an index
constexpr quint32 kIncrement = 1;      ///< from one auto-number to the next
constexpr quint32 kNoIndex = 0xFFFFFFFF;
constexpr quint8 kNoAction = 4;  ///< what a relationship does when a row is changed or removed

constexpr quint8 kUserTable = 0x4E;
constexpr quint8 kUpdatable = 0x02;
constexpr quint8 kOfCatalog = 0x10;
constexpr quint8 kIsSid = 0x20;
constexpr quint8 kOfAttachment = 0x10;
constexpr quint8 kAlwaysSet = 0x80;  ///< in the flags of an index

/// A part of a definition, of zeros until it is filled in.
class Entry {
  public:
    explicit Entry(int length) : bytes_(length, '\0') {}

    template <class Number>
    void put(int at, Number number) {
        qToLittleEndian(number, bytes_.data() + at);
    }
    void put(int at, RowPlace place) { place.write(bytes_.data() + at); }

    const QByteArray& bytes() const { return bytes_; }

  private:
    QByteArray bytes_;
};

bool isText(const NewColumn& column) {
    return column.type == FieldType::Text || column.type == FieldType::Memo;
}

/// Writes the parts of a definition one after the other.
class DefinitionEncoder {
  public:
    DefinitionEncoder(const Header& header, const NewTable& table, const TablePlaces& places)
        : header_(header), layout_(header.layout()), table_(table), places_(places) {}

    QByteArray encode() {
        bytes_ = QByteArray(layout_.realIndexes + treeCount() * layout_.realIndexEntry, '\0');
        addColumns();
        for (int i = 0; i < treeCount(); ++i) {
            bytes_ += tree(table_.indexes[i], places_.trees[static_cast<std::size_t>(i)]);
        }
        addIndexNames();
        addLongValuePages();
        fillStart();
        return bytes_;
    }

  private:
    int treeCount() const { return static_cast<int>(table_.indexes.size()); }

    void fillStart() {
        Entry start(layout_.realIndexes);
        start.put(0, static_cast<quint8>(PageKind::Table));
        start.put(1, quint8{1});
        start.put(kDefinitionLength, static_cast<quint32>(bytes_.size()));
        start.put(kDefinitionMark, kMark);
        start.put(layout_.autoNumber + 4, kIncrement);
        start.put(layout_.tableType, table_.isSystem ? kSystemTable : kUserTable);
        start.put(layout_.columnCount - 4, static_cast<quint16>(table_.columns.size()));
        start.put(layout_.columnCount - 2, static_cast<quint16>(variableCount_));
        start.put(layout_.columnCount, static_cast<quint16>(table_.columns.size()));
        start.put(layout_.indexCount, static_cast<quint32>(treeCount()));
        start.put(layout_.indexCount + 4, static_cast<quint32>(treeCount()));
        start.put(layout_.ownedPages, places_.ownedPages);
        start.put(layout_.ownedPages + 4, places_.pagesWithRoom);
        bytes_.replace(0, start.bytes().size(), start.bytes());
    }

    /// Columns of users stand in their order, those of the program in the order of their names.
    void addColumns() {
        std::vector<std::pair<QString, QByteArray>> entries;
        for (int i = 0; i < table_.columns.size(); ++i) {
            entries.emplace_back(table_.columns[i].name, columnEntry(i));
        }
        if (table_.columns.front().role != ColumnRole::User) {
            std::sort(entries.begin(), entries.end(), [](const auto& left, const auto& right) {
                return left.first.compare(right.first, Qt::CaseInsensitive) < 0;
            });
        }
        for (const auto& [name, entry] : entries) {
            bytes_ += entry;
        }
        for (const auto& [name, entry] : entries) {
            bytes_ += nameEntry(name);
        }
    }

    QByteArray columnEntry(int number) {
        const NewColumn& column = table_.columns[number];
        const bool isOfUser = column.role == ColumnRole::User;
        Entry entry(layout_.columnEntry);
        entry.put(0, static_cast<quint8>(column.type));
        entry.put(1, kMark);
        entry.put(layout_.columnNumber, static_cast<quint16>(number));
        entry.put(layout_.columnVariable, static_cast<quint16>(variableCount_));
        entry.put(layout_.columnVariable + 2, static_cast<quint16>(isOfUser ? number : 0));
        if (column.type == FieldType::Decimal) {
            entry.put(layout_.columnPrecision, static_cast<quint8>(column.precision));
            entry.put(layout_.columnPrecision + 1, static_cast<quint8>(column.scale));
        } else {
            entry.put(layout_.columnPrecision, header_.sortOrder);
        }
        entry.put(layout_.columnPrecision + 3, header_.sortVersion);
        entry.put(layout_.columnFlags, columnFlags(column));
        quint8 more = isOfUser && isText(column) ? kCompressed : quint8{0};
        more |= column.role == ColumnRole::Attachment ? kOfAttachment : quint8{0};
        entry.put(layout_.columnMoreFlags, more);
        entry.put(layout_.columnSize, static_cast<quint16>(fieldSize(column)));
        if (!isFixed(column)) {
            ++variableCount_;
        } else if (column.type != FieldType::YesNo) {
            entry.put(layout_.columnFixed, static_cast<quint16>(fixedBytes_));
            fixedBytes_ += fieldSize(column);
        }
        return entry.bytes();
    }

    static quint8 columnFlags(const NewColumn& column) {
        int flags = kUpdatable | (isFixed(column) ? kFixedLength : 0);
        if (column.isAutoNumber) {
            flags |= column.type == FieldType::Guid ? kAutoGuid : kAutoNumber;
        }
        if (column.role == ColumnRole::Catalog || column.role == ColumnRole::Sid) {
            flags |= kOfCatalog | (column.role == ColumnRole::Sid ? kIsSid : 0);
        }
        return static_cast<quint8>(flags);
    }

    QByteArray tree(const NewIndex& index, const TablePlaces::Tree& tree) const {
        Entry entry(layout_.indexEntry);
        entry.put(0, kIndexMark);
        for (int i = 0; i < kIndexColumns; ++i) {
            const int at = layout_.indexColumns + i * 3;
            if (i < index.columns.size()) {
                entry.put(at, static_cast<quint16>(numberOf(index.columns[i].name)));
                entry.put(at + 2, index.columns[i].isDescending ? quint8{0} : kAscending);
            } else {
                entry.put(at, kNoColumn);
            }
        }
        entry.put(layout_.indexPages, tree.pages);
        entry.put(layout_.indexRoot, tree.root);
        entry.put(layout_.indexFlags,
                  static_cast<quint8>(kAlwaysSet | (index.isUnique ? kUnique : 0) |
                                      (index.ignoresNulls ? kIgnoresNulls : 0) |
                                      (index.isRequired ? kRequired : 0)));
        return entry.bytes();
    }

    int numberOf(const QString& name) const {
        const auto found = std::find_if(
            table_.columns.begin(), table_.columns.end(), [&](const NewColumn& column) {
                return name.compare(column.name, Qt::CaseInsensitive) == 0;
            });
        return static_cast<int>(found - table_.columns.begin());
    }

    /// The names stand in their order.
    void addIndexNames() {
        std::vector<int> order;
        for (int i = 0; i < treeCount(); ++i) {
            order.push_back(i);
        }
        std::sort(order.begin(), order.end(), [&](int left, int right) {
            return table_.indexes[left].name.compare(table_.indexes[right].name,
                                                     Qt::CaseInsensitive) < 0;
        });
        for (const int number : order) {
            Entry entry(layout_.indexNameEntry);
            entry.put(0, kMark);
            entry.put(layout_.indexNameNumber, static_cast<quint32>(number));
            entry.put(layout_.indexNameNumber + 4, static_cast<quint32>(number));
            entry.put(layout_.indexNameKind - 10, kNoIndex);
            entry.put(layout_.indexNameKind - 2, kNoAction);
            entry.put(layout_.indexNameKind - 1, kNoAction);
            entry.put(layout_.indexNameKind,
                      table_.indexes[number].isPrimary ? kPrimary : quint8{0});
            bytes_ += entry.bytes();
        }
        for (const int number : order) {
            bytes_ += nameEntry(table_.indexes[number].name);
        }
    }

    void addLongValuePages() {
        for (const LongValuePages& pages : places_.longValuePages) {
            Entry entry(10);
            entry.put(0, static_cast<quint16>(pages.column));
            entry.put(2, pages.owned);
            entry.put(6, pages.withRoom);
            bytes_ += entry.bytes();
        }
        Entry end(2);
        end.put(0, kNoColumn);
        bytes_ += end.bytes();
    }

    const Header& header_;
    const Layout& layout_;
    const NewTable& table_;
    const TablePlaces& places_;
    QByteArray bytes_;
    int variableCount_ = 0;
    int fixedBytes_ = 0;
};

}  // namespace

QByteArray foreignIndexEntry(const Layout& layout, const ForeignIndex& index) {
    Entry entry(layout.indexNameEntry);
    entry.put(0, kMark);
    entry.put(layout.indexNameNumber, index.number);
    entry.put(layout.indexNameNumber + 4, static_cast<quint32>(index.tree));
    entry.put(layout.indexOther, index.side);
    entry.put(layout.indexOther + 1, index.otherNumber);
    entry.put(layout.indexOther + 5, index.otherTable);
    entry.put(layout.indexNameKind - 2, index.onChange);
    entry.put(layout.indexNameKind - 1, index.onRemoval);
    entry.put(layout.indexNameKind, kForeign);
    return entry.bytes();
}

QByteArray nameEntry(const QString& name) {
    Entry entry(static_cast<int>(2 + name.size() * 2));
    entry.put(0, static_cast<quint16>(name.size() * 2));
    for (int i = 0; i < name.size(); ++i) {
        entry.put(2 + i * 2, name.at(i).unicode());
    }
    return entry.bytes();
}

std::vector<int> longValueColumns(const NewTable& table) {
    std::vector<int> numbers;
    for (int i = 0; i < table.columns.size(); ++i) {
        const FieldType type = table.columns[i].type;
        if (type == FieldType::Memo || type == FieldType::Ole) {
            numbers.push_back(i);
        }
    }
    return numbers;
}

QByteArray encodeDefinition(const Header& header, const NewTable& table,
                            const TablePlaces& places) {
    return DefinitionEncoder(header, table, places).encode();
}

}  // namespace varo::access
