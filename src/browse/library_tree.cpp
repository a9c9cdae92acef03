#include "browse/library_tree.h"

#include "library/folders.h"
#include "library/library_files.h"
#include "library/library_list.h"
#include "library/properties.h"
#include "platform/ui/node_view.h"
#include "platform/ui/wait_cursor.h"
#include "store/keys.h"

#include <QElapsedTimer>

namespace varo {

namespace {

/// Reading so many takes a second or two.
constexpr int kLibrariesReadAtOnce = 1000;

constexpr auto kPlainFolder = FolderTree::imagesOf(NodeImage::Folder, NodeImage::FolderOpen);
constexpr auto kLibraryWithProperty =
    FolderTree::imagesOf(NodeImage::LibraryWithProperty, NodeImage::LibraryWithProperty);
constexpr auto kFolderWithProperty =
    FolderTree::imagesOf(NodeImage::FolderWithProperty, NodeImage::FolderWithPropertyOpen);
constexpr auto kPlainLibrary = FolderTree::imagesOf(NodeImage::Library, NodeImage::Library);
constexpr auto kUnreadableLibrary =
    FolderTree::imagesOf(NodeImage::LibraryUnreadable, NodeImage::LibraryUnreadable);
constexpr auto kLocated = FolderTree::imagesOf(NodeImage::FolderLocated, NodeImage::FolderLocated);

constexpr FolderTree::Images imagesWithProperty(const NodeId& node) {
    return node.isFolder() ? kFolderWithProperty : kLibraryWithProperty;
}

}  // namespace

LibraryTree::LibraryTree(ui::NodeView& view, CurrentLibrary& library, Questions& questions)
    : view_(view),
      library_(library),
      questions_(questions),
      reading_(view, [this] { return readNext(); }) {
    view.setModel(&model_);
    connect(&view, &ui::NodeView::nodeClicked, this,
            [this](const QModelIndex& index) { emit nodeClicked(model_.idOf(index)); });
    connect(&view, &ui::NodeView::nodeExpanded, &view, &ui::NodeView::selectItem);
    connect(&reading_, &SlicedWork::ended, this, [this] { emit readingChanged(0); });
}

bool LibraryTree::BuildFormulaTree(const colFormulaDB& libraries, OnUnreadable onUnreadable) {
    view_.setEnabled(true);
    clear();
    const QString failure = addLibraries(libraries, onUnreadable);
    // The view lays all its items out for this, so that it is done once.
    view_.scrollTo(model_.index(model_.rowCount() - 1, 0));
    if (!failure.isEmpty() && onUnreadable == OnUnreadable::Stop) {
        questions_.inform(failure);
    }
    return failure.isEmpty();
}

/// Returns what the user is to be told of the first library that cannot be read; "" when all can.
QString LibraryTree::addLibraries(const colFormulaDB& libraries, OnUnreadable onUnreadable) {
    const ui::clsWaitCursor waiting;
    QElapsedTimer sinceStart;
    sinceStart.start();
    QString firstFailure;
    for (const clsFormulaDB& library : libraries) {
        if (model_.rowCount() >= kLibrariesReadAtOnce) {
            addUnread(library);
            continue;
        }
        if (!files_.isEmpty() && sinceStart.elapsed() >= readingTime_) {
            waiting_.append(addUnread(library));
            continue;
        }
        const QString failure = addLibrary(library);
        if (firstFailure.isEmpty()) {
            firstFailure = failure;
        }
        if (!failure.isEmpty() && onUnreadable == OnUnreadable::Stop) {
            break;
        }
    }
    if (waiting_.isEmpty()) {
        model_.squeeze();
    } else {
        lockedUntil_ = QDeadlineTimer(QDeadlineTimer::Forever);
        reading_.start();
        emit readingChanged(static_cast<int>(waiting_.size()));
    }
    return firstFailure;
}

NodeId LibraryTree::firstReadNode() const {
    for (int row = 0; row < model_.rowCount(); ++row) {
        const NodeId library = model_.idOf(model_.index(row, 0));
        if (!unread_.contains(library.library)) {
            return library;
        }
    }
    return {};
}

/// Adds the library's node alone; showing it for the first time reads what is below. Returns its
/// number.
int LibraryTree::addUnread(const clsFormulaDB& library) {
    const int number = libraryNumberOf(library.NodeKey);
    const QModelIndex root = model_.addLibrary(number, library.FormulaNodeText);
    unread_.insert(number);
    model_.setNote(root, pathOf(library) + QStringLiteral("\n还没有读取，单击后读取"));
    return number;
}

/// Returns what the user is to be told when the library cannot be read; "" otherwise.
QString LibraryTree::addLibrary(const clsFormulaDB& library) {
    const int number = libraryNumberOf(library.NodeKey);
    const QPersistentModelIndex root = model_.addLibrary(number, library.FormulaNodeText);
    library_.close();
    const bool opened = library_.open(number);
    const QString failure = opened ? readInto(root, library_, NewChildren::Open)
                                   : QStringLiteral("无法打开用户选择的数据库！");
    if (!failure.isEmpty()) {
        unread_.insert(number);
        mark(number, opened ? failure : reasonOf(library_.openResult()));
    }
    return failure;
}

/// Shows the folders of `library` below its node, in place of those that are shown there. Returns
/// what the user is to be told when they, or the properties of folders, cannot be read.
QString LibraryTree::readInto(const QModelIndex& root, CurrentLibrary& library,
                              NewChildren opening) {
    const FileIdentity file = FileIdentity::of(library.connection().path());
    FolderRows rows;
    if (!readFolders(library, rows)) {
        return QStringLiteral("读取数据库失败，无法显示完整的树结构！");
    }
    files_.insert(library.number(), file);
    if (model_.rowCount(root) == 0) {
        model_.addFolders(root, std::move(rows));
        if (opening == NewChildren::Open) {
            view_.expand(root);
        }
    } else {
        replaceFolders(model_.idOf(root), std::move(rows), false);
    }
    std::vector<qint32> withProperty;
    const bool propertiesRead = readNodesWithProperty(library, NodeTypeFolder, withProperty);
    markProperties(library.number(), withProperty);
    return propertiesRead ? QString() : propertiesNotReadMessage();
}

void LibraryTree::readAgain() {
    if (unread_.contains(library_.number())) {
        readFrom(library_);
    }
}

QString LibraryTree::readUnread(int library, const QString& notOpened) {
    if (!unread_.contains(library)) {
        return {};
    }
    const ui::clsWaitCursor waiting;
    return readAnew(library, notOpened);
}

bool LibraryTree::isUpToDate(int library) const {
    if (!contains({library, std::nullopt})) {
        return true;
    }
    const auto file = files_.constFind(library);
    return !unread_.contains(library) && file != files_.cend() && file->isStillThere();
}

QString LibraryTree::readAnew(int library, const QString& notOpened) {
    CurrentLibrary opened(library_.libraries(), questions_);
    if (opened.open(library)) {
        return readFrom(opened);
    }
    mark(library, reasonOf(opened.openResult()));
    return notOpened;
}

/// Reads the first of the libraries that wait for it, or marks it.
SlicedWork::Next LibraryTree::readNext() {
    if (waiting_.isEmpty()) {
        waiting_.swap(locked_);
    }
    readWaiting(waiting_.takeFirst());
    if (!waiting_.isEmpty()) {
        emit readingChanged(static_cast<int>(waiting_.size() + locked_.size()));
        return SlicedWork::Next::AtOnce;
    }
    if (locked_.isEmpty()) {
        model_.squeeze();
        return SlicedWork::Next::Never;
    }
    if (lockedUntil_.isForever()) {
        lockedUntil_.setRemainingTime(readingTime_);
    }
    emit readingChanged(static_cast<int>(locked_.size()));
    return SlicedWork::Next::Later;
}

void LibraryTree::readWaiting(int library) {
    // The user may have shown it meanwhile, or have removed it from the list.
    if (!unread_.contains(library) || files_.contains(library) ||
        !library_.libraries().contains(libraryKey(library))) {
        return;
    }
    CurrentLibrary opened(library_.libraries(), questions_);
    if (opened.openAtOnce(library)) {
        readFrom(opened, NewChildren::StayClosed);
    } else if (opened.openResult().failure == OpenFailure::Locked && !lockedUntil_.hasExpired()) {
        locked_.append(library);
    } else {
        mark(library, reasonOf(opened.openResult()));
    }
}

/// Reads a library whose node is there, or marks it. Returns what readInto() does.
QString LibraryTree::readFrom(CurrentLibrary& library, NewChildren opening) {
    const int number = library.number();
    const QModelIndex root = model_.find({number, std::nullopt});
    unmarked_.remove(number);
    model_.setImages(root, kPlainLibrary);
    const QString failure = readInto(root, library, opening);
    if (failure.isEmpty()) {
        unread_.remove(number);
        model_.setNote(root, QString());
    } else {
        mark(number, failure);
    }
    return failure;
}

void LibraryTree::stopReading() {
    reading_.stop();
}

void LibraryTree::clear() {
    stopReading();
    waiting_.clear();
    locked_.clear();
    model_.clear();
    unread_.clear();
    files_.clear();
    unmarked_.clear();
}

/// Marks the node of a library of the list.
void LibraryTree::mark(int library, const QString& reason) {
    const QModelIndex root = model_.find({library, std::nullopt});
    const FolderTree::Images images = model_.tree().images(FolderTreeModel::nodeOf(root));
    if (images != kUnreadableLibrary) {
        unmarked_.insert(library, images);
    }
    model_.setImages(root, kUnreadableLibrary);
    model_.setNote(root, pathOf(library_.libraries().Item(libraryKey(library))) + u'\n' + reason);
}

void LibraryTree::unmark(int library) {
    const QModelIndex root = model_.find({library, std::nullopt});
    if (unmarked_.contains(library)) {
        model_.setImages(root, unmarked_.take(library));
    }
    model_.setNote(root, QString());
}

void LibraryTree::noteOpening(int library) {
    const QString reason = reasonOf(library_.openResult());
    if (!reason.isEmpty()) {
        mark(library, reason);
    } else if (!unread_.contains(library)) {
        unmark(library);
    }
}

void LibraryTree::markProperties(int library, const std::vector<qint32>& folders) {
    for (const qint32 folder : folders) {
        const NodeId node = nodeOf(library, folder);
        if (const QModelIndex index = model_.find(node); index.isValid()) {
            model_.setImages(index, imagesWithProperty(node));
        }
    }
}

QString LibraryTree::text(const NodeId& node) const {
    return model_.find(node).data(Qt::EditRole).toString();
}

NodeId LibraryTree::neighbour(const NodeId& node, int step) const {
    const QModelIndex index = model_.find(node);
    return model_.idOf(index.sibling(index.row() + step, index.column()));
}

int LibraryTree::levelsBelow(const NodeId& node) const {
    const QModelIndex index = model_.find(node);
    return index.isValid() ? model_.tree().levelsBelow(FolderTreeModel::nodeOf(index)) : 0;
}

NodeId LibraryTree::selectedNode() const {
    return model_.idOf(view_.selectedIndex());
}

void LibraryTree::select(const NodeId& node) {
    if (const QModelIndex index = model_.find(node); index.isValid()) {
        view_.selectItem(index);
        view_.scrollTo(index);
    }
}

void LibraryTree::editLabel(const NodeId& folder) {
    view_.setFocus();
    view_.edit(model_.find(folder));
}

NodeId LibraryTree::appendFolders(const NodeId& parent, FolderRows rows) {
    for (const FolderRows::Row& row : rows.rows()) {
        removeStale({parent.library, row.id}, parent);
    }
    const FolderRows::Row& first = rows.rows().front();
    const QModelIndex added =
        model_.appendFolder(model_.find(parent), first.id, rows.name(first).toString());
    model_.addFolders(added, std::move(rows));
    view_.scrollTo(added);
    return model_.idOf(added);
}

/// A library made elsewhere can give out the identifier of a folder that another program has
/// deleted, and which the tree still shows.
void LibraryTree::removeStale(const NodeId& folder, const NodeId& kept) {
    const QModelIndex stale = model_.find(folder);
    QModelIndex above = model_.find(kept);
    while (above.isValid() && above != stale) {
        above = above.parent();
    }
    if (stale.isValid() && !above.isValid()) {
        model_.removeFolder(stale);
    }
}

void LibraryTree::removeFolder(const NodeId& folder) {
    if (const QModelIndex index = model_.find(folder); index.isValid()) {
        model_.removeFolder(index);
    }
}

void LibraryTree::replaceFolders(const NodeId& parent, FolderRows rows, bool keepPictures) {
    const QModelIndex above = model_.find(parent);
    std::vector<NodeId> expanded;
    collectExpanded(above, expanded);
    const auto marked = keepPictures ? markedBelow(above) : decltype(markedBelow(above)){};
    model_.removeFolders(above);
    model_.addFolders(above, std::move(rows));
    for (const auto& [node, images] : marked) {
        if (const QModelIndex index = model_.find(node); index.isValid()) {
            model_.setImages(index, images);
        }
    }
    for (const NodeId& node : expanded) {
        view_.setExpanded(model_.find(node), true);
    }
}

void LibraryTree::collectExpanded(const QModelIndex& parent, std::vector<NodeId>& expanded) const {
    if (!view_.isExpanded(parent)) {
        return;
    }
    expanded.push_back(model_.idOf(parent));
    for (int row = 0; row < model_.rowCount(parent); ++row) {
        collectExpanded(model_.index(row, 0, parent), expanded);
    }
}

/// Folders with another picture than a folder has by itself.
std::vector<std::pair<NodeId, FolderTree::Images>> LibraryTree::markedBelow(
    const QModelIndex& parent) const {
    std::vector<std::pair<NodeId, FolderTree::Images>> marked;
    std::vector<QModelIndex> open{parent};
    while (!open.empty()) {
        const QModelIndex above = open.back();
        open.pop_back();
        for (int row = 0; row < model_.rowCount(above); ++row) {
            const QModelIndex node = model_.index(row, 0, above);
            const FolderTree::Images images = model_.tree().images(FolderTreeModel::nodeOf(node));
            if (images != kPlainFolder) {
                marked.emplace_back(model_.idOf(node), images);
            }
            open.push_back(node);
        }
    }
    return marked;
}

void LibraryTree::showProperties(const NodeId& node, bool carries) {
    if (const QModelIndex index = model_.find(node); index.isValid()) {
        const auto plain = node.isFolder() ? kPlainFolder : kPlainLibrary;
        model_.setImages(index, carries ? imagesWithProperty(node) : plain);
    }
}

void LibraryTree::setLocated(const NodeId& node, bool located) {
    if (const QModelIndex index = model_.find(node); index.isValid()) {
        model_.setImages(index, located ? kLocated : imagesWithProperty(node));
    }
}

}  // namespace varo
