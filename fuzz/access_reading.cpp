// What is read of a table, and how its rows and indexes fit together.

#include "access_work.h"
#include "platform/data/access/index_page.h"
#include "platform/data/access/index_scan.h"
#include "platform/data/access/index_tree.h"
#include "platform/data/access/long_value.h"
#include "platform/data/access/table_rules.h"

#include <QUtf8StringView>

using namespace varo::access;

namespace varo::fuzz {

namespace {

void checkValue(PageFile& file, const Row& row, const Column& column) {
    const Value value = fieldValue(file, row, column);
    if (const auto* text = std::get_if<Text>(&value)) {
        require(QUtf8StringView(text->utf8).isValidUtf8(), "a text is one");
    }
    const auto field = row.field(column);
    const auto* bytes = std::get_if<QByteArray>(&value);
    require(column.type != FieldType::Ole || column.isComputed || bytes == nullptr ||
                bytes->size() == longValueSize(*field),
            "a long value is as long as it says");
}

void checkRows(PageFile& file, const TableDefinition& table) {
    qint64 last = -1;
    RowScan scan(file, table);
    for (int rows = 0; rows < kMostRows; ++rows) {
        const auto found = scan.next();
        if (!found) {
            return;
        }
        require(rowNumber(scan.place()) > last, "rows come in the order of their numbers");
        last = rowNumber(scan.place());
        require(rowPlace(last).page == scan.place().page && rowPlace(last).row == scan.place().row,
                "a number is that of one row");
        const auto again = findRow(file, scan.place());
        require(again && again->bytes.data() == found->bytes.data() &&
                    again->bytes.size() == found->bytes.size(),
                "a row is found at its place");
        std::optional<Row> row;
        if (succeeds([&] { row.emplace(file.layout(), table, found->page, found->bytes); })) {
            for (const Column& column : table.columns) {
                succeeds([&] { checkValue(file, *row, column); });
            }
        }
    }
}

/// The tree, its entries, and these next to the rows. What the checks say nothing of is in order.
void checkIndexOf(PageFile& file, const TableDefinition& table, const Index& index) {
    const PageBudget budget(file, kMostPages);
    std::optional<QStringList> findings;
    succeeds([&] { findings = checkIndex(file, table, index); });
    const bool isSound = findings && findings->isEmpty();
    qint64 entries = 0;
    const bool isRead = succeeds([&] {
        QByteArray last;
        for (IndexScan scan(file, index.root, {}); scan.next(); ++entries) {
            const RowPlace place = scan.place();
            const QByteArray entry = indexEntry(scan.key(), place.page, place.row);
            require(!isSound || entry > last, "the entries of a sound index are in order");
            last = entry;
        }
    });
    require(!isSound || isRead || budget.isSpent(), "the entries of a sound index can be read");
    qint64 rows = 0;
    std::optional<QStringList> rowFindings;
    const bool areRead = succeeds([&] {
        rowFindings = checkIndexRows(file, table, index);
        for (RowScan scan(file, table); scan.next(); ++rows) {
        }
    });
    const bool isWhole = isRead && areRead && rowFindings->isEmpty();
    require(!isWhole || (index.ignoresNulls ? entries <= rows : entries == rows),
            "an index has an entry for each row");
}

}  // namespace

void readTableAt(PageFile& file, PageNumber page, std::uint8_t detail) {
    const TableDefinition table = readTable(file, page);
    if (detail % 2 != 0 && !table.indexes.empty()) {
        checkIndexOf(file, table, table.indexes[detail / 2 % table.indexes.size()]);
        return;
    }
    const PageBudget budget(file, kMostPages);
    succeeds([&] { checkRows(file, table); });
    succeeds([&] {
        const TableRules rules = readTableRules(file, table);
        require(!rules.refusal.isEmpty() || rules.columns.size() == table.columns.size(),
                "each column has rules");
    });
}

}  // namespace varo::fuzz
