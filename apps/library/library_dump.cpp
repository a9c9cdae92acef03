#include "library/condition_lines.h"
#include "library/library_text.h"
#include "library/sibling_order.h"
#include "library/text_error.h"
#include "library/toml_format.h"
#include "platform/data/connection.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <algorithm>
#include <map>
#include <tuple>

namespace varo {

namespace {

/// The numbers by which a folder or formula is found and ordered.
struct Placed {
    qint32 id = 0;
    qint32 parent = 0;
    qint32 order = 0;
};

struct StoredValue {
    QString name;
    QString value;
    qint32 source = 0;
    QString memo;

    bool isPlain() const { return source == 0 && memo.isEmpty(); }
};

/// Rows by the number of what holds them. A list is taken out when it is written, so that every row
/// is written once, whatever the references look like.
template <class Row>
using RowsByOwner = std::map<qint32, QList<Row>>;

template <class Row>
QList<Row> takeRows(RowsByOwner<Row>& rows, qint32 owner) {
    auto node = rows.extract(owner);
    return node ? std::move(node.mapped()) : QList<Row>();
}

class Dump {
  public:
    Dump(data::Connection& connection, QIODevice& out) : connection_(connection), out_(out) {}

    void write() {
        line(QStringLiteral(
            "# A formula library; \"varo-library build\" makes a library file of it."));
        writeInfo();
        collect();
        writeContent(0);
        writeStrays();
        writeProperties();
        writeConditions();
        writeExpressions();
    }

  private:
    void collect() {
        folders_ = placedRows(QStringLiteral("select ID,PID,OrderID from Tree"));
        formulas_ = placedRows(QStringLiteral("select ID,PID,OrderID from Formula"));
        for (auto rs = connection_.query(
                 QStringLiteral("select FormulaID,VarName,[Value],VarSourceType,VarMemo "
                                "from RecentVar order by rowid"));
             !rs.atEnd(); rs.moveNext()) {
            values_[rs.integer(0)].append({rs.text(1), rs.text(2), rs.integer(3), rs.text(4)});
        }
    }

    RowsByOwner<Placed> placedRows(const QString& statement) {
        RowsByOwner<Placed> rows;
        for (auto rs = connection_.query(statement); !rs.atEnd(); rs.moveNext()) {
            rows[rs.integer(1)].append({rs.integer(0), rs.integer(1), rs.integer(2)});
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
            for (const StoredValue& value : takeRows(values_, formula)) {
                writeValue(value, formula);
            }
        }
    }

    void writeFolder(const Placed& folder) {
        const auto rs =
            connection_.query(QStringLiteral("select Name from Tree where ID = ?"), {folder.id});
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
            QStringLiteral("select Name,Formula,Memo,PicType from Formula where ID = ?"),
            {formula.id});
        begin("formula");
        number("id", formula.id);
        text("name", rs.text(0));
        numberUnless("folder", formula.parent, 0);
        writeOrder(formula, formulaOrder_);
        text("expression", rs.text(1));
        if (const QString memo = rs.text(2); !memo.isEmpty()) {
            line(QStringLiteral("memo = ") + tomlParagraph(memo));
        }
        const QList<StoredValue> others = writeInlineValues(formula.id);
        const QByteArray picture = pictureOf(formula.id);
        numberUnless("picture_type", rs.integer(3), picture.isEmpty() ? 0 : 2);
        if (!picture.isEmpty()) {
            line(QStringLiteral("picture = { base64 = ") + tomlBase64(picture) +
                 QStringLiteral(" }"));
        }
        for (const StoredValue& value : others) {
            writeValue(value, formula.id);
        }
    }

    void writeOrder(const Placed& placed, SiblingOrder& siblings) {
        if (siblings.next(placed.parent) != placed.order) {
            number("order", placed.order);
        }
        siblings.note(placed.parent, placed.order);
    }

    QByteArray pictureOf(qint32 formula) {
        data::BlobField field =
            connection_.field(QStringLiteral("Formula"), QStringLiteral("Pic"), formula);
        QByteArray bytes(field.size(), Qt::Uninitialized);
        if (!bytes.isEmpty()) {
            field.getChunk(std::span(bytes.data(), static_cast<size_t>(bytes.size())));
        }
        return bytes;
    }

    /// Writes the formula's typed values and returns the others. Of a name that the formula has
    /// twice the first row counts, so these keep their order among the others.
    QList<StoredValue> writeInlineValues(qint32 formula) {
        const QList<StoredValue> values = takeRows(values_, formula);
        QHash<QString, int> uses;
        for (const StoredValue& value : values) {
            ++uses[value.name.toCaseFolded()];
        }
        QStringList pairs;
        QList<StoredValue> others;
        for (const StoredValue& value : values) {
            if (value.isPlain() && uses.value(value.name.toCaseFolded()) == 1) {
                pairs.append(tomlKey(value.name) + QStringLiteral(" = ") + tomlString(value.value));
            } else {
                others.append(value);
            }
        }
        if (!pairs.isEmpty()) {
            line(QStringLiteral("values = { ") + pairs.join(QStringLiteral(", ")) +
                 QStringLiteral(" }"));
        }
        return others;
    }

