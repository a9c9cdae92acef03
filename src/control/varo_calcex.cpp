#include "control/varo_calcex.h"

#include "browse/reading_notice.h"
#include "browse/selection_controller.h"
#include "control/library_management.h"
#include "editing/edit_commands.h"
#include "editing/edit_menu.h"
#include "editing/picture_area.h"
#include "form/form.h"
#include "form/panes.h"
#include "formula/formula_pane.h"
#include "library/picture_store.h"
#include "platform/ui/message_boxes.h"
#include "platform/ui/node_view.h"
#include "platform/ui/registered_message.h"
#include "platform/ui/result_box.h"
#include "platform/ui/wait_cursor.h"
#include "search/find_dialog.h"
#include "search/find_steps.h"
#include "search/locate_conditions.h"
#include "search/property_locator.h"
#include "store/keys.h"
#include "store/library_connection.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPointer>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

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

/// The host's cell: six numbers that the control only keeps.
struct CellInfo {
    qint32 UnitContentID = 0;
    qint32 UnitTypeID = 0;
    qint32 PrptysetID = 0;
    qint32 RecordsetID = 0;
    qint32 FieldID = 0;
    qint32 RecNum = 0;
};

}  // namespace

/// The control's state, its widgets and one object for each capability.
struct Varo_CalcEx::Parts : PropertySource {
    Parts(Varo_CalcEx& owner, Questions* given);

    QString propertyValue(const QString& name) override;
    bool prepareFolder();
    bool start();
    void connectCommands();
    void manageLibraries(const QStringList& dropped = {});
    void ShowHelp();
    void sendResult();
    void closeReplaced();

    Varo_CalcEx& control;
    ui::MessageBoxes boxes;
    Questions& questions;

    QString configurationFolder;  ///< folder of the configuration file, as the host gave it
    bool started = false;         ///< RunCalc has built the tree
    QString hostValue;            ///< the host's answer to GetPropValue
    CellInfo cell;
    QEvent::Type calcMessage = QEvent::None;

    colFormulaDB libraries;  ///< in the order of the configuration file
    WorkingFiles files;
    CurrentLibrary library;
    Clipboard clipboard;
    PictureStore pictureStore;
    PropertySearch propertySearch;

    Form form;
    Panes panes;
    FormulaPane pane;
    LibraryTree tree;
    ReadingNotice readingNotice;
    FormulaList list;
    SelectionController selection;
    EditActions actions;
    FolderCommands folders;
    FormulaCommands formulas;
    EditCommands commands;
    EditMenu menu;
    PictureCommands pictures;
    PictureArea pictureArea;
    PropertyLocator locator;
    FindLocator findLocator;
    FindResults findResults;
    FindSteps findSteps;
    PropertyEditor propertyEditor;
    LocateConditions locateConditions;
    TreeRebuild rebuild;
    LibraryManagement management;
};

Varo_CalcEx::Parts::Parts(Varo_CalcEx& owner, Questions* given)
    : control(owner),
      boxes(&owner),
      questions(given == nullptr ? boxes : *given),
      calcMessage(ui::registerWindowMessage(QString::fromLatin1(kCalcMessage))),
      library(libraries, questions),
      clipboard(files),
      pictureStore(library, files),
      propertySearch(libraries, *this),
      form(buildForm(&owner)),
      panes(form, owner),
      pane(form.panel, library, *this, questions),
      tree(*form.tvFolder, library, questions),
      readingNotice(tree, *form.lblReading),
      list(*form.lvFormula, library, files),
      selection(tree, list, pane, library, questions),
      actions(*form.tbEdit, selection, tree, list, clipboard),
      folders(selection, tree, library, clipboard, questions),
      formulas(selection, list, library, clipboard, questions),
      commands(selection, clipboard, actions, folders, formulas),
      menu(selection, tree, list, actions),
      pictures(selection, list, pane.description(), pictureStore, questions),
      pictureArea(form.panel.description, pane.description(), selection, pictures),
      locator(selection, library, propertySearch, questions),
      findLocator(selection, tree, list, questions),
      findResults(tree),
      findSteps(*form.PicControl, findResults, findLocator, actions.action(EditCommand::FindNext),
                actions.action(EditCommand::FindPrevious)),
      propertyEditor(library, files, *this, questions, owner),
      locateConditions(selection, tree, list, propertyEditor),
      rebuild(selection, tree, list, library, locator),
      management(owner, libraries, rebuild, given, questions) {
    connectCommands();
}

