#pragma once

// Edits the rows of an Access table at random and compares them with a model.

#include "platform/data/access/long_value.h"
#include "platform/data/access/long_value_format.h"
#include "platform/data/access/stored_value.h"
#include "platform/data/access/table_writer.h"

#include <QProcess>

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace varo::access {

using Values = std::vector<Value>;

/// Equal for equal values of a column only.
inline QByteArray shown(const Value& value) {
    if (const auto* real = std::get_if<double>(&value)) {
        return QByteArray::number(*real, 'g', 17);
    }
    if (const auto* integer = std::get_if<qint64>(&value)) {
        return QByteArray::number(*integer);
    }
    if (const auto* text = std::get_if<Text>(&value)) {
        return '\'' + text->utf8;
    }
    const auto* bytes = std::get_if<QByteArray>(&value);
    return bytes == nullptr ? QByteArray("NULL") : 'x' + bytes->toHex();
}

inline QByteArray shown(const Values& values) {
    QByteArray all;
    for (const Value& value : values) {
        all += shown(value) + '|';
    }
    return all;
}

/// Rows by number.
using Model = std::map<qint64, Values>;

inline Model readAll(PageFile& file, const TableDefinition& table) {
    Model rows;
    RowScan scan(file, table);
    while (const auto found = scan.next()) {
        const Row row(file.layout(), table, found->page, found->bytes);
        Values& values = rows[rowNumber(scan.place())];
        for (const Column& column : table.columns) {
            values.push_back(fieldValue(file, row, column));
        }
    }
    return rows;
}

/// What mdb-export says of the columns of whole numbers, texts and bytes of a table, and the same
/// of the model; a record is sorted among the others.
inline std::multiset<QByteArray> exported(const QString& path, const QString& name,
                                          const TableDefinition& table,
                                          const std::vector<bool>& isTold) {
    QProcess process;
    process.start(
        QStringLiteral("mdb-export"),
        {QStringLiteral("-HQ"), QStringLiteral("-b"), QStringLiteral("hex"), QStringLiteral("-d"),
         QStringLiteral("\x01"), QStringLiteral("-R"), QStringLiteral("\x02"), path, name});
    process.waitForFinished();
    std::multiset<QByteArray> records;
    const QByteArrayList lines = process.readAllStandardOutput().split('\x02');
    for (const QByteArray& line : lines.mid(0, lines.size() - 1)) {
        const QByteArrayList fields = line.split('\x01');
        EXPECT_EQ(fields.size(), static_cast<qsizetype>(table.columns.size())) << line.constData();
        QByteArray record;
        for (qsizetype i = 0; i < fields.size(); ++i) {
            record += isTold.at(static_cast<std::size_t>(i)) ? fields[i] + '|' : QByteArray();
        }
        records.insert(record);
    }
    return records;
}

inline QByteArray asExported(const Value& value) {
    if (const auto* integer = std::get_if<qint64>(&value)) {
        return QByteArray::number(*integer);
    }
    if (const auto* text = std::get_if<Text>(&value)) {
        return text->utf8;
    }
    const auto* bytes = std::get_if<QByteArray>(&value);
    return bytes == nullptr ? QByteArray() : bytes->toHex().toUpper();
}

/// The beginning of the first record that only one of the two has.
inline std::string difference(const std::multiset<QByteArray>& left,
                              const std::multiset<QByteArray>& right) {
    std::vector<QByteArray> only;
    std::set_symmetric_difference(left.begin(), left.end(), right.begin(), right.end(),
                                  std::back_inserter(only));
    constexpr qsizetype kShown = 200;
    return only.empty() ? std::string() : only.front().left(kShown).toStdString();
}

/// That mdb-export finds the rows of the model in a table; not every type is compared.
inline void expectExported(const QString& path, const QString& name, const TableDefinition& table,
                           const Model& model) {
    std::vector<bool> isTold;
    for (const Column& column : table.columns) {
        const FieldType type = column.type;
        isTold.push_back(type == FieldType::Byte || type == FieldType::Integer ||
                         type == FieldType::Long || type == FieldType::Text ||
                         type == FieldType::Memo || type == FieldType::Ole);
    }
    std::multiset<QByteArray> expected;
    for (const auto& [number, values] : model) {
        QByteArray record;
        for (std::size_t i = 0; i < values.size(); ++i) {
            record += isTold[i] ? asExported(values[i]) + '|' : QByteArray();
        }
        expected.insert(record);
    }
    const auto told = exported(path, name, table, isTold);
    EXPECT_TRUE(told == expected) << name.toStdString() << ": of " << told.size()
                                  << " records one differs: " << difference(told, expected);
}

/// Indexes that are only counted; refuses the insertions that it is told to.
class CountingIndexes : public IndexKeeper {
  public:
    CountingIndexes(PageFile& file, const TableDefinition& table) : file_(file), table_(table) {}

    bool inserted(const Index& index, RowPlace place, const Row& row) override {
        if (isRefusing) {
            throw data::Error(QStringLiteral("refused"));
        }
        auto& places = entries[index.root][keyOf(index, row)];
        EXPECT_TRUE(places.insert(rowNumber(place)).second);
        return places.size() == 1;
    }

    bool removed(const Index& index, RowPlace place, const Row& row) override {
        auto& keys = entries[index.root];
        const QByteArray key = keyOf(index, row);
        EXPECT_EQ(keys[key].erase(rowNumber(place)), 1u);
        return keys[key].empty() && keys.erase(key) == 1;
    }

    void addAll() {
        RowScan scan(file_, table_);
        while (const auto found = scan.next()) {
            const Row row(file_.layout(), table_, found->page, found->bytes);
            for (const Index& index : table_.indexes) {
                entries[index.root][keyOf(index, row)].insert(rowNumber(scan.place()));
            }
        }
    }

    std::map<PageNumber, std::map<QByteArray, std::set<qint64>>> entries;
    bool isRefusing = false;

  private:
    QByteArray keyOf(const Index& index, const Row& row) {
        Values values;
        for (const IndexColumn& column : index.columns) {
            values.push_back(fieldValue(file_, row, *table_.columnByNumber(column.column)));
        }
        return shown(values);
    }

    PageFile& file_;
    const TableDefinition& table_;
};

/// Edits a table at random and keeps a model of it.
class Editor {
  public:
    Editor(PageFile& file, const TableDefinition& table, unsigned seed)
        : file_(file),
          table_(table),
          indexes_(file, table),
          random_(seed),
          model_(readAll(file, table)) {
        rules_.columns.resize(table.columns.size());
        indexes_.addAll();
        for (std::size_t i = 0; i < table.indexes.size(); ++i) {
            counts_.push_back(keyCount(i) - distinct(i));
        }
        leaked_ = pieces() - referredPieces();
        rowsMiscounted_ = rowCount() - static_cast<qint64>(model_.size());
    }

    /// Transactions, some of which are undone.
    void run(int transactions, int steps) {
        TableWriter writer(file_, table_, rules_, indexes_);
        for (int i = 0; i < transactions; ++i) {
            const Model before = model_;
            const auto entries = indexes_.entries;
            file_.begin();
            for (int step = 0; step < steps; ++step) {
                edit(writer, i % 4 == 3);
            }
            check();
            if (chance(4)) {
                file_.undo();
                model_ = before;
                indexes_.entries = entries;
                check();
            } else {
                file_.commit();
            }
        }
        check();
    }

    const Model& model() const { return model_; }

  private:
    unsigned upTo(unsigned most) { return static_cast<unsigned>(random_()) % (most + 1); }
    bool chance(unsigned of) { return upTo(of - 1) == 0; }

    QByteArray randomText(const Column& column) {
        const auto most =
            static_cast<unsigned>(column.type == FieldType::Text ? column.size / 2 : 40);
        const bool isHuge = column.type == FieldType::Memo && chance(6);
        const unsigned length = isHuge ? upTo(9000) : upTo(most);
        QString text;
        for (const bool isWide = chance(3); static_cast<unsigned>(text.size()) < length;) {
            text += isWide ? QChar(0x4E00 + upTo(5000)) : QChar(' ' + 1 + upTo(90));
        }
        return text.toUtf8();
    }

    bool isRequired(const Column& column) const {
        return std::any_of(table_.indexes.begin(), table_.indexes.end(), [&](const Index& index) {
            return index.isRequired && std::any_of(index.columns.begin(), index.columns.end(),
                                                   [&](const IndexColumn& each) {
                                                       return each.column == column.number;
                                                   });
        });
    }

    Value randomValue(const Column& column) {
        if (chance(8) && column.type != FieldType::YesNo && !isRequired(column)) {
            return {};
        }
        switch (column.type) {
            case FieldType::YesNo:
                return qint64{upTo(1)};
            case FieldType::Byte:
                return qint64{upTo(255)};
            case FieldType::Integer:
            case FieldType::Long:
                return qint64{upTo(60)} - 30;
            case FieldType::BigInteger:
                return static_cast<qint64>(random_()) << 31;
            case FieldType::Date:
                return Text{"2" + QByteArray::number(100 + upTo(800)) + "-02-" +
                            QByteArray::number(10 + upTo(18)) + " 0" + QByteArray::number(upTo(9)) +
                            ":00:59"};
            case FieldType::Guid:
                return Text{"{00000000-0000-0000-ABCD-" +
                            QByteArray::number(upTo(99)).rightJustified(12, '0') + '}'};
            case FieldType::Text:
            case FieldType::Memo:
                return Text{randomText(column)};
            case FieldType::Binary:
                return QByteArray(upTo(static_cast<unsigned>(column.size)), 'b');
            case FieldType::Ole: {
                constexpr unsigned kLengths[] = {10, 64, 300, 4076, 5000, 30000};
                return QByteArray(upTo(kLengths[upTo(5)]), static_cast<char>(upTo(255)));
            }
            default:
                return (upTo(8000) - 4000.0) / 4;
        }
    }

    /// A long value that was written before the row, in pieces of any length.
    LongField written(const Value& value, const Column& column) {
        const QByteArray bytes = *storedValue(value, column);
        LongValueWriter writer(file_, table_.longValuePagesOf(column), bytes.size());
        for (qsizetype at = 0; at < bytes.size();) {
            const qsizetype count = std::min<qsizetype>(1 + upTo(6000), bytes.size() - at);
            writer.append(Bytes(bytes).part(at, count));
            at += count;
        }
        return writer.finish();
    }

    bool isLong(const Column& column) const {
        return column.type == FieldType::Memo || column.type == FieldType::Ole;
    }

    /// Random fields; `values` becomes what the row then has.
    std::vector<FieldChange> randomChanges(Values& values, unsigned keptOneOf) {
        std::vector<FieldChange> changes;
        for (std::size_t i = 0; i < table_.columns.size(); ++i) {
            const Column& column = table_.columns[i];
            if (column.isAutoNumber || !chance(keptOneOf)) {
                changes.emplace_back(Kept());
                continue;
            }
            values[i] = randomValue(column);
            const bool isNull = std::holds_alternative<std::monostate>(values[i]);
            if (isLong(column) && !isNull && chance(3)) {
                changes.emplace_back(written(values[i], column));
            } else {
                changes.emplace_back(values[i]);
            }
        }
        return changes;
    }

    void insert(TableWriter& writer) {
        Values values(table_.columns.size());
        const auto changes = randomChanges(values, 1);
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (table_.columns[i].isAutoNumber) {
                values[i] =
                    qint64{Bytes(*file_.page(table_.page)).u32(file_.layout().autoNumber)} + 1;
            }
        }
        const RowPlace place = writer.insert(changes);
        ASSERT_TRUE(model_.emplace(rowNumber(place), values).second);
    }

    void edit(TableWriter& writer, bool isRemoving) {
        const int savepoint = file_.setSavepoint();
        const auto entries = indexes_.isRefusing ? indexes_.entries : decltype(indexes_.entries)();
        const auto row = model_.empty() ? model_.end()
                                        : std::next(model_.begin(),
                                                    upTo(static_cast<unsigned>(model_.size()) - 1));
        const unsigned what = upTo(9);
        if (row == model_.end() || what < (isRemoving ? 1 : 5)) {
            insert(writer);
        } else if (what < (isRemoving ? 3 : 8)) {
            Values values = row->second;
            writer.update(rowPlace(row->first), randomChanges(values, 4));
            row->second = values;
        } else {
            writer.remove(rowPlace(row->first));
            model_.erase(row);
        }
        file_.releaseSavepoint(savepoint);
        if (chance(10)) {
            refuseEdit(writer);
        }
    }

    /// An operation that the indexes refuse changes nothing.
    void refuseEdit(TableWriter& writer) {
        const auto entries = indexes_.entries;
        const int savepoint = file_.setSavepoint();
        const qint64 before = rowCount();
        indexes_.isRefusing = true;
        Values values(table_.columns.size());
        if (!table_.indexes.empty()) {
            EXPECT_THROW(writer.insert(randomChanges(values, 1)), data::Error);
        }
        indexes_.isRefusing = false;
        indexes_.entries = entries;
        EXPECT_EQ(rowCount(), before);
        EXPECT_EQ(readAll(file_, table_).size(), model_.size());
        file_.undoTo(savepoint);
        file_.releaseSavepoint(savepoint);
    }

    qint64 count(int at) { return Bytes(*file_.page(table_.page)).u32(at); }
    qint64 rowCount() { return count(file_.layout().tableRowCount); }
    qint64 keyCount(std::size_t index) {
        return count(file_.layout().realIndexes +
                     static_cast<int>(index) * file_.layout().realIndexEntry + 4);
    }
    qint64 distinct(std::size_t index) {
        return static_cast<qint64>(indexes_.entries[table_.indexes[index].root].size());
    }

    /// Rows on the pages of long values of the table.
    qint64 pieces() {
        qint64 number = 0;
        for (const LongValuePages& pages : table_.longValuePages) {
            for (const PageNumber each : markedPages(file_, pages.owned)) {
                const Page page = file_.page(each, PageKind::Data);
                EXPECT_EQ(ownerOf(Bytes(*page)), kLongValueOwner);
                for (int row = 0; row < access::rowCount(file_.layout(), Bytes(*page)); ++row) {
                    number += rowEntry(file_.layout(), Bytes(*page), row).isDeleted ? 0 : 1;
                }
            }
        }
        return number;
    }

    /// Those that the rows refer to.
    qint64 referredPieces() {
        qint64 number = 0;
        RowScan scan(file_, table_);
        while (const auto found = scan.next()) {
            const Row row(file_.layout(), table_, found->page, found->bytes);
            for (const Column& column : table_.columns) {
                const auto field = isLong(column) ? row.field(column) : std::nullopt;
                if (!field || (field->u32(0) & kLongInRow) != 0) {
                    continue;
                }
                number += (field->u32(0) & kLongInOnePiece) != 0
                              ? 1
                              : (longValueSize(*field) + 4071) / 4072;
            }
        }
        return number;
    }

    /// Empty pages are marked as having room, and each row that moved has one reference to it.
    void checkPages() {
        const auto withRoom = markedPages(file_, table_.pagesWithRoom);
        qint64 moved = 0;
        for (const PageNumber each : markedPages(file_, table_.ownedPages)) {
            QByteArray bytes = *file_.page(each);
            if (ownerOf(Bytes(bytes)) != table_.page) {
                continue;
            }
            if (RowPage(file_.layout(), bytes.data()).isEmpty()) {
                EXPECT_TRUE(std::binary_search(withRoom.begin(), withRoom.end(), each)) << each;
            }
            for (int row = 0; row < access::rowCount(file_.layout(), Bytes(bytes)); ++row) {
                const RowEntry entry = rowEntry(file_.layout(), Bytes(bytes), row);
                moved += entry.isDeleted ? (entry.hasMoved ? 0 : 1) : (entry.hasMoved ? -1 : 0);
            }
        }
        EXPECT_EQ(moved, 0);
    }

    void check() {
        Model found = readAll(file_, table_);
        ASSERT_EQ(found.size(), model_.size());
        for (auto left = found.begin(), right = model_.begin(); left != found.end();
             ++left, ++right) {
            ASSERT_EQ(left->first, right->first);
            ASSERT_EQ(shown(left->second), shown(right->second));
        }
        EXPECT_EQ(rowCount(), static_cast<qint64>(model_.size()) + rowsMiscounted_);
        for (std::size_t i = 0; i < counts_.size(); ++i) {
            EXPECT_EQ(keyCount(i), distinct(i) + counts_[i]) << i;
        }
        EXPECT_EQ(pieces() - referredPieces(), leaked_);
        checkPages();
    }

    PageFile& file_;
    const TableDefinition& table_;
    CountingIndexes indexes_;
    TableRules rules_;
    std::mt19937 random_;
    Model model_;
    std::vector<qint64> counts_;
    qint64 leaked_ = 0;
    qint64 rowsMiscounted_ = 0;
};

}  // namespace varo::access
