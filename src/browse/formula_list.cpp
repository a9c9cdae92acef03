#include "control/formula_list.h"

#include "control/formula_reader.h"
#include "control/work_files.h"
#include "platform/ui/node_view.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <QSet>

namespace varo {

FormulaList::FormulaList(Form& form, ControlState& state, Questions& questions, FormulaPane& pane)
    : form_(form), state_(state), questions_(questions), pane_(pane), model_(state.listedFormulas) {
    form.lvFormula->setModel(&model_);
    connect(form.lvFormula, &ui::NodeView::nodeClicked, this, &FormulaList::clickFormula);
    connect(form.lvFormula, &ui::NodeView::emptyClicked, this, &FormulaList::clickEmptySpace);
    connect(form.lvFormula, &ui::NodeView::pressedAt, this,
            [this](const QModelIndex& index, Qt::MouseButton button) {
                if (!index.isValid() && button == Qt::RightButton) {
                    clickEmptySpace();
                }
            });
}

void FormulaList::clear() {
    model_.beginReplace();
    state_.listedFormulas.Clear();
    state_.currentFormulaKey.clear();
    state_.listedNodeKey.clear();
    state_.formulaSelected = false;
    model_.endReplace({});
}

bool FormulaList::storeEdits() {
    // Both, whatever the first says: a label left open would reach another library later.
    const bool folderStored = form_.tvFolder->commitEdit();
    const bool formulaStored = form_.lvFormula->commitEdit();
    return pane_.storeEdits() && folderStored && formulaStored;
}

QString FormulaList::appendFormula(const clsFormulaInfo& formula) {
    const QString key = formulaKey(formula.FormulaID);
    // A damaged table gives out identifiers that are taken; the key stays with the listed formula.
    if (!state_.listedFormulas.contains(key)) {
        model_.beginAppend();
        state_.listedFormulas.Add(formula);
        model_.endAppend(ui::FormulaImage::Formula);
    }
    return key;
}

void FormulaList::removeFormula(const QString& key) {
    const QModelIndex item = model_.find(key);
    if (!item.isValid()) {
        return;
    }
    model_.beginRemove(item.row());
    state_.listedFormulas.Remove(key);
    model_.endRemove();
    if (state_.currentFormulaKey == key) {
        state_.currentFormulaKey.clear();
    }
}

bool FormulaList::ShowFolderFormulas(qint32 folderID) {
    QSet<qint32> withProperty;
    model_.beginReplace();
    state_.listedFormulas.Clear();
    state_.listedLibrary = state_.currentLibrary();
    // What the panel still shows is none of the formulas that are listed now, whatever their keys.
    state_.currentFormulaKey.clear();
    state_.formulaSelected = false;
    data::Recordset rs;
    const bool propertiesRead =
        state_.dbFuncs.GetAllPropertyByType(NodeTypeFormula, rs, state_.connection) && attempt([&] {
            for (; !rs.atEnd(); rs.moveNext()) {
                withProperty.insert(rs.integer(u"NodeID"));
            }
        });
    rs.close();
    FormulaReader reader(state_, listedPictureFile, messages_);
    const bool read = propertiesRead && reader.read(folderID, state_.listedFormulas);
    std::vector<ui::FormulaImage> images;
    for (const clsFormulaInfo& formula : state_.listedFormulas) {
        images.push_back(withProperty.contains(formula.FormulaID)
                             ? ui::FormulaImage::FormulaWithProperty
                             : ui::FormulaImage::Formula);
    }
    model_.endReplace(std::move(images));
    if (!propertiesRead) {
        messages_.inform(QStringLiteral("无法读取“属性”信息！"));
    }
    return read;
}

void FormulaList::SelFormula(const QString& TheKey) {
    if (!storeEdits()) {
        return;
    }
    emit showing();
    const QModelIndex item = model_.find(TheKey);
    if (!item.isValid()) {
        return;
    }
    form_.lvFormula->selectItem(item);
    form_.lvFormula->scrollTo(item);
    pane_.ClearFormulaPanel();
    state_.currentItemKey = TheKey;
    state_.currentFormulaKey = TheKey;
    state_.formulaSelected = true;
    setCommandState(CommandState::FormulaSelected);
    const clsFormulaInfo& formula = state_.listedFormulas.Item(TheKey);
    pane_.showDescription(formula);
    pane_.SetPanelState(FormulaPane::FormulaSelected);
    // Last: calculating asks the host, who may turn to something else.
    pane_.showExpression(formula);
}

void FormulaList::setCommandState(CommandState state) {
    state_.commandState = state;
    emit commandStateChanged(state);
}

void FormulaList::makeSelectedCurrent() {
    const QString selected = selectedKey();
    if (selected.isEmpty()) {
        setCommandState(CommandState::NoFormula);
        return;
    }
    state_.currentItemKey = selected;
    setCommandState(CommandState::FormulaSelected);
}

void FormulaList::SetSelectionState(int state) {
    pane_.ClearFormulaPanel();
    pane_.SetPanelState(state);
    setCommandState(static_cast<CommandState>(state));
}

void FormulaList::clickFormula(const QModelIndex& index) {
    SelFormula(ui::NodeView::keyOf(index));
}

void FormulaList::clickEmptySpace() {
    if (!storeEdits()) {
        return;
    }
    state_.formulaSelected = false;
    form_.lvFormula->selectItem({});
    SetSelectionState(FormulaPane::NoFormula);
}

void FormulaList::showNothing() {
    clear();
    SetSelectionState(FormulaPane::NoFormula);
    pane_.showNoPicture();
}

void FormulaList::showNone() {
    pane_.showNoPicture();
    pane_.ClearFormulaPanel();
    pane_.SetPanelState(FormulaPane::FolderSelected);
}

QString FormulaList::selectedKey() const {
    return form_.lvFormula->selectedKey();
}

void FormulaList::setImage(const QString& key, ui::FormulaImage image) {
    const QModelIndex item = model_.find(key);
    if (item.isValid()) {
        model_.setImage(item, image);
    }
}

}  // namespace varo
