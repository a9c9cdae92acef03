#pragma once

#include <QString>
#include <QStringView>

#include <span>
#include <vector>

namespace varo {

/// Most levels of folders below a library; deeper ones are not shown, because views draw a tree by
/// recursion.
inline constexpr int kMaxFolderDepth = 1000;

/// The folders of a library as it stores them, in few bytes over their names.
class FolderRows {
  public:
    struct Row {
        qint32 id;
        qint32 parentId;
        qint64 order;
        quint32 textBegin;
        quint16 textLength;
    };

    /// Names longer than 65,535 characters are cut.
    void add(qint32 id, qint32 parentId, qint64 order, QStringView name);

    /// Puts the rows into the order of a listing: by parent, then by order number, then as added.
    void sort();

    bool isEmpty() const { return rows_.empty(); }
    std::span<const Row> rows() const { return rows_; }
    /// The rows of one parent; only after sort().
    std::span<const Row> childrenOf(qint32 parentId) const;
    /// A folder and all below it, each before those in it, these in their order; each once, also
    /// where folders descend from themselves. Empty when the folder is not among the rows. Only
    /// after sort().
    std::vector<Row> subtreeOf(qint32 folder) const;

    QStringView name(const Row& row) const;
    /// Characters of all names together.
    qsizetype textSize() const { return text_.size(); }

  private:
    std::vector<Row> rows_;
    QString text_;
};

}  // namespace varo
