#include "manager/library_manager_form.h"

#include "manager/library_list_view.h"
#include "platform/ui/icons.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace varo {

namespace {

struct CommandDescription {
    const char* entry;  ///< name in the menu
    QString entryText;
    QString key;  ///< of the button, which is its tool tip too
    const char* icon;
    QKeySequence shortcut;
    bool beginsGroup;  ///< a separator stands in front of it
};

/// By ManagerCommand.
const std::array<CommandDescription, kManagerCommands> kCommands{{
    {"mnuNewDB", QStringLiteral("新建(&N)"), QStringLiteral("新建数据库"), "document-new",
     Qt::CTRL | Qt::Key_N, false},
    {"mnuAddDB", QStringLiteral("添加(&A)"), QStringLiteral("添加数据库"), "list-add",
     Qt::CTRL | Qt::Key_O, false},
    {"mnuMoveUp", QStringLiteral("上移(&U)"), QStringLiteral("上移"), "go-up",
     Qt::CTRL | Qt::Key_Up, true},
    {"mnuMoveDown", QStringLiteral("下移(&W)"), QStringLiteral("下移"), "go-down",
     Qt::CTRL | Qt::Key_Down, false},
    {"mnuRename", QStringLiteral("重命名(&R)"), QStringLiteral("重命名"), "edit-rename", Qt::Key_F2,
     true},
    {"mnuDelDB", QStringLiteral("清除(&D)"), QStringLiteral("清除数据库"), "list-remove",
     Qt::Key_Delete, false},
}};

template <class Named>
Named* named(Named* object, const char* name) {
    object->setObjectName(QString::fromLatin1(name));
    return object;
}

void addMenus(LibraryManagerForm& form, QDialog& dialog) {
    auto* bar = new QMenuBar(&dialog);
    form.mnuFile = named(bar->addMenu(QStringLiteral("文件(&F)")), "mnuFile");
    form.mnuExit = named(form.mnuFile->addAction(QStringLiteral("退出(&X)")), "mnuExit");
    form.mnuEdit = named(bar->addMenu(QStringLiteral("编辑(&E)")), "mnuEdit");
    for (std::size_t i = 0; i < kCommands.size(); ++i) {
        const CommandDescription& each = kCommands[i];
        if (each.beginsGroup) {
            form.mnuEdit->addSeparator();
        }
        form.entries[i] = named(
            form.mnuEdit->addAction(ui::themeIcon(QString::fromLatin1(each.icon)), each.entryText),
            each.entry);
        form.entries[i]->setShortcut(each.shortcut);
    }
    dialog.layout()->setMenuBar(bar);
}

void addToolBar(LibraryManagerForm& form, QDialog& dialog) {
    form.cbEdit = named(new QFrame(&dialog), "cbEdit");
    auto* band = new QHBoxLayout(form.cbEdit);
    band->setContentsMargins(0, 0, 0, 0);
    form.tbEdit = named(new QToolBar(form.cbEdit), "tbEdit");
    form.tbEdit->setIconSize(ui::iconSizeFor(*form.tbEdit));
    band->addWidget(form.tbEdit);
    for (std::size_t i = 0; i < kCommands.size(); ++i) {
        const CommandDescription& each = kCommands[i];
        if (each.beginsGroup) {
            form.tbEdit->addSeparator();
        }
        form.buttons[i] =
            form.tbEdit->addAction(ui::themeIcon(QString::fromLatin1(each.icon)), each.key);
        form.buttons[i]->setToolTip(each.key);
        form.tbEdit->widgetForAction(form.buttons[i])->setObjectName(each.key);
    }
    dialog.layout()->addWidget(form.cbEdit);
}

void addList(LibraryManagerForm& form, QDialog& dialog) {
    form.lblTitle = named(new QLabel(dialog.windowTitle(), &dialog), "lblTitle");
    form.tbsDB = named(new QTabBar(&dialog), "tbsDB");
    form.tbsDB->setDrawBase(false);
    form.tbsDB->setExpanding(false);
    form.tbsDB->addTab(ui::ownIcon(QStringLiteral("library")), QStringLiteral("Access"));
    form.tbsDB->setTabData(0, QStringLiteral("AccessDB"));
    form.lvDB = named(new LibraryListView(&dialog), "lvDB");
    form.lvDB->setAccessibleName(dialog.windowTitle());
    form.lblTitle->setBuddy(form.lvDB);
    auto& column = static_cast<QVBoxLayout&>(*dialog.layout());
    column.addWidget(form.lblTitle);
    auto* tabbed = new QVBoxLayout;
    tabbed->setSpacing(0);
    tabbed->addWidget(form.tbsDB);
    tabbed->addWidget(form.lvDB, 1);
    column.addLayout(tabbed, 1);
}

void addButtons(LibraryManagerForm& form, QDialog& dialog) {
    form.cmdOK = named(new QPushButton(QStringLiteral("确定(&Y)"), &dialog), "cmdOK");
    form.cmdCancel = named(new QPushButton(QStringLiteral("取消(&C)"), &dialog), "cmdCancel");
    form.cmdOK->setDefault(true);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(form.cmdOK);
    row->addWidget(form.cmdCancel);
    static_cast<QVBoxLayout&>(*dialog.layout()).addLayout(row);
}

}  // namespace

LibraryManagerForm buildLibraryManagerForm(QDialog& dialog) {
    LibraryManagerForm form;
    auto* column = new QVBoxLayout(&dialog);
    column->setSpacing(6);
    addMenus(form, dialog);
    addToolBar(form, dialog);
    addList(form, dialog);
    addButtons(form, dialog);
    return form;
}

}  // namespace varo
