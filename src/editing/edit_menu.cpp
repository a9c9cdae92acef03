#include "editing/edit_menu.h"

#include "control/configuration.h"
#include "platform/ui/node_view.h"
#include "store/library_connection.h"

#include <QAction>

#include <optional>

namespace varo {

EditMenu::EditMenu(Form& form, ControlState& state, EditActions& actions, LibraryTree& tree,
                   FormulaList& list)
    : form_(form),
      state_(state),
      actions_(actions),
      tree_(tree),
      list_(list),
      menu_(form.PicControl) {
    menu_.setObjectName(QStringLiteral("PopTreeMnu"));
    for (ui::NodeView* view : {form.tvFolder, form.lvFormula}) {
        view->setCommandKeys(actions.shortcuts());
    }
    connect(form.tvFolder, &ui::NodeView::menuRequested, this, &EditMenu::openOnTree);
    connect(form.lvFormula, &ui::NodeView::menuRequested, this, &EditMenu::openOnList);
    connect(form.tvFolder, &ui::NodeView::commandKeyPressed, this, [this](const QKeySequence& key) {
        tree_.makeSelectedCurrent();
        actions_.trigger(key);
    });
    connect(form.lvFormula, &ui::NodeView::commandKeyPressed, this,
            [this](const QKeySequence& key) {
                list_.makeSelectedCurrent();
                actions_.trigger(key);
            });
}

void EditMenu::openOnTree(const QModelIndex& index, const QPoint& position) {
    if (form_.tvFolder->model()->rowCount() == 0) {
        // The first library can be added wherever there is a configuration file to name it.
        list_.setCommandState(CommandState::Nothing);
        const QString folder = normalisedFolder(state_.configurationFolder);
        actions_.setEnabled(EditCommand::LibraryManager,
                            !folder.isEmpty() && Configuration::exists(folder));
    } else {
        // What the menu speaks of is what is selected, and so what is shown.
        if (index.isValid() && index != form_.tvFolder->selectedIndex()) {
            tree_.selectNode(ui::NodeView::keyOf(index));
        }
        tree_.makeSelectedCurrent();
    }
    open(Tree, position);
}

void EditMenu::openOnList(const QModelIndex& index, const QPoint& position) {
    if (index.isValid() && index != form_.lvFormula->selectedIndex()) {
        list_.SelFormula(ui::NodeView::keyOf(index));
    }
    list_.makeSelectedCurrent();
    open(List, position);
}

void EditMenu::open(Place place, const QPoint& position) {
    struct Entry {
        std::optional<EditCommand> command;
        const char* separator;
        unsigned places;
    };
    constexpr unsigned both = Tree | List;
    static const Entry entries[] = {
        {EditCommand::LibraryManager, nullptr, Tree}, {std::nullopt, "mnuPopLine5", Tree},
        {EditCommand::NewFolder, nullptr, Tree},      {EditCommand::NewFormula, nullptr, List},
        {EditCommand::Delete, nullptr, both},         {std::nullopt, "mnuPopLine4", both},
        {EditCommand::LocateNode, nullptr, Tree},     {EditCommand::LocateFormula, nullptr, List},
        {EditCommand::VariableSource, nullptr, List}, {std::nullopt, "mnuPopLine1", both},
        {EditCommand::MoveUp, nullptr, both},         {EditCommand::MoveDown, nullptr, both},
        {std::nullopt, "mnuPopLine2", both},          {EditCommand::Copy, nullptr, both},
        {EditCommand::Paste, nullptr, both},          {std::nullopt, "mnuPopLine3", both},
        {EditCommand::Rename, nullptr, both},
    };
    // The actions are those of the tool bar: an entry is hidden by leaving it out of the menu.
    menu_.clear();
    for (const Entry& entry : entries) {
        if ((entry.places & place) == 0) {
            continue;
        }
        if (entry.command) {
            menu_.addAction(&actions_.action(*entry.command));
        } else {
            menu_.addSeparator()->setObjectName(QString::fromLatin1(entry.separator));
        }
    }
    menu_.popup(position);
}

}  // namespace varo
