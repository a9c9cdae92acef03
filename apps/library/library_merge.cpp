#include "library/folder_rows.h"
#include "library/library_text.h"
#include "library/picture_reader.h"
#include "library/row_store.h"
#include "store/db_funcs.h"
#include "store/library_connection.h"

#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QSet>

#include <algorithm>
#include <limits>

namespace varo {

namespace {

constexpr qint32 kTop = 0;  ///< as the parent of a folder or formula

/// The positions of the rows below each parent, in the order in which these show them.
template <class Row>
QMap<qint32, QList<std::size_t>> childrenOf(const std::vector<Row>& rows, qint32 Row::*parent) {
    QMap<qint32, QList<std::size_t>> children;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        children[rows[i].*parent].append(i);
    }
    for (QList<std::size_t>& siblings : children) {
        std::stable_sort(siblings.begin(), siblings.end(), [&](std::size_t a, std::size_t b) {
            return rows[a].order < rows[b].order;
        });
    }
    return children;
}

/// Adds the rows of a text to a library that is being written.
class Merge {
  public:
    Merge(data::Connection& connection, LibraryRows& rows, const QString& textPath)
        : connection_(connection), rows_(rows), textPath_(textPath) {}

    MergeReport run() {
        addFolders();
        addFormulas();
        addValues();
        addConditions();
        return std::move(report_);
    }

  private:
    /// Where the rows below a folder go.
    struct Place {
        qint32 id = kTop;  ///< in the library
        int depth = 0;
        bool wasThere = true;
    };

    void addFolders();
    void addFormulas();
    void addValues();
    void addConditions();
    void shiftConditions();
    qint32 largest(const QString& expression, const QString& table) const;
    qint32 shifted(qint32 number, qint32 by) const;
    template <class Row>
    void placeBehind(const QList<std::size_t>& siblings, const Place& parent, const QString& table,
                     std::vector<Row>& rows);
    [[noreturn]] void fail(const QString& message) const { throw TextError(textPath_, message); }
    void warn(const QString& message) {
        report_.warnings.append(TextError(textPath_, message).description());
    }

