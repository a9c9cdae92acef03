#pragma once

#include "library/node_id.h"
#include "library/picture_catalog.h"
#include "platform/ui/thumbnail_loader.h"

#include <QAbstractListModel>
#include <QBasicTimer>

#include <functional>

namespace varo {

/// The pictures of all formulas of all libraries as a list with the formulas' names, and their
/// bytes.
class PictureList : public QAbstractListModel, public ui::PictureBytes {
    Q_OBJECT

  public:
    /// `libraries` is read here only. `pathOf` names a node with those above it.
    PictureList(const colFormulaDB& libraries, std::function<QString(const NodeId&)> pathOf,
                QObject* parent);

    /// Lists the first pictures; the others follow while the program is idle.
    void load();

    bool isLoading() const { return timer_.isActive(); }
    int count() const { return count_; }
    /// Names of the libraries whose pictures could not all be listed.
    QStringList unreadableLibraries() const { return namesOf(catalog_.unreadable()); }
    /// Names of the libraries that are locked, whose pictures follow when they no longer are.
    QStringList lockedLibraries() const { return namesOf(catalog_.locked()); }

    /// Opens the picture's library anew and reads which formula it belongs to and the node that
    /// this is in.
    PictureCatalog::Found findFormula(int row, NodeId& folder, qint32& formulaID);

    Read readBytes(int picture, QByteArray& bytes) override;
    void endReading() override { catalog_.endReading(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

  signals:
    /// More pictures have been listed, or there are no more.
    void listed();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    void readEntries();
    QStringList namesOf(const std::vector<int>& libraries) const;
    QString toolTip(int row) const;

    mutable PictureCatalog catalog_;  // the folder of a formula is read when it is asked for
    std::function<QString(const NodeId&)> pathOf_;
    QBasicTimer timer_;
    int pause_ = 0;  ///< milliseconds before the next entries are read
    int count_ = 0;
};

}  // namespace varo