void Varo_CalcEx::Parts::connectCommands() {
    actions.connectCommand(EditCommand::Help, [this] { ShowHelp(); });
    // Queued: the host may destroy the control, and with it the menu, while a dialog is open.
    const auto connectDialog = [this](EditCommand command, auto open) {
        actions.connectCommand(command, [this, open] {
            QMetaObject::invokeMethod(&control, open, Qt::QueuedConnection);
        });
    };
    connectDialog(EditCommand::Find, [this] {
        if (selection.storeEdits()) {
            openFindDialog(libraries, findResults, findLocator, questions, &control);
        }
    });
    connectDialog(EditCommand::LibraryManager, [this] { manageLibraries(); });
    connectDialog(EditCommand::VariableSource, [this] {
        if (selection.formulaForCommand()) {
            pane.editVariableSources();
        }
    });
    // While the library is lent to the dialog, no formula takes new values of the host.
    const auto connectConditions = [this, connectDialog](EditCommand command, auto edit) {
        connectDialog(command, [this, edit] {
            const QPointer<QWidget> alive(&control);
            (locateConditions.*edit)();
            if (!alive.isNull()) {
                pane.refreshPropertyValues();
            }
        });
    };
    connectConditions(EditCommand::LocateNode, &LocateConditions::editNode);
    connectConditions(EditCommand::LocateFormula, &LocateConditions::editFormula);
    connect(&tree.view(), &ui::NodeView::filesDropped, &control,
            [this](const QStringList& dropped) { manageLibraries(dropped); });
    connect(&selection, &SelectionController::stateChanged, &control, [this](SelectionState state) {
        // The first library can be added wherever there is a configuration file to name it.
        const bool canManage = state != SelectionState::Nothing || management.canManage();
        actions.setEnabled(EditCommand::LibraryManager, canManage);
        form.tvFolder->setAcceptDrops(canManage);
    });
    actions.connectCommand(EditCommand::FindNext, [this] { locator.showNext(); });
    actions.connectCommand(EditCommand::FindPrevious, [this] { locator.showPrevious(); });
    connect(&locator, &PropertyLocator::stepsChanged, &control,
            [this](bool canStepNext, bool canStepBack) {
                actions.setEnabled(EditCommand::FindNext, canStepNext);
                actions.setEnabled(EditCommand::FindPrevious, canStepBack);
            });
    connect(&pane.calculator(), &Calculator::resultSent, &control, [this] { sendResult(); });
    // What has failed is told first, by the command.
    library.setReplacedNotice(
        [this] { QTimer::singleShot(0, &control, [this] { closeReplaced(); }); });
}

/// Another program has deleted or replaced the open library, or given it a write-ahead log: nothing
/// more is stored in it, and what is at its path is opened when one of its nodes is selected.
void Varo_CalcEx::Parts::closeReplaced() {
    if (!library.isOpen() || library.isInPlace()) {
        return;
    }
    const QString path = library.folder() + library.fileName();
    library.close();
    selection.showNothing();
    questions.inform(
        QStringLiteral("其他程序删除、替换、截短了打开的公式库文件，或者改变了它的日志方式：\n"
                       "%1\n刚才的修改没有保存！")
            .arg(path));
}

Varo_CalcEx::Varo_CalcEx(QWidget* parent, Questions* questions)
    : QWidget(parent), parts_(std::make_unique<Parts>(*this, questions)) {
    setObjectName(QStringLiteral("Varo_CalcEx"));
    setWorkFolder(QString());
    parts_->form.tvFolder->setEnabled(false);
    parts_->form.lvFormula->setEnabled(false);
    parts_->selection.SetSelectionState(SelectionState::Nothing);
}

Varo_CalcEx::~Varo_CalcEx() {
    // What is being typed is stored when its box loses the focus, as long as all is still there.
    // The widgets outlive the parts, whose event filters and connections end with them.
    QWidget* focused = QApplication::focusWidget();
    if (focused != nullptr && isAncestorOf(focused)) {
        focused->clearFocus();
    }
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
    parts_->configurationFolder = strFolder;
}

void Varo_CalcEx::RunCalc() {
    Parts& parts = *parts_;
    if (parts.started || parts.management.isOpen()) {
        parts.selection.highlight().remove();
        return;
    }
    // The widget that has the focus may be disabled on the way.
    const QWidget* focused = QApplication::focusWidget();
    const bool hadFocus = focused != nullptr && (focused == this || isAncestorOf(focused));
    // A message may let the host call again: what it has started stays started.
    if (parts.start()) {
        parts.started = true;
    }
    if (hadFocus) {
        parts.form.tvFolder->setFocus();
    }
}

