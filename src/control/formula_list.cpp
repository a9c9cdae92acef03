#include "control/formula_list.h"

#include "platform/ui/node_view.h"
#include "store/keys.h"
#include "store/library_connection.h"

#include <QSet>

namespace varo {

namespace {

/// Picture type of a formula whose picture is stored in its row.
constexpr qint32 StoredPicture = 2;

}  // namespace

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

QString FormulaList::appendFormula(qint32 id, const QString& name, qint32 folderID) {
    const QString key = formulaKey(id);
    // A damaged table gives out identifiers that are taken; the key stays with the listed formula.
    if (!state_.listedFormulas.contains(key)) {
        model_.beginAppend();
        state_.listedFormulas.Add(id, name, {}, {}, {}, 0, folderID, {});
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
    std::vector<ui::FormulaImage> images;
    QSet<qint32> withProperty;
    model_.beginReplace();
    state_.listedFormulas.Clear();
    state_.listedLibrary = state_.currentLibrary();
    // What the panel still shows is none of the formulas that are listed now, whatever their keys.
    state_.currentFormulaKey.clear();
    state_.formulaSelected = false;
    data::Recordset rs;
    bool propertiesRead =
        state_.dbFuncs.GetAllPropertyByType(NodeTypeFormula, rs, state_.connection);
    try {
        for (; propertiesRead && !rs.atEnd(); rs.moveNext()) {
            withProperty.insert(rs.integer(u"NodeID"));
        }
    } catch (const data::Error&) {
        propertiesRead = false;
    }
    CloseRecordset(rs);
    const bool read = propertiesRead && readFormulas(folderID, withProperty, images);
    model_.endReplace(std::move(images));
    if (!propertiesRead) {
        questions_.inform(QStringLiteral("无法读取“属性”信息！"));
    }
    return read;
}

bool FormulaList::readFormulas(qint32 folderID, const QSet<qint32>& withProperty,
                               std::vector<ui::FormulaImage>& images) {
    data::Recordset rs;
    if (!state_.dbFuncs.GetFormulaByPID(folderID, rs, state_.connection)) {
        return false;
    }
    try {
        const int id = rs.column(u"ID");
        const int name = rs.column(u"Name");
        const int expression = rs.column(u"Formula");
        const int memo = rs.column(u"Memo");
        const int picType = rs.column(u"PicType");
        bool extracting = true;
        for (; !rs.atEnd(); rs.moveNext()) {
            const qint32 formulaID = rs.integer(id);
            // A damaged table can hold an identifier twice; its key is taken by the first row.
            if (state_.listedFormulas.contains(formulaKey(formulaID))) {
                continue;
            }
            const qint32 pictureType = rs.integer(picType);
            const QString picture = extractPicture(formulaID, pictureType, extracting);
            state_.listedFormulas.Add(formulaID, rs.text(name), rs.text(expression), rs.text(memo),
                                      picture, pictureType, folderID, QString());
            images.push_back(withProperty.contains(formulaID)
                                 ? ui::FormulaImage::FormulaWithProperty
                                 : ui::FormulaImage::Formula);
        }
    } catch (const data::Error&) {
        CloseRecordset(rs);
        return false;
    }
    CloseRecordset(rs);
    return true;
}

QString FormulaList::extractPicture(qint32 formulaID, qint32 pictureType, bool& extracting) {
    if (pictureType != StoredPicture || !extracting) {
        return {};
    }
    const QString file =
        state_.workFolder + QString::number(formulaID) + QStringLiteral("TempPic.bmp");
    bool fileRefused = false;
    const bool extracted =
        state_.dbFuncs.ExtractPicture(formulaID, file, state_.connection, &fileRefused);
    // A folder that takes no file takes none for the other formulas either: one message is enough.
    extracting = !fileRefused;
    return extracted ? file : QString();
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
    const clsFormulaInfo& formula = state_.listedFormulas.Item(TheKey);
    pane_.showDescription(formula);
    pane_.SetPanelState(FormulaPane::FormulaSelected);
    pane_.showExpression(formula);
    state_.currentItemKey = TheKey;
    state_.currentFormulaKey = TheKey;
    state_.formulaSelected = true;
    setCommandState(CommandState::FormulaSelected);
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
    SelFormula(index.data(ui::NodeView::KeyRole).toString());
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
