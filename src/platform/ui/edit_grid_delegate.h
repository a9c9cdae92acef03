#pragma once

#include "platform/ui/edit_grid.h"

#include <QStyledItemDelegate>

namespace varo::ui {

/// Draws the cells of a grid and makes their editors.
class EditGrid::Delegate : public QStyledItemDelegate {
  public:
    enum Role { SuggestionsRole = Qt::UserRole + 2 };

    explicit Delegate(EditGrid* grid) : QStyledItemDelegate(grid), grid_(*grid) {}

    /// Where the button of a Button cell lies in the cell's rectangle.
    static QRect buttonRect(const QRect& cell);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

  private:
    QWidget* createChoiceEditor(QWidget* parent, bool freeText) const;
    static QString noteOf(const QModelIndex& index);
    /// The part of a cell that holds its text.
    QRect textRect(const QRect& cell, const QModelIndex& index) const;

    EditGrid& grid_;
};

}  // namespace varo::ui