bool Varo_CalcEx::Parts::start() {
    rebuild.clear();
    management.forget();
    if (!prepareFolder()) {
        return false;
    }
    QString error;
    if (!management.read(configurationFolder, error)) {
        rebuild.showNothing();
        if (!error.isEmpty()) {
            questions.inform(error);
        }
        return false;
    }
    const ui::clsWaitCursor waiting;
    return rebuild.build(libraries, OnUnreadable::Stop);
}

void Varo_CalcEx::Parts::manageLibraries(const QStringList& dropped) {
    if (management.isOpen() || !selection.storeEdits()) {
        return;
    }
    const auto outcome = management.manage(dropped);
    if (outcome == LibraryManagement::Outcome::Unchanged) {
        return;  // the control may have been destroyed
    }
    started = outcome == LibraryManagement::Outcome::AllRead ||
              (started && outcome == LibraryManagement::Outcome::SomeUnread);
    form.tvFolder->setFocus();
}

bool Varo_CalcEx::Parts::prepareFolder() {
    if (configurationFolder.isEmpty()) {
        questions.inform(QStringLiteral("用户没有指定配置文件路径！"));
        return false;
    }
    const QString folder = normalisedFolder(configurationFolder);
    if (!QFileInfo(folder).isDir()) {
        questions.inform(QStringLiteral("用户指定的配置文件路径不存在！"));
        return false;
    }
    configurationFolder = folder;
    if (!Configuration::recover(folder)) {
        questions.inform(QStringLiteral("没有在用户指定的配置文件路径下发现配置文件！"));
        return false;
    }
    return true;
}

void Varo_CalcEx::ClickTreeNode(const QString& TheKey) {
    parts_->selection.highlight().remove();
    parts_->selection.selectNode(nodeWithKey(TheKey));
}

void Varo_CalcEx::SelFormula(const QString& TheKey) {
    if (isFormulaKey(TheKey)) {
        parts_->selection.selectFormula(formulaIdOf(TheKey));
    } else {
        parts_->selection.highlight().remove();
    }
}

void Varo_CalcEx::SetDesignProp(const QString& TheLocationPropName) {
    parts_->locator.locate(TheLocationPropName);
}

void Varo_CalcEx::SetSelPropValue(const QString& ThePropValue) {
    parts_->hostValue = ThePropValue;
}

QString Varo_CalcEx::Parts::propertyValue(const QString& name) {
    hostValue.clear();
    bool answered = false;
    const QPointer<Varo_CalcEx> alive(&control);
    emit alive->GetPropValue(name, answered);
    return alive.isNull() ? QString() : hostValue;
}

void Varo_CalcEx::SetCellInfo(qint32 UnitContentID, qint32 UnitTypeID, qint32 PrptysetID,
                              qint32 RecordsetID, qint32 FieldID, qint32 RecNum) {
    parts_->cell = {UnitContentID, UnitTypeID, PrptysetID, RecordsetID, FieldID, RecNum};
    parts_->pane.refreshPropertyValues();
}

void Varo_CalcEx::GetCellInfo(qint32& UnitContentID, qint32& UnitTypeID, qint32& PrptysetID,
                              qint32& RecordsetID, qint32& FieldID, qint32& RecNum) const {
    const CellInfo& cell = parts_->cell;
    UnitContentID = cell.UnitContentID;
    UnitTypeID = cell.UnitTypeID;
    PrptysetID = cell.PrptysetID;
    RecordsetID = cell.RecordsetID;
    FieldID = cell.FieldID;
    RecNum = cell.RecNum;
}

void Varo_CalcEx::setWorkFolder(const QString& folder) {
    Parts& parts = *parts_;
    if (parts.list.isEmpty() && !parts.clipboard.holdsFormulas()) {
        parts.files.discard();
    }
    parts.files.setFolder(folder, workFolders());
}

void Varo_CalcEx::Parts::ShowHelp() {
    const QString file = componentFolder() + QStringLiteral("PelmHelp.chm");
    if (!QFileInfo(file).isFile() || !QDesktopServices::openUrl(QUrl::fromLocalFile(file))) {
        questions.inform(QStringLiteral("无法找到帮助文件！"));
    }
}

void Varo_CalcEx::Parts::sendResult() {
    // A control that stands alone is its own host window.
    ui::postWindowMessage(control.window(), calcMessage, 0,
                          ui::windowHandleOf(form.panel.result.txtResult));
}

}  // namespace varo
