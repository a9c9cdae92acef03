#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

namespace varo::ui {

/// Stores the text that is typed for an item, and knows whether the model took it.
class LabelDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

    /// Ends the editing of a text, of which the view is in the middle, as Enter does. Returns false
    /// when the model refuses the text, which is then dropped; true also when there is no editor.
    bool commitEdit();

  protected:
    /// To be called with each editor that is made.
    QWidget* opened(QWidget* editor) const;

  private:
    mutable QPointer<QWidget> editor_;
    mutable bool accepted_ = true;
};

}  // namespace varo::ui