    void writeValue(const StoredValue& value, qint32 formula) {
        begin("value");
        text("name", value.name);
        numberUnless("formula", formula, 0);
        text("value", value.value);
        numberUnless("source", value.source, 0);
        textUnlessEmpty("memo", value.memo);
    }

    /// The condition of a filter stands with the first property that has it, where one line tells
    /// it.
    void writeProperties() {
        lines_ = conditionLines(connection_);
        qint32 lastId = lastIdGivenAsRows();
        QSet<qint32> written;
        for (auto rs = connection_.query(QStringLiteral(
                 "select PropID,PropName,FilterID,NodeID,NodeType from Property order by rowid"));
             !rs.atEnd(); rs.moveNext()) {
            begin("property");
            number("id", rs.integer(0));
            text("name", rs.text(1));
            numberUnless("filter", rs.integer(2), 0);
            number("node", rs.integer(3));
            number("node_type", rs.integer(4));
            const auto condition = lines_.find(rs.integer(2));
            if (condition != lines_.end() && !written.contains(condition->first)) {
                written.insert(condition->first);
                lastId = writeCondition(condition->second, lastId);
            }
        }
    }

    /// Returns the largest identifier of a condition written so far.
    qint32 writeCondition(const ConditionLine& condition, qint32 lastId) {
        text("condition", condition.text);
        if (qint64{condition.firstId} != qint64{lastId} + 1) {
            number("condition_id", condition.firstId);
        }
        return std::max(lastId, condition.lastId);
    }

    qint32 lastIdGivenAsRows() {
        qint32 last = 0;
        for (auto rs = connection_.query(
                 QStringLiteral("select UserID,ID from FilterCond union select FilterID,ExpID "
                                "from FilterExpressions"));
             !rs.atEnd(); rs.moveNext()) {
            last = lines_.contains(rs.integer(0)) ? last : std::max(last, rs.integer(1));
        }
        return last;
    }

    void writeConditions() {
        for (auto rs = connection_.query(
                 QStringLiteral("select ID,UserID,ParentID,Type from FilterCond order by rowid"));
             !rs.atEnd(); rs.moveNext()) {
            if (lines_.contains(rs.integer(1))) {
                continue;
            }
            begin("condition");
            number("id", rs.integer(0));
            number("user", rs.integer(1));
            numberUnless("parent", rs.integer(2), 0);
            number("type", rs.integer(3));
        }
    }

    void writeExpressions() {
        for (auto rs = connection_.query(
                 QStringLiteral("select FilterID,ExpID,TableName,FieldName,FieldType,CompareType,"
                                "TheConst from FilterExpressions order by rowid"));
             !rs.atEnd(); rs.moveNext()) {
            if (lines_.contains(rs.integer(0))) {
                continue;
            }
            begin("expression");
            number("filter", rs.integer(0));
            number("id", rs.integer(1));
            textUnlessEmpty("table", rs.text(2));
            text("field", rs.text(3));
            numberUnless("field_type", rs.integer(4), 0);
            number("compare", rs.integer(5));
            textUnlessEmpty("constant", rs.text(6));
        }
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

    void begin(const char* kind) { line(QStringLiteral("\n[[%1]]").arg(QLatin1String(kind))); }

    void number(const char* key, qint32 value) {
        line(QStringLiteral("%1 = %2").arg(QLatin1String(key)).arg(value));
    }

    void numberUnless(const char* key, qint32 value, qint32 usual) {
        if (value != usual) {
            number(key, value);
        }
    }

    void text(const char* key, const QString& value) {
        line(QLatin1String(key) + QStringLiteral(" = ") + tomlString(value));
    }

    void textUnlessEmpty(const char* key, const QString& value) {
        if (!value.isEmpty()) {
            text(key, value);
        }
    }

    void line(const QString& content) {
        const QByteArray bytes = (content + u'\n').toUtf8();
        if (out_.write(bytes) != bytes.size()) {
            throw TextError(QStringLiteral("output"), out_.errorString());
        }
    }

    data::Connection& connection_;
    QIODevice& out_;
    RowsByOwner<Placed> folders_;
    RowsByOwner<Placed> formulas_;
    RowsByOwner<StoredValue> values_;
    std::map<qint32, ConditionLine> lines_;
    SiblingOrder folderOrder_;
    SiblingOrder formulaOrder_;
};

}  // namespace

void dumpLibrary(const QString& libraryPath, QIODevice& out) {
    data::Connection connection;
    connection.open(libraryPath, data::Access::Read);
    const data::ReadSnapshot snapshot(connection);
    Dump(connection, out).write();
}

}  // namespace varo
