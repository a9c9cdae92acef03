#include "library/condition_rows.h"

#include "platform/data/json_array.h"

#include <algorithm>
#include <tuple>

namespace varo {

ConditionRows::ConditionRows(data::Connection& connection, const QList<qint32>& filters)
    : connection_(connection), filters_(data::jsonArray(filters)) {}

std::span<const ConditionRows::Node> ConditionRows::children(qint32 filter, qint32 parent) {
    if (!nodes_) {
        readNodes();
    }
    const auto placeOf = [](const Node& node) { return std::pair(node.filter, node.parent); };
    return std::ranges::equal_range(*nodes_, std::pair(filter, parent), {}, placeOf);
}

std::optional<ComparisonTerm> ConditionRows::term(qint32 filter, qint32 id) {
    if (!terms_) {
        readTerms();
    }
    const auto placeOf = [](const TermRow& term) { return std::pair(term.filter, term.id); };
    const auto found = std::ranges::lower_bound(*terms_, std::pair(filter, id), {}, placeOf);
    if (found == terms_->end() || placeOf(*found) != std::pair(filter, id)) {
        return std::nullopt;
    }
    const data::Recordset rs = connection_.query(
        QStringLiteral("Select FieldName,CompareType,TheConst From FilterExpressions "
                       "Where rowid = ?"),
        {found->row});
    if (rs.atEnd()) {
        return std::nullopt;
    }
    return ComparisonTerm{
        .name = rs.text(0), .type = rs.integer(1), .constant = rs.text(2), .table = {}};
}

// What is no number is sorted by what it reads as.
void ConditionRows::readNodes() {
    std::vector<Node> nodes;
    for (auto rs = connection_.query(
             QStringLiteral("Select UserID,ParentID,ID,Type From FilterCond "
                            "Where UserID In (Select value From json_each(?)) "
                            "And ParentID Is Not Null Order By UserID,ParentID,ID,rowid"),
             {filters_});
         !rs.atEnd(); rs.moveNext()) {
        nodes.push_back({rs.integer(0), rs.integer(1), rs.integer(2),
                         static_cast<ConditionType>(rs.integer(3))});
    }
    std::ranges::stable_sort(
        nodes, {}, [](const Node& node) { return std::tuple(node.filter, node.parent, node.id); });
    nodes_ = std::move(nodes);
}

void ConditionRows::readTerms() {
    std::vector<TermRow> terms;
    for (auto rs =
             connection_.query(QStringLiteral("Select FilterID,ExpID,rowid From FilterExpressions "
                                              "Where FilterID In (Select value From json_each(?)) "
                                              "Order By FilterID,ExpID,rowid"),
                               {filters_});
         !rs.atEnd(); rs.moveNext()) {
        terms.push_back({rs.integer(0), rs.integer(1), rs.integer64(2)});
    }
    std::ranges::stable_sort(terms, {},
                             [](const TermRow& term) { return std::pair(term.filter, term.id); });
    terms_ = std::move(terms);
}

}  // namespace varo