    data::Connection& connection_;
    LibraryRows& rows_;
    QString textPath_;
    QHash<qint32, Place> folders_{{kTop, {}}};  ///< by their identifiers in the text
    QHash<qint32, qint32> formulas_;
    MergeReport report_;
};

qint32 Merge::largest(const QString& expression, const QString& table) const {
    const data::Recordset rows =
        connection_.query(QStringLiteral("Select Max(%1) From %2").arg(expression, table));
    return std::max(rows.integer(0), 0);
}

qint32 Merge::shifted(qint32 number, qint32 by) const {
    if (number < 0 || number > std::numeric_limits<qint32>::max() - by) {
        fail(QStringLiteral("no number is left for number %1 of the text").arg(number));
    }
    return number + by;
}

/// Gives the rows order numbers behind those that a folder of the library has; what comes into a
/// new one, or where there is nothing, keeps its own.
template <class Row>
void Merge::placeBehind(const QList<std::size_t>& siblings, const Place& parent,
                        const QString& table, std::vector<Row>& rows) {
    if (!parent.wasThere) {
        return;
    }
    const data::Recordset found = connection_.query(
        QStringLiteral("Select Count(*), Max(OrderID) From %1 Where PID = ?").arg(table),
        {parent.id});
    if (found.integer(0) == 0) {
        return;
    }
    qint32 order = std::max(found.integer(1), 0);
    for (const std::size_t each : siblings) {
        order = shifted(1, order);
        rows[each].order = order;
    }
}

/// From the top down, so that the identifier of a folder is known before what it holds is added.
void Merge::addFolders() {
    const auto children = childrenOf(rows_.folders, &FolderRow::parent);
    QList<qint32> parents{kTop};
    std::size_t reached = 0;
    while (!parents.isEmpty()) {
        const qint32 parent = parents.takeFirst();
        const Place below = folders_.value(parent);
        const QList<std::size_t> siblings = children.value(parent);
        reached += static_cast<std::size_t>(siblings.size());
        QHash<QString, qint32> there;
        if (below.wasThere && !siblings.isEmpty()) {
            data::Recordset rows = connection_.query(
                QStringLiteral("Select ID, Name From Tree Where PID = ? Order By OrderID Desc"),
                {below.id});
            for (; !rows.atEnd(); rows.moveNext()) {
                there.insert(rows.text(1), rows.integer(0));
            }
        }
        QList<std::size_t> added;
        for (const std::size_t each : siblings) {
            const FolderRow& row = rows_.folders[each];
            parents.append(row.id);
            if (const auto same = there.constFind(row.name); same != there.cend()) {
                folders_.insert(row.id, {*same, below.depth + 1, true});
            } else {
                added.append(each);
            }
        }
        if (!added.isEmpty() && below.depth == kMaxFolderDepth) {
            fail(QStringLiteral("folders would be more than %1 levels deep").arg(kMaxFolderDepth));
        }
        placeBehind(added, below, QStringLiteral("Tree"), rows_.folders);
        for (const std::size_t each : added) {
            FolderRow row = rows_.folders[each];
            row.parent = below.id;
            const qint32 id = storeFolder(connection_, row, Numbering::Next);
            folders_.insert(row.id, {id, below.depth + 1, false});
            ++report_.folders;
        }
    }
    if (reached != rows_.folders.size()) {
        fail(QStringLiteral("%1 folders are below a folder that the text does not have, or below "
                            "themselves")
                 .arg(rows_.folders.size() - reached));
    }
}

void Merge::addFormulas() {
    PictureReader pictures(textPath_);
    const auto children = childrenOf(rows_.formulas, &FormulaRow::folder);
    for (auto siblings = children.cbegin(); siblings != children.cend(); ++siblings) {
        if (!folders_.contains(siblings.key())) {
            fail(QStringLiteral("formulas are in folder %1, which the text does not have")
                     .arg(siblings.key()));
        }
        const Place folder = folders_.value(siblings.key());
        QSet<QString> names;
        if (folder.wasThere) {
            data::Recordset rows = connection_.query(
                QStringLiteral("Select Name From Formula Where PID = ?"), {folder.id});
            for (; !rows.atEnd(); rows.moveNext()) {
                names.insert(rows.text(0));
            }
        }
        placeBehind(*siblings, folder, QStringLiteral("Formula"), rows_.formulas);
        for (const std::size_t each : *siblings) {
            FormulaRow row = rows_.formulas[each];
            row.folder = folder.id;
            formulas_.insert(row.id, storeFormula(connection_, row, Numbering::Next, pictures));
            ++report_.formulas;
            report_.namesakes += names.contains(row.name) ? 1 : 0;
        }
    }
}

void Merge::addValues() {
    std::vector<ValueRow> values;
    for (ValueRow& row : rows_.values) {
        if (const auto formula = formulas_.constFind(row.formula); formula != formulas_.cend()) {
            row.formula = *formula;
            values.push_back(std::move(row));
        }
    }
    if (const std::size_t left = rows_.values.size() - values.size(); left > 0) {
        warn(QStringLiteral("%1 stored values belong to no formula of the text; they are left out")
                 .arg(left));
    }
    storeValues(connection_, values);
}

/// Adds the properties of what was added, with their conditions, under numbers of their own.
void Merge::addConditions() {
    QSet<qint32> filters;
    std::size_t ofOthers = 0;
    std::size_t ofNothing = 0;
    std::erase_if(rows_.properties, [&](PropertyRow& row) {
        if (row.nodeType == NodeTypeFormula && formulas_.contains(row.node)) {
            row.node = formulas_.value(row.node);
        } else if (row.nodeType == NodeTypeFolder && row.node != kTop &&
                   folders_.contains(row.node)) {
            const Place folder = folders_.value(row.node);
            if (folder.wasThere) {
                ++ofOthers;
                return true;
            }
            row.node = folder.id;
        } else {
            ++ofNothing;
            return true;
        }
        filters.insert(row.filter);
        return false;
    });
    if (ofOthers > 0) {
        warn(QStringLiteral("%1 properties are of folders that the library has; they are left out")
                 .arg(ofOthers));
    }
    if (ofNothing > 0) {
        warn(QStringLiteral("%1 properties belong to nothing in the text; they are left out")
                 .arg(ofNothing));
    }
    std::erase_if(rows_.conditions,
                  [&](const ConditionRow& row) { return !filters.contains(row.user); });
    std::erase_if(rows_.expressions,
                  [&](const ExpressionRow& row) { return !filters.contains(row.filter); });
    shiftConditions();
    storeConditions(connection_, rows_);
}

/// Numbers properties, filters and conditions behind those of the library.
void Merge::shiftConditions() {
    const data::Recordset properties =
        connection_.query(QStringLiteral("Select Count(*), Max(PropID) From Property"));
    // They begin with 0.
    const qint32 property =
        properties.integer(0) == 0 ? 0 : shifted(1, std::max(properties.integer(1), 0));
    const qint32 filter =
        std::max({largest(QStringLiteral("FilterID"), QStringLiteral("Property")),
                  largest(QStringLiteral("UserID"), QStringLiteral("FilterCond")),
                  largest(QStringLiteral("FilterID"), QStringLiteral("FilterExpressions"))});
    const qint32 condition =
        std::max(largest(QStringLiteral("ID"), QStringLiteral("FilterCond")),
                 largest(QStringLiteral("ExpID"), QStringLiteral("FilterExpressions")));
    const auto move = [&](qint32& number, qint32 by) {
        number = number == 0 ? 0 : shifted(number, by);
    };
    for (PropertyRow& row : rows_.properties) {
        row.id = shifted(row.id, property);
        move(row.filter, filter);
    }
    for (ConditionRow& row : rows_.conditions) {
        move(row.user, filter);
        move(row.id, condition);
        move(row.parent, condition);
    }
    for (ExpressionRow& row : rows_.expressions) {
        move(row.filter, filter);
        move(row.id, condition);
    }
}

}  // namespace

MergeReport mergeLibrary(const QString& textPath, const QString& libraryPath) {
    LibraryRows rows = readLibraryText(textPath);
    const QFileInfo file(libraryPath);
    data::Connection connection;
    const OpenResult opened =
        openLibrary(file.absolutePath() + u'/', file.fileName(), connection, data::Access::Write);
    if (opened.failure != OpenFailure::None) {
        throw TextError(libraryPath, opened.description.isEmpty()
                                         ? QStringLiteral("the library cannot be opened")
                                         : opened.description);
    }
    data::Transaction transaction(connection);
    MergeReport report = Merge(connection, rows, textPath).run();
    transaction.commit();
    report.warnings = rows.warnings + report.warnings;
    return report;
}

}  // namespace varo
