#include "library/dump_complaints.h"
#include "library/filter_dump.h"
#include "library/library_text.h"
#include "library/sibling_order.h"
#include "library/toml_format.h"
#include "library/toml_writer.h"
#include "platform/data/connection.h"
#include "platform/data/json_array.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace varo {

namespace {

/// The numbers by which a folder or formula is found and ordered.
struct Placed {
    qint64 row = 0;
    qint32 id = 0;
    qint32 parent = 0;
    qint32 order = 0;
};

const auto kNotFoundAgain =
    QStringLiteral("it is left out, the table is damaged and finds it once only");

/// Rows by the number of what holds them. A list is taken out when it is written, so that every row
/// is written once, whatever the references look like.
template <class Row>
using RowsByOwner = std::map<qint32, QList<Row>>;

template <class Row>
QList<Row> takeRows(RowsByOwner<Row>& rows, qint32 owner) {
    auto node = rows.extract(owner);
    return node ? std::move(node.mapped()) : QList<Row>();
}

class Dump : private TomlWriter {
  public:
    Dump(data::Connection& connection, QIODevice& out) : TomlWriter(out), connection_(connection) {}

    /// Returns what has been left out.
    QStringList run() {
        line(QStringLiteral(
            "# A formula library; \"varo-library build\" makes a library file of it."));
        writeInfo();
        collect();
        writeContent(0);
        writeStrays();
        FilterDump(connection_, *this, complaints_).write();
        return complaints_.takeLines();
    }

  private:
    void collect() {
        folders_ = placedRows("Tree");
        formulas_ = placedRows("Formula");
        for (auto rs = connection_.query(
                 QStringLiteral("select rowid,FormulaID,VarSourceType from RecentVar "
                                "order by rowid"));
             !rs.atEnd(); rs.moveNext()) {
            if (const auto found = complaints_.numbers(rs, "RecentVar", {1, 2})) {
                values_[found->front()].append(rs.integer64(0));
            }
        }
    }

    RowsByOwner<Placed> placedRows(const char* table) {
        RowsByOwner<Placed> rows;
        QSet<qint32> ids;
        for (auto rs = connection_.query(QStringLiteral("select rowid,ID,PID,OrderID from %1 "
                                                        "order by rowid")
                                             .arg(QLatin1String(table)));
             !rs.atEnd(); rs.moveNext()) {
            const auto found = complaints_.numbers(rs, table, {1, 2, 3});
            if (!found) {
                continue;
            }
            const qint32 id = found->front();
            if (rs.isNull(1) || ids.contains(id)) {
                complaints_.add(
                    table, rs.integer64(0),
                    rs.isNull(1)
                        ? QStringLiteral("it is left out, it has no ID")
                        : QStringLiteral("it is left out, another row has the ID %1").arg(id));
                continue;
            }
            ids.insert(id);
            rows[(*found)[1]].append({rs.integer64(0), id, (*found)[1], (*found)[2]});
        }
        for (auto& [parent, siblings] : rows) {
            std::sort(siblings.begin(), siblings.end(), [](const Placed& a, const Placed& b) {
                return std::tie(a.order, a.id) < std::tie(b.order, b.id);
            });
        }
        return rows;
    }

    /// The formulas in the folder `top`, then its folders with all that they hold, depth first.
    void writeContent(qint32 top) {
        writeFormulasOf(top);
        QList<Placed> waiting;
        const auto enqueue = [&](qint32 folder) {
            QList<Placed> children = takeRows(folders_, folder);
            std::reverse(children.begin(), children.end());
            waiting += children;
        };
        for (enqueue(top); !waiting.isEmpty();) {
            const Placed folder = waiting.takeLast();
            writeFolder(folder);
            writeFormulasOf(folder.id);
            enqueue(folder.id);
        }
    }

    /// What cannot be reached from the top: folders and formulas of missing folders, folders inside
    /// themselves, values of no formula or of a missing one.
    void writeStrays() {
        QSet<qint32> existing;
        for (const auto& [parent, siblings] : folders_) {
            for (const Placed& folder : siblings) {
                existing.insert(folder.id);
            }
        }
        QList<qint32> missing;
        for (const auto& [parent, siblings] : folders_) {
            if (!existing.contains(parent)) {
                missing.append(parent);
            }
        }
        for (const qint32 parent : missing) {
            writeContent(parent);
        }
        while (!folders_.empty()) {
            writeContent(folders_.begin()->first);
        }
        while (!formulas_.empty()) {
            writeFormulasOf(formulas_.begin()->first);
        }
        while (!values_.empty()) {
            const qint32 formula = values_.begin()->first;
            writeValues(takeRows(values_, formula), formula);
        }
    }

    void writeFolder(const Placed& folder) {
        const auto rs = connection_.query(QStringLiteral("select Name from Tree where rowid = ?"),
                                          {folder.row});
        if (rs.atEnd()) {
            complaints_.add("Tree", folder.row, kNotFoundAgain);
            return;
        }
        begin("folder");
        number("id", folder.id);
        text("name", rs.text(0));
        numberUnless("parent", folder.parent, 0);
        writeOrder(folder, folderOrder_);
    }

    void writeFormulasOf(qint32 folder) {
        for (const Placed& formula : takeRows(formulas_, folder)) {
            writeFormula(formula);
        }
    }

