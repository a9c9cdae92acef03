#include "control/varo_calcex.h"

#include "control/configuration.h"
#include "control/form.h"
#include "control/formula_list.h"
#include "control/library_tree.h"
#include "control/panes.h"
#include "control/state.h"
#include "control/work_folder.h"
#include "editing/edit_commands.h"
#include "editing/edit_menu.h"
#include "editing/pictures.h"
#include "formula/formula_pane.h"
#include "platform/ui/message_boxes.h"
#include "platform/ui/node_view.h"
#include "platform/ui/registered_message.h"
#include "platform/ui/wait_cursor.h"
#include "search/property_locator.h"
#include "store/library_connection.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QStandardPaths>
#include <QUrl>

#include <vector>

namespace varo {

namespace {

/// Folder of the program that the control is part of, where its help file lies.
QString componentFolder() {
    return normalisedFolder(QCoreApplication::applicationDirPath());
}

/// Where working files may lie, the best place first.
QStringList workFolders() {
    return {
        componentFolder(),
        normalisedFolder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation))};
}

}  // namespace

/// The control's state, its widgets and one object for each capability.
struct Varo_CalcEx::Parts : PropertySource {
    Parts(Varo_CalcEx& owner, Questions* given)
        : control(owner),
          boxes(&owner),
          questions(given == nullptr ? boxes : *given),
          state(questions),
          configuration(state.libraries),
          form(buildForm(&owner)),
          panes(form, owner),
          actions(form, state),
          pane(form, state, questions, *this),
          list(form, state, questions, pane),
          tree(form, state, questions, list),
          folders(form, state, questions, tree, list),
          formulas(form, state, questions, tree, list),
          commands(state, actions, folders, formulas),
          menu(form, state, actions, tree, list),
          pictures(form, state, questions, pane.description()),
          locator(state, questions, *this, tree, list) {}

    QString propertyValue(const QString& name) override;
    bool prepareFolder();
    void leaveNotStarted();
    void ShowHelp();
    void sendResult();

    Varo_CalcEx& control;
    ui::MessageBoxes boxes;
    Questions& questions;
    std::vector<std::unique_ptr<WorkFolder>> defaultFolders;  ///< those whose files are in use
    ControlState state;
    Configuration configuration;
    Form form;
    Panes panes;
    EditActions actions;
    FormulaPane pane;
    FormulaList list;
    LibraryTree tree;
    FolderCommands folders;
    FormulaCommands formulas;
    EditCommands commands;
    EditMenu menu;
    Pictures pictures;
    PropertyLocator locator;
    QEvent::Type calcMessage = QEvent::None;
};

Varo_CalcEx::Varo_CalcEx(QWidget* parent, Questions* questions)
    : QWidget(parent), parts_(std::make_unique<Parts>(*this, questions)) {
    setObjectName(QStringLiteral("Varo_CalcEx"));
    Parts& parts = *parts_;
    parts.calcMessage = ui::registerWindowMessage(QString::fromLatin1(CalcMessage));
    setWorkFolder(QString());
    connect(&parts.list, &FormulaList::commandStateChanged, &parts.actions,
            &EditActions::setCommandState);
    parts.form.tvFolder->setEnabled(false);
    parts.form.lvFormula->setEnabled(false);
    parts.list.SetSelectionState(FormulaPane::NothingSelected);
    EditActions& actions = parts.actions;
    actions.connectCommand(EditCommand::Help, [&parts] { parts.ShowHelp(); });
    actions.connectCommand(EditCommand::FindNext, [&parts] { parts.locator.showNext(); });
    actions.connectCommand(EditCommand::FindPrevious, [&parts] { parts.locator.showPrevious(); });
    connect(&parts.locator, &PropertyLocator::stepsChanged, this,
            [&actions](bool canStepNext, bool canStepBack) {
                actions.setEnabled(EditCommand::FindNext, canStepNext);
                actions.setEnabled(EditCommand::FindPrevious, canStepBack);
            });
    connect(&parts.pane.calculator(), &Calculator::resultSent, this,
            [&parts] { parts.sendResult(); });
}

Varo_CalcEx::~Varo_CalcEx() {
    // What is being typed is stored when its box loses the focus, as long as all is still there.
    // The widgets outlive the parts, whose event filters and connections end with them.
    QWidget* focused = QApplication::focusWidget();
    if (focused != nullptr && isAncestorOf(focused)) {
        focused->clearFocus();
    }
    parts_->list.clear();
    parts_->state.clipboard.clear();
}

QSize Varo_CalcEx::sizeHint() const {
    return {1000, 680};
}

void Varo_CalcEx::resizeEvent(QResizeEvent*) {
    parts_->panes.follow();
}

void Varo_CalcEx::showEvent(QShowEvent*) {
    parts_->panes.follow();
    parts_->panes.endFirstLayout();
}

