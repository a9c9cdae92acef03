#pragma once

#include "library/property_session.h"

#include <QAbstractTableModel>

#include <set>

namespace varo {

/// The properties of a session as a model for a list in report view. Answers the keys of properties
/// under ui::NodeView::KeyRole. A label that is edited renames the property.
class PropertyListModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// Role under which the FilterID of a property is answered.
    static constexpr int kFilterRole = Qt::UserRole + 16;

    /// `session` must outlive this.
    explicit PropertyListModel(PropertySession& session) : session_(session) {}

    /// Adds a new property; an invalid index when the session cannot.
    QModelIndex add();
    void remove(qint32 id);

    /// What the list shows of a property has changed in the session.
    void update(qint32 id);
    /// Marks a property whose condition has been edited without being saved.
    void setUnsaved(qint32 id, bool unsaved);

    /// The property at a valid index.
    qint32 idAt(const QModelIndex& index) const;
    /// Index of a property; invalid when it is not listed.
    QModelIndex indexOf(qint32 id) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  signals:
    /// A name that was typed has been refused for this reason.
    void refused(const QString& message);

  private:
    PropertySession& session_;
    std::set<qint32> unsaved_;
};

}  // namespace varo
