#include "control/library_tree.h"

#include "platform/ui/node_view.h"
#include "store/attempt.h"
#include "store/keys.h"
#include "store/library_connection.h"

namespace varo {

namespace {

constexpr auto PlainFolder = FolderTree::imagesOf(ui::NodeImage::Folder, ui::NodeImage::FolderOpen);
constexpr auto LibraryWithProperty =
    FolderTree::imagesOf(ui::NodeImage::LibraryWithProperty, ui::NodeImage::LibraryWithProperty);
constexpr auto FolderWithProperty =
    FolderTree::imagesOf(ui::NodeImage::FolderWithProperty, ui::NodeImage::FolderWithPropertyOpen);
constexpr auto Located =
    FolderTree::imagesOf(ui::NodeImage::FolderLocated, ui::NodeImage::FolderLocated);

}  // namespace

LibraryTree::LibraryTree(Form& form, ControlState& state, Questions& questions, FormulaList& list)
    : form_(form), state_(state), questions_(questions), list_(list) {
    form.tvFolder->setModel(&model_);
    connect(form.tvFolder, &ui::NodeView::nodeClicked, this,
            [this](const QModelIndex& index) { selectNode(ui::NodeView::keyOf(index)); });
    connect(form.tvFolder, &ui::NodeView::nodeExpanded, form.tvFolder, &ui::NodeView::selectItem);
    connect(form.tvFolder, &ui::NodeView::nodeExpanded, form.tvFolder,
            [this] { form_.tvFolder->resizeColumnToContents(0); });
    connect(&list, &FormulaList::showing, this, &LibraryTree::removeHighlight);
    connect(&model_, &FolderTreeModel::dataChanged, this,
            [this](const QModelIndex&, const QModelIndex&, const QList<int>& roles) {
                if (roles.contains(Qt::DisplayRole)) {
                    form_.tvFolder->resizeColumnToContents(0);
                }
            });
}

void LibraryTree::clear() {
    model_.clear();
}

bool LibraryTree::BuildFormulaTree() {
    form_.tvFolder->setEnabled(true);
    clear();
    for (const clsFormulaDB& library : state_.libraries) {
        if (!addLibrary(library)) {
            return false;
        }
    }
    model_.squeeze();
    form_.tvFolder->resizeColumnToContents(0);
    return true;
}

bool LibraryTree::addLibrary(const clsFormulaDB& library) {
    const QPersistentModelIndex root = model_.addLibrary(library.NodeKey, library.FormulaNodeText);
    form_.tvFolder->scrollTo(root);
    const auto failed = [this](const QString& message) {
        questions_.inform(message);
        return false;
    };
    state_.connection.close();
    if (!openLibrary(library.FormulaDBPath, library.FormulaDBName)) {
        return failed(QStringLiteral("无法打开用户选择的数据库！"));
    }
    if (!BuildFolderChildren(library.NodeKey)) {
        return failed(QStringLiteral("读取数据库失败，无法显示完整的树结构！"));
    }
    std::vector<qint32> withProperty;
    const bool propertiesRead = readFoldersWithProperty(withProperty);
    markProperties(library.NodeKey, withProperty);
    return propertiesRead || failed(QStringLiteral("无法读取“属性”信息！"));
}

bool LibraryTree::openLibrary(const QString& path, const QString& name) {
    if (state_.connection.isOpen() && state_.currentLibraryPath == path &&
        state_.currentLibraryName == name) {
        return true;
    }
    // What is still being typed belongs to the library that is connected now.
    list_.storeEdits();
    if (!ConnectLibrary(path, name, state_.connection, QString())) {
        return false;
    }
    state_.variables.Clear();
    state_.currentLibraryPath = path;
    state_.currentLibraryName = name;
    return true;
}

bool LibraryTree::BuildFolderChildren(const QString& key) {
    const QModelIndex node = model_.find(key);
    FolderRows rows;
    if (!node.isValid() || !readFolders(rows)) {
        return false;
    }
    model_.addFolders(node, std::move(rows));
    if (!node.parent().isValid()) {
        form_.tvFolder->expand(node);
    }
    return true;
}

bool LibraryTree::readFolders(FolderRows& rows) {
    // One statement brings the folders of the whole library; the tree picks and orders those that
    // it needs.
    data::Recordset rs;
    return state_.dbFuncs.GetNodeInfo(rs, state_.connection) && attempt([&] {
               const int id = rs.column(u"ID");
               const int name = rs.column(u"Name");
               const int parent = rs.column(u"PID");
               const int order = rs.column(u"OrderID");
               for (; !rs.atEnd(); rs.moveNext()) {
                   rows.add(rs.integer(id), rs.integer(parent), rs.integer(order), rs.text(name));
               }
           });
}

bool LibraryTree::readFoldersWithProperty(std::vector<qint32>& ids) {
    data::Recordset rs;
    return state_.dbFuncs.GetAllPropertyByType(NodeTypeFolder, rs, state_.connection) &&
           attempt([&] {
               for (; !rs.atEnd(); rs.moveNext()) {
                   ids.push_back(rs.integer(u"NodeID"));
               }
           });
}

void LibraryTree::markProperties(const QString& rootKey, const std::vector<qint32>& ids) {
    for (const qint32 id : ids) {
        const QModelIndex node = model_.find(id == 0 ? rootKey : folderKey(id, rootKey));
        if (node.isValid()) {
            model_.setImages(node, id == 0 ? LibraryWithProperty : FolderWithProperty);
        }
    }
}

QString LibraryTree::GetRootKey(const QString& key) const {
    const QModelIndex node = model_.find(key);
    return node.isValid() ? model_.tree().rootKey(FolderTreeModel::nodeOf(node)) : QString();
}

void LibraryTree::selectFirstNode() {
    const QModelIndex first = model_.index(0, 0);
    if (first.isValid()) {
        form_.tvFolder->scrollTo(first);
        selectNode(ui::NodeView::keyOf(first));
    }
}

bool LibraryTree::selectNode(const QString& key) {
    if (!list_.storeEdits()) {
        return false;
    }
    const QModelIndex node = model_.find(key);
    const QString rootKey = GetRootKey(key);
    if (!node.isValid() || !state_.libraries.contains(rootKey)) {
        return false;
    }
    const QString text = model_.tree().text(FolderTreeModel::nodeOf(node));
    const auto failed = [this](const QString& message) {
        list_.showNothing();
        list_.showMessages();
        questions_.inform(message);
        return false;
    };
    form_.tvFolder->selectItem(node);
    form_.tvFolder->scrollTo(node);
    removeHighlight();
    const clsFormulaDB& library = state_.libraries.Item(rootKey);
    if (!openLibrary(library.FormulaDBPath, library.FormulaDBName)) {
        return failed(QStringLiteral("无法打开用户指定的数据库！"));
    }
    form_.lvFormula->setEnabled(true);
    if (!list_.ShowFolderFormulas(folderIdOf(key))) {
        return failed(QStringLiteral("无法读取节点“%1”下所有的公式！").arg(text));
    }
    state_.listedNodeKey = key;
    if (list_.isEmpty()) {
        list_.showNone();
    } else {
        list_.SelFormula(list_.firstKey());
    }
    makeSelectedCurrent();
    list_.showMessages();
    return state_.listedNodeKey == key;
}

bool LibraryTree::showSelectedNode() {
    const QString selected = form_.tvFolder->selectedKey();
    const bool listed = state_.connection.isOpen() && selected == state_.listedNodeKey &&
                        isOfCurrentLibrary(selected) && state_.listsCurrentLibrary();
    return !selected.isEmpty() && (listed || selectNode(selected));
}

void LibraryTree::selectListedNode() {
    const QModelIndex listed = model_.find(state_.listedNodeKey);
    if (listed.isValid() && form_.tvFolder->selectedIndex() != listed) {
        form_.tvFolder->selectItem(listed);
    }
}

void LibraryTree::makeSelectedCurrent() {
    const QModelIndex selected = form_.tvFolder->selectedIndex();
    if (!selected.isValid()) {
        return;
    }
    state_.currentItemKey = ui::NodeView::keyOf(selected);
    list_.setCommandState(selected.parent().isValid() ? CommandState::FolderSelected
                                                      : CommandState::LibrarySelected);
}

bool LibraryTree::isOfCurrentLibrary(const QString& key) const {
    const QString rootKey = GetRootKey(key);
    if (!state_.libraries.contains(rootKey)) {
        return false;
    }
    const clsFormulaDB& library = state_.libraries.Item(rootKey);
    return library.FormulaDBPath + library.FormulaDBName == state_.currentLibrary();
}

int LibraryTree::levelsBelow(const QString& key) const {
    const QModelIndex node = model_.find(key);
    return node.isValid() ? model_.tree().levelsBelow(FolderTreeModel::nodeOf(node)) : 0;
}

QString LibraryTree::appendFolder(const QString& parentKey, FolderRows rows) {
    const QString rootKey = libraryKeyOf(parentKey);
    for (const FolderRows::Row& row : rows.rows()) {
        removeStale(folderKey(row.id, rootKey), parentKey);
    }
    const FolderRows::Row& first = rows.rows().front();
    const QModelIndex added =
        model_.appendFolder(model_.find(parentKey), first.id, rows.name(first).toString());
    model_.addFolders(added, std::move(rows));
    form_.tvFolder->scrollTo(added);
    form_.tvFolder->resizeColumnToContents(0);
    return ui::NodeView::keyOf(added);
}

/// A library made elsewhere can give out the identifier of a folder that another program has
/// deleted, and which the tree still shows.
void LibraryTree::removeStale(const QString& key, const QString& keptKey) {
    const QModelIndex stale = model_.find(key);
    QModelIndex above = model_.find(keptKey);
    while (above.isValid() && above != stale) {
        above = above.parent();
    }
    if (stale.isValid() && !above.isValid()) {
        model_.removeFolder(stale);
    }
}

void LibraryTree::removeFolder(const QString& key) {
    if (const QModelIndex node = model_.find(key); node.isValid()) {
        model_.removeFolder(node);
    }
}

void LibraryTree::replaceFolders(const QString& parentKey, FolderRows rows, bool keepPictures) {
    const QModelIndex parent = model_.find(parentKey);
    QStringList expanded;
    collectExpanded(parent, expanded);
    const auto marked = keepPictures ? markedBelow(parent) : decltype(markedBelow(parent)){};
    model_.removeFolders(parent);
    model_.addFolders(parent, std::move(rows));
    for (const auto& [key, images] : marked) {
        if (const QModelIndex node = model_.find(key); node.isValid()) {
            model_.setImages(node, images);
        }
    }
    for (const QString& key : expanded) {
        form_.tvFolder->setExpanded(model_.find(key), true);
    }
}

void LibraryTree::collectExpanded(const QModelIndex& parent, QStringList& keys) const {
    if (!form_.tvFolder->isExpanded(parent)) {
        return;
    }
    keys.append(ui::NodeView::keyOf(parent));
    for (int row = 0; row < model_.rowCount(parent); ++row) {
        collectExpanded(model_.index(row, 0, parent), keys);
    }
}

/// Folders with another picture than a folder has by itself.
std::vector<std::pair<QString, FolderTree::Images>> LibraryTree::markedBelow(
    const QModelIndex& parent) const {
    std::vector<std::pair<QString, FolderTree::Images>> marked;
    std::vector<QModelIndex> open{parent};
    while (!open.empty()) {
        const QModelIndex above = open.back();
        open.pop_back();
        for (int row = 0; row < model_.rowCount(above); ++row) {
            const QModelIndex node = model_.index(row, 0, above);
            const FolderTree::Images images = model_.tree().images(FolderTreeModel::nodeOf(node));
            if (images != PlainFolder) {
                marked.emplace_back(ui::NodeView::keyOf(node), images);
            }
            open.push_back(node);
        }
    }
    return marked;
}

void LibraryTree::highlightNode(const QString& key) {
    const QModelIndex node = model_.find(key);
    if (node.isValid()) {
        model_.setImages(node, Located);
        state_.highlight = {true, LocateHighlight::Node, key};
    }
}

void LibraryTree::highlightFormula(const QString& key) {
    list_.setImage(key, ui::FormulaImage::FormulaLocated);
    state_.highlight = {true, LocateHighlight::Item, key};
}

void LibraryTree::removeHighlight() {
    if (!state_.highlight.set) {
        return;
    }
    if (state_.highlight.kind == LocateHighlight::Item) {
        list_.setImage(state_.highlight.key, ui::FormulaImage::FormulaWithProperty);
    } else if (const QModelIndex node = model_.find(state_.highlight.key); node.isValid()) {
        model_.setImages(node, node.parent().isValid() ? FolderWithProperty : LibraryWithProperty);
    }
    state_.highlight.set = false;
}

}  // namespace varo
