#pragma once

#include <QString>
#include <QWidget>

#include <optional>

class QTableWidget;

namespace varo::host {

/// The properties that the host knows, for the user to edit: a row for each, its name and its
/// value.
class PropertyTable : public QWidget {
    Q_OBJECT

  public:
    explicit PropertyTable(QWidget* parent = nullptr);

    /// Value of the first property with exactly this name; nothing when there is none.
    std::optional<QString> valueOf(const QString& name) const;

    /// Changes the property's value, adding the property when there is none of this name.
    void setValue(const QString& name, const QString& value);

  private:
    int rowOf(const QString& name) const;
    void addRow(const QString& name, const QString& value);
    void addEmptyRow();
    void removeCurrentRow();

    QTableWidget* table_;
};

}  // namespace varo::host