void Varo_CalcEx::SetDeployFolder(const QString& strFolder) {
    parts_->state.configurationFolder = strFolder;
}

void Varo_CalcEx::RunCalc() {
    Parts& parts = *parts_;
    if (parts.state.started) {
        parts.tree.removeHighlight();
        return;
    }
    parts.list.storeEdits();
    parts.tree.clear();
    parts.list.clear();
    parts.leaveNotStarted();
    if (!parts.prepareFolder()) {
        return;
    }
    QString error;
    if (!parts.configuration.ReadConfigFile(parts.state.configurationFolder, error)) {
        if (!error.isEmpty()) {
            parts.questions.inform(error);
        }
        return;
    }
    const ui::clsWaitCursor waiting;
    if (!parts.tree.BuildFormulaTree()) {
        parts.leaveNotStarted();
        return;
    }
    parts.state.highlight.set = false;
    parts.tree.selectFirstNode();
    parts.state.started = true;
}

bool Varo_CalcEx::Parts::prepareFolder() {
    if (state.configurationFolder.isEmpty()) {
        questions.inform(QStringLiteral("用户没有指定配置文件路径！"));
        return false;
    }
    const QString folder = normalisedFolder(state.configurationFolder);
    if (!QFileInfo(folder).isDir()) {
        questions.inform(QStringLiteral("用户指定的配置文件路径不存在！"));
        return false;
    }
    state.configurationFolder = folder;
    if (!Configuration::exists(folder)) {
        questions.inform(QStringLiteral("没有在用户指定的配置文件路径下发现配置文件！"));
        return false;
    }
    return true;
}

void Varo_CalcEx::Parts::leaveNotStarted() {
    form.tvFolder->setEnabled(true);
    form.lvFormula->setEnabled(false);
    list.SetSelectionState(FormulaPane::NothingSelected);
}

void Varo_CalcEx::ClickTreeNode(const QString& TheKey) {
    parts_->tree.removeHighlight();
    parts_->tree.selectNode(TheKey);
}

void Varo_CalcEx::SelFormula(const QString& TheKey) {
    parts_->list.SelFormula(TheKey);
}

void Varo_CalcEx::SetDesignProp(const QString& TheLocationPropName) {
    parts_->locator.locate(TheLocationPropName);
}

void Varo_CalcEx::SetSelPropValue(const QString& ThePropValue) {
    parts_->state.hostValue = ThePropValue;
}

QString Varo_CalcEx::Parts::propertyValue(const QString& name) {
    state.hostValue.clear();
    bool answered = false;
    emit control.GetPropValue(name, answered);
    return state.hostValue;
}

void Varo_CalcEx::SetCellInfo(qint32 UnitContentID, qint32 UnitTypeID, qint32 PrptysetID,
                              qint32 RecordsetID, qint32 FieldID, qint32 RecNum) {
    parts_->state.cell = {UnitContentID, UnitTypeID, PrptysetID, RecordsetID, FieldID, RecNum};
    if (parts_->pane.variables().refreshPropertyValues()) {
        parts_->pane.calculator().calculate();
    }
}

void Varo_CalcEx::GetCellInfo(qint32& UnitContentID, qint32& UnitTypeID, qint32& PrptysetID,
                              qint32& RecordsetID, qint32& FieldID, qint32& RecNum) const {
    const CellInfo& cell = parts_->state.cell;
    UnitContentID = cell.UnitContentID;
    UnitTypeID = cell.UnitTypeID;
    PrptysetID = cell.PrptysetID;
    RecordsetID = cell.RecordsetID;
    FieldID = cell.FieldID;
    RecNum = cell.RecNum;
}

void Varo_CalcEx::setWorkFolder(const QString& folder) {
    Parts& parts = *parts_;
    const bool inUse =
        parts.state.listedFormulas.Count() > 0 || parts.state.clipboard.formulas.Count() > 0;
    if (!inUse) {
        parts.defaultFolders.clear();
    }
    if (folder.isEmpty()) {
        parts.defaultFolders.push_back(std::make_unique<WorkFolder>(workFolders()));
    }
    parts.state.workFolder =
        folder.isEmpty() ? parts.defaultFolders.back()->path() : normalisedFolder(folder);
}

void Varo_CalcEx::setValuePicker(ValuePicker* picker) {
    parts_->pane.variables().setValuePicker(picker);
}

void Varo_CalcEx::Parts::ShowHelp() {
    const QString file = componentFolder() + QStringLiteral("PelmHelp.chm");
    if (!QFileInfo(file).isFile() || !QDesktopServices::openUrl(QUrl::fromLocalFile(file))) {
        questions.inform(QStringLiteral("无法找到帮助文件！"));
    }
}

void Varo_CalcEx::Parts::sendResult() {
    // A control that stands alone is its own host window.
    ui::postWindowMessage(control.window(), calcMessage, 0, ui::windowHandleOf(form.txtResult));
}

}  // namespace varo
