#pragma once

#include "store/collections.h"

#include <QAbstractTableModel>
#include <QHash>

#include <functional>

namespace varo {

/// A list of libraries as a model for a list in report view: what each is called and where its file
/// is. A library whose file does not open has a picture that says so, and the reason below the path
/// in its tool tip. The texts can be edited once a renamer is set.
class LibraryListModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { NameColumn, PathColumn, ColumnCount };

    /// `libraries` must outlive this; after each change of it refill() is called.
    explicit LibraryListModel(const colFormulaDB& libraries) : libraries_(libraries) {}

    /// Shows the list as it is now. A file is opened when it is drawn for the first time, to see
    /// whether it can be.
    void refill();

    /// Stores the new text of the library with this key; false leaves it as it was.
    using Renamer = std::function<bool(const QString& key, const QString& text)>;
    void setRenamer(Renamer renamer) { renamer_ = std::move(renamer); }

    QString keyAt(const QModelIndex& index) const { return libraryAt(index).NodeKey; }
    /// Index of the library with this key; invalid when there is none.
    QModelIndex indexOf(const QString& key) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData* dragged, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* dragged, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

  signals:
    /// Raised when the drop is over. The selected libraries were dropped in front of the one at
    /// position `before`, or behind the last one; or files were dropped.
    void librariesDropped(int before);
    void filesDropped(const QStringList& files);

  private:
    const clsFormulaDB& libraryAt(const QModelIndex& index) const {
        return libraries_.Item(index.row() + 1);
    }

    /// Why the library's file does not open; "" when it does.
    QString reasonOf(const clsFormulaDB& library) const;

    const colFormulaDB& libraries_;
    mutable QHash<QString, QString> reasons_;  ///< by path, of the files that have been opened
    Renamer renamer_;
};

}  // namespace varo
