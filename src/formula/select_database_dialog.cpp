#include "formula/select_database_dialog.h"

#include "library/limits.h"
#include "platform/ui/named_widgets.h"
#include "platform/ui/path_label.h"
#include "store/attempt.h"
#include "store/library_connection.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>

namespace varo {

namespace {

QString selectedText(const QListWidget& list) {
    const auto items = list.selectedItems();
    return items.isEmpty() ? QString() : items.first()->text();
}

/// Selects the item with this text, if there is one.
void select(QListWidget& list, const QString& text) {
    const auto items = list.findItems(text, Qt::MatchExactly);
    if (!items.isEmpty()) {
        list.setCurrentItem(items.first());
    }
}

}  // namespace

SelectDatabaseDialog::SelectDatabaseDialog(const QString& folder, Questions& questions,
                                           QWidget* parent)
    : QDialog(parent),
      folder_(normalisedFolder(folder)),
      questions_(questions),
      DriveDB_(ui::makeNamed<QComboBox>("DriveDB", this)),
      DirDB_(ui::makeNamed<QListWidget>("DirDB", this)),
      FileDB_(ui::makeNamed<QListWidget>("FileDB", this)),
      lstTableName_(ui::makeNamed<QListWidget>("lstTableName", this)),
      lblShowDBPath_(ui::makeNamed<ui::PathLabel>("lblShowDBPath", this)),
      lblShowDBName_(ui::makeNamed<ui::PathLabel>("lblShowDBName", this)),
      lblShowTableName_(ui::makeNamed<ui::PathLabel>("lblShowTableName", this)),
      lblMissing_(ui::makeNamed<QLabel>("lblMissing", this)) {
    setObjectName(QStringLiteral("frmSelDB"));
    setWindowTitle(QStringLiteral("选择数据库文件"));

    buildLayout();
    // Queued: a message must not open while the click that caused it is being handled.
    connect(FileDB_, &QListWidget::itemSelectionChanged, this, &SelectDatabaseDialog::openFile,
            Qt::QueuedConnection);
    // A file that could not be opened is tried again.
    connect(FileDB_, &QListWidget::itemDoubleClicked, this, &SelectDatabaseDialog::openFile,
            Qt::QueuedConnection);
    connect(lstTableName_, &QListWidget::itemSelectionChanged, this,
            &SelectDatabaseDialog::showTable);
    connect(lstTableName_, &QListWidget::itemDoubleClicked, this, &SelectDatabaseDialog::accept);
    connect(cmdOK_, &QPushButton::clicked, this, &SelectDatabaseDialog::accept);
}

void SelectDatabaseDialog::buildLayout() {
    auto* files = new QGroupBox(QStringLiteral("选择数据库："), this);
    auto* filesColumn = new QVBoxLayout(files);
    filesColumn->addWidget(DriveDB_);
    filesColumn->addWidget(DirDB_, 2);
    filesColumn->addWidget(FileDB_, 3);
    auto* tables = new QGroupBox(QStringLiteral("选择数据表："), this);
    auto* tablesColumn = new QVBoxLayout(tables);
    tablesColumn->addWidget(lstTableName_);
    DriveDB_->setAccessibleName(QStringLiteral("驱动器"));
    DirDB_->setAccessibleName(QStringLiteral("文件夹"));
    FileDB_->setAccessibleName(QStringLiteral("数据库文件"));
    lstTableName_->setAccessibleName(QStringLiteral("数据表"));

    auto* chosen = new QFormLayout;
    chosen->addRow(QStringLiteral("数据库路径为："), lblShowDBPath_);
    chosen->addRow(QStringLiteral("数据库名称为："), lblShowDBName_);
    chosen->addRow(QStringLiteral("数据表名称为："), lblShowTableName_);

    const ui::DialogButtons buttons = ui::makeButtons(*this);
    cmdOK_ = buttons.cmdOK;
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(lblMissing_, 1);
    bottom->addWidget(buttons.cmdOK);
    bottom->addWidget(buttons.cmdCancel);

    auto* lists = new QHBoxLayout;
    lists->addWidget(files, 1);
    lists->addWidget(tables, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addLayout(chosen);
    layout->addLayout(bottom);
    resize(520, 440);
}

void SelectDatabaseDialog::InitForm(const QString& chosen) {
    showFolder();
    FileDB_->addItems(dataFiles(folder_));
    const DataTableName wanted = dataTableOf(chosen);
    const QSignalBlocker unopened(FileDB_);
    select(*FileDB_, wanted.file);
    if (!selectedText(*FileDB_).isEmpty() && listTables(wanted.file)) {
        select(*lstTableName_, wanted.table);
    }
    lblShowDBName_->setText(selectedText(*FileDB_));
    lstTableName_->setEnabled(isOpen_);
    FileDB_->setFocus();
    offer();
}

/// Only files of the library's folder can be chosen: the lists above them show where they are.
void SelectDatabaseDialog::showFolder() {
    const QString root = QDir::toNativeSeparators(QDir(folder_).rootPath());
    DriveDB_->addItem(root);
    QStringList folders = folder_.split(QDir::separator(), Qt::SkipEmptyParts);
    folders.prepend(root);
    for (qsizetype depth = 0; depth < folders.size(); ++depth) {
        DirDB_->addItem(QString(2 * depth, u' ') + folders[depth]);
    }
    DirDB_->setCurrentRow(DirDB_->count() - 1);
    DriveDB_->setEnabled(false);
    DirDB_->setEnabled(false);
    lblShowDBPath_->setText(folder_);
}

void SelectDatabaseDialog::openFile() {
    const QString file = selectedText(*FileDB_);
    lblShowDBName_->setText(file);
    if (file.isEmpty()) {
        offer();
        return;
    }
    const bool isListed = listTables(file);
    if (!isListed) {
        // Those of the file before stay to be seen, but belong to another file.
        lstTableName_->clearSelection();
    }
    lblShowTableName_->setText(QString());
    lstTableName_->setEnabled(isListed);
    offer();
    if (!isListed) {
        questions_.inform(QStringLiteral("无法打开用户指定的数据库！"));
    }
}

bool SelectDatabaseDialog::listTables(const QString& file) {
    QStringList tables;
    isOpen_ =
        openDataFile(folder_, file, connection_) && attempt([&] { tables = connection_.tables(); });
    if (isOpen_) {
        const QSignalBlocker filling(lstTableName_);
        lstTableName_->clear();
        lstTableName_->addItems(tables);
    }
    return isOpen_;
}

void SelectDatabaseDialog::showTable() {
    lblShowTableName_->setText(selectedText(*lstTableName_));
    offer();
}

DataTableName SelectDatabaseDialog::chosen() const {
    return {selectedText(*FileDB_), selectedText(*lstTableName_)};
}

/// What the user has to do before the choice can be accepted; "" when nothing.
QString SelectDatabaseDialog::missing() const {
    if (FileDB_->count() == 0) {
        return QStringLiteral("文件夹中没有数据库文件（*.mdb、*.accdb）");
    }
    if (chosen().file.isEmpty()) {
        return QStringLiteral("请选择数据库文件");
    }
    if (!isOpen_) {
        return QStringLiteral("这个文件无法打开，请选择别的文件");
    }
    if (lstTableName_->count() == 0) {
        return QStringLiteral("这个数据库中没有数据表");
    }
    if (chosen().table.isEmpty()) {
        return QStringLiteral("请选择数据表");
    }
    return parameterOf(chosen()).size() > kTextLimit ? QStringLiteral("两个名称合起来超过255个字符")
                                                     : QString();
}

void SelectDatabaseDialog::offer() {
    lblMissing_->setText(missing());
    cmdOK_->setEnabled(lblMissing_->text().isEmpty());
}

void SelectDatabaseDialog::accept() {
    if (missing().isEmpty()) {
        parameter_ = parameterOf(chosen());
        QDialog::accept();
    }
}

void SelectDatabaseDialog::done(int result) {
    cancelled_ = result != Accepted;
    QDialog::done(result);
}

}  // namespace varo
