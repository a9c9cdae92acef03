#include "search/picture_list.h"

#include "platform/ui/shown_text.h"

#include <QTimerEvent>

#include <algorithm>
#include <utility>

namespace varo {

namespace {

/// Entries that are read at a time, and the milliseconds in between, in which the first pictures
/// can be read.
constexpr int kEntries = 250;
constexpr int kPause = 15;

/// Milliseconds before libraries that are locked are tried again: at first, and at most.
constexpr int kFirstLockedPause = 100;
constexpr int kLongestLockedPause = 5000;

}  // namespace

PictureList::PictureList(const colFormulaDB& libraries,
                         std::function<QString(const NodeId&)> pathOf, QObject* parent)
    : QAbstractListModel(parent), catalog_(libraries), pathOf_(std::move(pathOf)) {}

void PictureList::load() {
    readEntries();
}

void PictureList::timerEvent(QTimerEvent* event) {
    if (event->timerId() == timer_.timerId()) {
        readEntries();
    } else {
        QAbstractListModel::timerEvent(event);
    }
}

void PictureList::readEntries() {
    const PictureCatalog::Listing listing = catalog_.readEntries(kEntries);
    const auto count = static_cast<int>(catalog_.entries().size());
    if (count > count_) {
        beginInsertRows({}, count_, count - 1);
        count_ = count;
        endInsertRows();
    }
    switch (listing) {
        case PictureCatalog::Listing::Part:
            pause_ = kPause;
            timer_.start(pause_, this);
            break;
        case PictureCatalog::Listing::AllLocked:
            pause_ = std::clamp(2 * pause_, kFirstLockedPause, kLongestLockedPause);
            timer_.start(pause_, this);
            break;
        case PictureCatalog::Listing::Complete:
            timer_.stop();
            break;
    }
    emit listed();
}

QStringList PictureList::namesOf(const std::vector<int>& libraries) const {
    QStringList names;
    for (const int library : libraries) {
        names.append(pathOf_(nodeOf(library, 0)));
    }
    return names;
}

PictureCatalog::Found PictureList::findFormula(int row, NodeId& folder, qint32& formulaID) {
    const auto entry = static_cast<std::size_t>(row);
    qint32 folderID = 0;
    const PictureCatalog::Found found = catalog_.findFolder(entry, folderID);
    folder = nodeOf(catalog_.entries()[entry].library, folderID);
    formulaID = catalog_.entries()[entry].formulaID;
    return found;
}

PictureList::Read PictureList::readBytes(int picture, QByteArray& bytes) {
    switch (catalog_.readBytes(static_cast<std::size_t>(picture), bytes)) {
        case PictureCatalog::Bytes::Part:
            return Read::Part;
        case PictureCatalog::Bytes::All:
            return Read::All;
        case PictureCatalog::Bytes::Locked:
            return Read::Later;
        case PictureCatalog::Bytes::None:
            break;
    }
    return Read::None;
}

int PictureList::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count_;
}

QVariant PictureList::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return catalog_.entries()[static_cast<std::size_t>(index.row())].name;
        case Qt::ToolTipRole:
            return ui::plainToolTip(toolTip(index.row()));
        default:
            return {};
    }
}

QString PictureList::toolTip(int row) const {
    const auto at = static_cast<std::size_t>(row);
    const PictureCatalog::Entry& entry = catalog_.entries()[at];
    const qint32 folder = catalog_.folderOf(at).value_or(0);
    return ui::lineOf(entry.name) + u'\n' + pathOf_(nodeOf(entry.library, folder));
}

}  // namespace varo
