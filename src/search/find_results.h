#pragma once

#include "browse/library_tree.h"
#include "library/node_search.h"

#include <QAbstractTableModel>

namespace varo {

/// What the last search has found, as a list of one column; and which of it was located last. It
/// is forgotten when the library tree is filled anew, but for the criteria.
class FindResults : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Role {
        KeyRole = Qt::UserRole,
        TagRole,
        PlaceRole,  ///< library and folders that the item is in
    };

    /// `tree` names libraries and folders; it must outlive this.
    explicit FindResults(LibraryTree& tree);

    bool isEmpty() const { return count() == 0; }
    int count() const { return static_cast<int>(hits_.size()); }
    FindHit hit(int position) const { return hits_.at(static_cast<std::size_t>(position)); }

    void append(const FindHits& hits);
    void clear();

    /// What was searched for.
    const FindCriteria& criteria() const { return criteria_; }
    void setCriteria(const FindCriteria& criteria) { criteria_ = criteria; }

    /// Position, from 0, of the hit that was located last; -1 when none was.
    int located() const { return located_; }
    void setLocated(int position);

    /// Texts of a node and of all above it, the library first. Folders that the tree does not show
    /// are replaced by "…".
    QString pathOf(const NodeId& node) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

  signals:
    /// There are other hits, or another one was located.
    void changed();
    /// The libraries are other ones: what refers to them by their numbers does not count any more.
    void librariesChanged();

  private:
    LibraryTree& tree_;
    FindHits hits_;
    FindCriteria criteria_;
    int located_ = -1;
};

}  // namespace varo
