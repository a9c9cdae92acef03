#include "library/condition_lines.h"

#include "library/condition_text.h"
#include "library/filter_reader.h"

#include <QHash>

#include <limits>

namespace varo {

namespace {

constexpr qint32 kLast = std::numeric_limits<qint32>::max();

class LineReader {
  public:
    explicit LineReader(LibraryRows& rows) : rows_(rows) {
        for (const PropertyRow& row : rows.properties) {
            lastFilter_ = std::max(lastFilter_, row.filter);
        }
        for (const auto& row : rows.conditions) {
            givenAsRows_.insert(row.user);
            lastFilter_ = std::max(lastFilter_, row.user);
            lastId_ = std::max(lastId_, row.id);
        }
        for (const ExpressionRow& row : rows.expressions) {
            givenAsRows_.insert(row.filter);
            lastFilter_ = std::max(lastFilter_, row.filter);
            lastId_ = std::max(lastId_, row.id);
        }
    }

    void add(const Entry& entry, PropertyRow& property) {
        if (!entry.has("condition")) {
            if (entry.has("condition_id")) {
                entry.fail(entry.position("condition_id"),
                           QStringLiteral("\"condition_id\" goes with a condition"));
            }
            return;
        }
        property.filter = filterOf(entry, property);
        const ParsedCondition parsed = parseCondition(entry.text("condition"));
        if (parsed.error) {
            entry.fail(placeOf(entry, *parsed.error),
                       QStringLiteral("the condition: ") + parsed.error->text);
        }
        for (const ConditionRemark& warning : parsed.warnings) {
            rows_.warnings.append(
                entry.described(placeOf(entry, warning),
                                QStringLiteral("warning: the condition: ") + warning.text));
        }
        addRows(parsed.tree, property.filter, firstIdOf(entry, parsed.tree.size()));
    }

  private:
    static Position placeOf(const Entry& entry, const ConditionRemark& remark) {
        return entry.position("condition", remark.line, remark.column);
    }

    qint32 filterOf(const Entry& entry, const PropertyRow& property) {
        const bool isGiven = entry.has("filter");
        if (isGiven ? property.filter == 0 : lastFilter_ == kLast) {
            entry.fail(entry.position("filter"),
                       QStringLiteral("the filter of a condition needs a number other than 0"));
        }
        const qint32 filter = isGiven ? property.filter : ++lastFilter_;
        const Position at = entry.position("condition");
        if (const int line = lineOf_.value(filter, 0); line != 0 || givenAsRows_.contains(filter)) {
            entry.fail(at, QStringLiteral("filter %1 has another condition").arg(filter) +
                               (line != 0 ? QStringLiteral(" on line %1").arg(line) : QString()));
        }
        lineOf_.insert(filter, at.line);
        return filter;
    }

    qint32 firstIdOf(const Entry& entry, int count) const {
        const auto given = entry.integerIfAny("condition_id");
        const qint64 first = given ? *given : qint64{lastId_} + 1;
        if (first < 1 || first + count - 1 > kLast) {
            entry.fail(
                entry.position(given ? "condition_id" : "condition"),
                QStringLiteral("the parts of the condition get no numbers from 1 on that fit "
                               "32 bits"));
        }
        return static_cast<qint32>(first);
    }

    void addRows(const ConditionTree& tree, qint32 filter, qint32 firstId) {
        const FilterRows added = conditionToRows(tree, firstId);
        for (const FilterNodeRow& row : added.nodes) {
            rows_.conditions.push_back({row.id, filter, row.parent, row.type});
            lastId_ = std::max(lastId_, row.id);
        }
        for (const auto& [id, term] : added.terms) {
            rows_.expressions.push_back(
                {filter, id, term.table, term.name, term.fieldType, term.type, term.constant});
        }
    }

    LibraryRows& rows_;
    QSet<qint32> givenAsRows_;
    QHash<qint32, int> lineOf_;
    qint32 lastFilter_ = 0;
    qint32 lastId_ = 0;
};

/// The line from which the same rows are made; nothing when there is none.
std::optional<ConditionLine> lineOf(const FilterRows& rows) {
    const StoredCondition stored = conditionFromRows(rows);
    if (!stored.isWhole || !stored.remarks.isEmpty() || rows.nodes.empty() ||
        rows.nodes.front().id < 1) {
        return std::nullopt;
    }
    const auto text = conditionText(stored.tree);
    const qint32 firstId = rows.nodes.front().id;
    if (!text || rows.nodes.back().id - firstId + 1 != stored.tree.size() ||
        conditionToRows(stored.tree, firstId).nodes != rows.nodes) {
        return std::nullopt;
    }
    return ConditionLine{*text, firstId, rows.nodes.back().id};
}

}  // namespace

void addConditionLines(const std::vector<Entry>& properties, LibraryRows& rows) {
    LineReader reader(rows);
    for (std::size_t index = 0; index < properties.size(); ++index) {
        reader.add(properties[index], rows.properties[index]);
    }
}

std::map<qint32, ConditionLine> conditionLines(data::Connection& connection) {
    QSet<qint32> wanted;
    for (auto rs = connection.query(
             QStringLiteral("select distinct FilterID from Property where FilterID <> 0"));
         !rs.atEnd(); rs.moveNext()) {
        wanted.insert(rs.integer(0));
    }
    std::map<qint32, ConditionLine> lines;
    for (FilterReader filters(connection); filters.next();) {
        if (wanted.contains(filters.filter())) {
            if (const auto line = lineOf(filters.rows())) {
                lines.emplace(filters.filter(), *line);
            }
        }
    }
    return lines;
}

}  // namespace varo
