#pragma once

#include "search/condition_model.h"

#include <QPointer>
#include <QStringList>
#include <QStyledItemDelegate>
#include <QTreeView>

#include <functional>
#include <optional>

namespace varo {

/// Edits a group's kind, and name, comparison and constant of a comparison, in place.
class ConditionDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// What gives the names that are offered beside those in the condition; asked once, when a name
    /// is edited first.
    void setNames(std::function<QStringList()> source) { nameSource_ = std::move(source); }

    /// Offers these from now on, too.
    void addNames(const QStringList& names) { savedNames_ += names; }

    /// The editor that is open; null when there is none.
    QWidget* openEditor() const { return editor_; }

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

  private:
    QWidget* createChoice(QWidget* parent, const ConditionNode& node) const;
    QWidget* createNameBox(QWidget* parent, const ConditionTree& tree) const;

    std::function<QStringList()> nameSource_;
    mutable std::optional<QStringList> names_;
    QStringList savedNames_;
    mutable QPointer<QWidget> editor_;
};

/// The tree of a condition; a tree of another shape is shown with every group open. Enter edits,
/// Tab goes on to the next part of a comparison; nodes are dragged within the tree.
class ConditionView : public QTreeView {
    Q_OBJECT

  public:
    explicit ConditionView(QWidget* parent);

    void setNames(std::function<QStringList()> source) { delegate_->setNames(std::move(source)); }
    void addNames(const QStringList& names) { delegate_->addNames(names); }

    /// The text in the place of a condition without nodes.
    void setPlaceholder(const QString& text);

    /// Makes the node at `index`, which can be invalid, the current one.
    void select(const QModelIndex& index);

    /// Ends what is being edited as Enter does.
    void commitEdit();

  protected:
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    ConditionDelegate* delegate_;
    QString placeholder_;
};

}  // namespace varo