    void writeFormula(const Placed& formula) {
        const auto rs = connection_.query(
            QStringLiteral("select rowid,Name,Formula,Memo,PicType from Formula where rowid = ?"),
            {formula.row});
        if (rs.atEnd()) {
            complaints_.add("Formula", formula.row, kNotFoundAgain);
            return;
        }
        begin("formula");
        number("id", formula.id);
        text("name", rs.text(1));
        numberUnless("folder", formula.parent, 0);
        writeOrder(formula, formulaOrder_);
        text("expression", rs.text(2));
        if (const QString memo = rs.text(3); !memo.isEmpty()) {
            paragraph("memo", memo);
        }
        const QList<qint64> others = writeInlineValues(formula.id);
        auto picture = pictureOf(formula);
        const auto pictureType = wholeNumber(rs, 4);
        if (!pictureType) {
            complaints_.add(
                "Formula", formula.row,
                QStringLiteral("PicType is left out, it is no whole number of 32 bits"));
        }
        numberUnless("picture_type", pictureType.value_or(picture ? 2 : 0), picture ? 2 : 0);
        if (picture) {
            TomlWriter::picture("picture", *picture);
        }
        writeValues(others, formula.id);
    }

    void writeOrder(const Placed& placed, SiblingOrder& siblings) {
        if (siblings.next(placed.parent) != placed.order) {
            number("order", placed.order);
        }
        siblings.note(placed.parent, placed.order);
    }

    /// The formula's picture; nothing when it has none, or, with a complaint, no bytes.
    std::optional<data::BlobField> pictureOf(const Placed& formula) {
        try {
            data::BlobField field =
                connection_.field(QStringLiteral("Formula"), QStringLiteral("Pic"), formula.id);
            return field.size() == 0 ? std::nullopt : std::optional(std::move(field));
        } catch (const data::Error& error) {
            complaints_.add(
                "Formula", formula.row,
                QStringLiteral("Pic is left out, it cannot be read: ") + error.description());
            return std::nullopt;
        }
    }

    /// Hands rows of values to `take`, in their order: rowid, VarName, Value, VarSourceType,
    /// VarMemo.
    template <class Take>
    void forValues(const QList<qint64>& rows, Take take) {
        QSet<qint64> missing(rows.begin(), rows.end());
        for (auto rs = connection_.query(
                 QStringLiteral("select rowid,VarName,[Value],VarSourceType,VarMemo from RecentVar "
                                "where rowid in (select value from json_each(?)) order by rowid"),
                 {data::jsonArray(rows)});
             !rs.atEnd(); rs.moveNext()) {
            missing.remove(rs.integer64(0));
            take(rs);
        }
        for (const qint64 row : missing) {
            if (!lostValues_.contains(row)) {
                lostValues_.insert(row);
                complaints_.add("RecentVar", row, kNotFoundAgain);
            }
        }
    }

    /// Writes the formula's typed values and returns the others. Of a name that the formula has
    /// twice the first row counts, so these keep their order among the others.
    QList<qint64> writeInlineValues(qint32 formula) {
        const QList<qint64> values = takeRows(values_, formula);
        QList<qint64> others;
        if (values.isEmpty()) {
            return others;
        }
        QHash<QString, int> uses;
        forValues(values, [&](const data::Recordset& rs) { ++uses[rs.text(1).toCaseFolded()]; });
        QString before = QStringLiteral("values = { ");
        forValues(values, [&](const data::Recordset& rs) {
            const QString name = rs.text(1);
            if (rs.integer(3) != 0 || !rs.text(4).isEmpty() ||
                uses.value(name.toCaseFolded()) != 1) {
                others.append(rs.integer64(0));
                return;
            }
            write(before + tomlKey(name) + QStringLiteral(" = "));
            string(rs.text(2));
            before = QStringLiteral(", ");
        });
        if (before == u", ") {
            line(QStringLiteral(" }"));
        }
        return others;
    }

    void writeValues(const QList<qint64>& rows, qint32 formula) {
        if (rows.isEmpty()) {
            return;
        }
        forValues(rows, [&](const data::Recordset& rs) {
            begin("value");
            text("name", rs.text(1));
            numberUnless("formula", formula, 0);
            text("value", rs.text(2));
            numberUnless("source", rs.integer(3), 0);
            textUnlessEmpty("memo", rs.text(4));
        });
    }

    void writeInfo() {
        for (auto rs = connection_.query(
                 QStringLiteral("select PrptyName,PrptyVal from TableInfo order by rowid"));
             !rs.atEnd(); rs.moveNext()) {
            begin("info");
            text("name", rs.text(0));
            textUnlessEmpty("value", rs.text(1));
        }
    }

    data::Connection& connection_;
    RowsByOwner<Placed> folders_;
    RowsByOwner<Placed> formulas_;
    RowsByOwner<qint64> values_;  ///< rowids
    SiblingOrder folderOrder_;
    SiblingOrder formulaOrder_;
    DumpComplaints complaints_;
    QSet<qint64> lostValues_;  ///< rows that have been complained of
};

}  // namespace

QStringList dumpLibrary(const QString& libraryPath, QIODevice& out) {
    data::Connection connection;
    connection.open(libraryPath, data::Access::Read);
    const data::ReadSnapshot snapshot(connection);
    return Dump(connection, out).run();
}

}  // namespace varo
