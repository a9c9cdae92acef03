#pragma once

#include "library/condition_tree.h"
#include "platform/data/connection.h"

#include <QList>

#include <span>
#include <vector>

namespace varo {

/// The rows of some filters of a library. The numbers are read when they are first asked for, in
/// one pass over each table, and held; a term is read each time. Everything throws data::Error.
class ConditionRows {
  public:
    struct Node {
        qint32 filter = 0;
        qint32 parent = 0;
        qint32 id = 0;
        ConditionType type = ConditionType::Comparison;
    };

    /// `connection` is open on the library and must outlive this.
    ConditionRows(data::Connection& connection, const QList<qint32>& filters);

    /// The nodes below `parent`, in the order of their numbers.
    std::span<const Node> children(qint32 filter, qint32 parent);

    /// The name, comparison and constant stored for the node `id`; nothing when there are none.
    std::optional<ComparisonTerm> term(qint32 filter, qint32 id);

  private:
    struct TermRow {
        qint32 filter = 0;
        qint32 id = 0;
        qint64 row = 0;
    };

    void readNodes();
    void readTerms();

    data::Connection& connection_;
    QString filters_;  ///< as a JSON array
    std::optional<std::vector<Node>> nodes_;
    std::optional<std::vector<TermRow>> terms_;
};

}  // namespace varo
