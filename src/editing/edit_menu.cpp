#include "editing/edit_menu.h"

#include "platform/ui/node_view.h"

#include <QAction>

#include <optional>

namespace varo {

EditMenu::EditMenu(SelectionController& selection, LibraryTree& tree, FormulaList& list,
                   EditActions& actions)
    : selection_(selection),
      tree_(tree),
      list_(list),
      actions_(actions),
      menu_(new QMenu(tree.view().parentWidget())) {
    menu_->setObjectName(QStringLiteral("PopTreeMnu"));
    ui::NodeView& nodes = tree.view();
    ui::NodeView& formulas = list.view();
    nodes.setCommandKeys(actions.itemKeys());
    formulas.setCommandKeys(actions.itemKeys());
    connect(&nodes, &ui::NodeView::menuRequested, this,
            [this](const QModelIndex& index, const QPoint& position) {
                openOnTree(tree_.model().idOf(index), position);
            });
    connect(&formulas, &ui::NodeView::menuRequested, this, &EditMenu::openOnList);
    connect(&nodes, &ui::NodeView::commandKeyPressed, this, [this](const QKeySequence& key) {
        selection_.makeNodeCurrent();
        actions_.trigger(key);
    });
    connect(&formulas, &ui::NodeView::commandKeyPressed, this, [this](const QKeySequence& key) {
        selection_.makeFormulaCurrent();
        const bool deletes = key == actions_.action(EditCommand::Delete).shortcut();
        if (!deletes || selection_.isFormulaSelected()) {
            actions_.trigger(key);
        }
    });
}

void EditMenu::openOnTree(const NodeId& node, const QPoint& position) {
    if (!tree_.firstNode().isValid()) {
        selection_.SetSelectionState(SelectionState::Nothing);
        open(Tree, position);
        return;
    }
    // The menu is for the node that is selected, and so shown.
    if (node.isValid() && node != tree_.selectedNode()) {
        selection_.selectNode(node);
        if (tree_.selectedNode() != node) {
            return;
        }
    }
    selection_.makeNodeCurrent();
    open(Tree, position);
}

void EditMenu::openOnList(const QModelIndex& index, const QPoint& position) {
    if (index.isValid()) {
        const qint32 id = list_.model().idAt(index);
        if (selection_.formula() != id) {
            selection_.selectFormula(id);
        }
        if (selection_.formula() != id) {
            return;
        }
        selection_.setFormulaSelected(true);
    } else if (selection_.formula()) {
        return;  // the click on empty space has been refused
    }
    selection_.makeFormulaCurrent();
    open(List, position);
}

void EditMenu::open(Place place, const QPoint& position) {
    struct Entry {
        std::optional<EditCommand> command;
        const char* separator;
        unsigned places;
    };
    constexpr unsigned kBoth = Tree | List;
    static const Entry kEntries[] = {
        {EditCommand::LibraryManager, nullptr, Tree}, {std::nullopt, "mnuPopLine5", Tree},
        {EditCommand::NewFolder, nullptr, Tree},      {EditCommand::NewFormula, nullptr, List},
        {EditCommand::Delete, nullptr, kBoth},        {std::nullopt, "mnuPopLine4", kBoth},
        {EditCommand::LocateNode, nullptr, Tree},     {EditCommand::LocateFormula, nullptr, List},
        {EditCommand::VariableSource, nullptr, List}, {std::nullopt, "mnuPopLine1", kBoth},
        {EditCommand::MoveUp, nullptr, kBoth},        {EditCommand::MoveDown, nullptr, kBoth},
        {std::nullopt, "mnuPopLine2", kBoth},         {EditCommand::Copy, nullptr, kBoth},
        {EditCommand::Paste, nullptr, kBoth},         {std::nullopt, "mnuPopLine3", kBoth},
        {EditCommand::Rename, nullptr, kBoth},
    };
    // The actions are those of the tool bar: an entry is hidden by leaving it out of the menu.
    menu_->clear();
    for (const Entry& entry : kEntries) {
        if ((entry.places & place) == 0) {
            continue;
        }
        if (entry.command) {
            menu_->addAction(&actions_.action(*entry.command));
        } else {
            menu_->addSeparator()->setObjectName(QString::fromLatin1(entry.separator));
        }
    }
    menu_->popup(position);
}

}  // namespace varo
