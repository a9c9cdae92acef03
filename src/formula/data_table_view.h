#pragma once

#include <QTableView>

namespace varo {

/// A table of which one cell is current. What is typed is not searched in it, since that would read
/// every row.
class DataTableView : public QTableView {
    Q_OBJECT

  public:
    explicit DataTableView(QWidget* parent = nullptr);

    void keyboardSearch(const QString& text) override { emit typed(text); }

    /// Makes the columns as wide as what is seen of them needs.
    void fitColumns();

  signals:
    void typed(const QString& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void fitRows();
};

}  // namespace varo
