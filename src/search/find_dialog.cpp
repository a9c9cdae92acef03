#include "search/find_dialog.h"

#include "platform/ui/dialogs.h"
#include "platform/ui/picture_grid.h"
#include "platform/ui/twips.h"
#include "platform/ui/wait_cursor.h"
#include "search/locate_messages.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTreeView>

#include <algorithm>

namespace varo {

namespace {

constexpr int kColumnMargin = 400;  // twips

bool isEnter(const QEvent& event) {
    if (event.type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent&>(event).key();
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

TextPlace placeOf(const std::array<QRadioButton*, 3>& options) {
    const auto chosen = std::ranges::find_if(options, &QRadioButton::isChecked);
    return static_cast<TextPlace>(chosen - options.begin());
}

/// The text of a criterion that is chosen; "" of another one.
QString textOf(const QCheckBox& chosen, const QString& text) {
    return chosen.isEnabled() && chosen.isChecked() ? text : QString();
}

}  // namespace

FindDialog::FindDialog(const colFormulaDB& libraries, FindResults& results, FindLocator& locator,
                       Questions& questions, QWidget* parent)
    : QDialog(parent),
      libraries_(libraries),
      results_(results),
      locator_(locator),
      questions_(questions),
      pictures_(
          libraries, [&results](const NodeId& node) { return results.pathOf(node); }, nullptr),
      run_(results, nullptr) {
    setObjectName(QStringLiteral("frmFind"));
    setWindowTitle(QStringLiteral("查找定位"));
    form_ = buildFindForm(*this);
    form_.lvFindResult->setModel(&results);
    form_.lvFindResult->installEventFilter(this);
    form_.lvFindResult->viewport()->installEventFilter(this);
    connectCommands();
    constexpr QSize kOpeningSize(640, 560);
    resize(kOpeningSize);
}

FindDialog::~FindDialog() {
    form_.ImageGridFind->release();
}

void FindDialog::connectCommands() {
    for (QCheckBox* kind : {form_.ChkFolder, form_.ChkFormula}) {
        connect(kind, &QCheckBox::clicked, this, &FindDialog::updateCriteria);
    }
    const std::pair<QCheckBox*, QWidget*> criteria[] = {{form_.ChkName, form_.PicFindName},
                                                        {form_.ChkMemo, form_.PicFindMemo},
                                                        {form_.ChkPrpty, form_.CmbPrpty}};
    for (const auto& [box, text] : criteria) {
        connect(box, &QCheckBox::clicked, text, &QWidget::setEnabled);
    }
    // Who chooses a criterion types its text next.
    form_.PicFindName->setFocusProxy(form_.txtName);
    form_.PicFindMemo->setFocusProxy(form_.txtMemo);
    for (const auto& [box, text] : criteria) {
        connect(box, &QCheckBox::clicked, this, [text = text](bool chosen) {
            if (chosen) {
                text->setFocus();
            }
        });
    }
    for (QLineEdit* text : {form_.txtName, form_.txtMemo, form_.CmbPrpty->lineEdit()}) {
        connect(text, &QLineEdit::inputRejected, this, [this] {
            form_.lblFindCount->setText(
                QStringLiteral("条件最多 %1 个字符，超出的部分没有输入").arg(kFindTextLimit));
        });
    }
    connect(form_.CmdFind, &QPushButton::clicked, this, &FindDialog::find);
    connect(form_.CmdPosition, &QPushButton::clicked, this, &FindDialog::locateSelected);
    connect(form_.CmdQuit, &QPushButton::clicked, this, &FindDialog::reject);
    connect(form_.TabFind, &QTabBar::currentChanged, this, &FindDialog::showTab);
    connect(form_.lvFindResult, &QTreeView::doubleClicked, this, &FindDialog::locateSelected);
    const auto followSelection = [this] {
        form_.CmdPosition->setEnabled(form_.lvFindResult->currentIndex().isValid());
    };
    connect(form_.lvFindResult->selectionModel(), &QItemSelectionModel::currentChanged, this,
            followSelection);
    connect(&results_, &QAbstractItemModel::modelReset, this, followSelection);
    // Pictures and property names are those of the libraries before.
    connect(&results_, &FindResults::librariesChanged, this, &FindDialog::reject);
    connect(&run_, &FindRun::progressed, this, &FindDialog::showProgress);
    connect(&run_, &FindRun::ended, this, &FindDialog::showEnd);
    connect(&pictures_, &PictureList::listed, this, &FindDialog::showPictureCount);
    connect(form_.ImageGridFind, &ui::PictureGrid::pictureClicked, this,
            &FindDialog::locatePicture);
}

void FindDialog::InitForm() {
    {
        const ui::clsWaitCursor waiting;
        properties_ = readPropertyNames(libraries_);
    }
    showCriteria(results_.criteria());
    focusWork();
    if (!results_.isEmpty()) {
        form_.lblFindCount->setText(QStringLiteral("上次找到 %1 项").arg(results_.count()));
        const QModelIndex located = results_.index(std::max(results_.located(), 0), 0);
        form_.lvFindResult->setCurrentIndex(located);
        form_.lvFindResult->scrollTo(located);
        form_.lvFindResult->setFocus();
    }
    if (!properties_.failure.isEmpty()) {
        questions_.inform(properties_.failure);
    }
}

/// Where the user goes on: at the pictures; or where a criterion is typed; or at what was found.
void FindDialog::focusWork() {
    const std::initializer_list<QWidget*> places = {
        form_.ImageGridFind, form_.txtName, form_.txtMemo, form_.CmbPrpty,
        results_.isEmpty() ? form_.ChkFolder : static_cast<QWidget*>(form_.lvFindResult)};
    const auto place = std::ranges::find_if(places, [this](const QWidget* each) {
        return each->isVisibleTo(this) && each->isEnabled();
    });
    (*place)->setFocus();
}

void FindDialog::updateCriteria() {
    const bool folders = form_.ChkFolder->isChecked();
    const bool formulas = form_.ChkFormula->isChecked();
    const auto offer = [](QCheckBox& box, QWidget& text, bool offered) {
        box.setEnabled(offered);
        text.setEnabled(offered && box.isChecked());
    };
    form_.ChkName->setText(folders == formulas ? QStringLiteral("名称")
                           : folders           ? QStringLiteral("公式夹名称")
                                               : QStringLiteral("公式名称"));
    offer(*form_.ChkName, *form_.PicFindName, folders || formulas);
    offer(*form_.ChkMemo, *form_.PicFindMemo, formulas);
    offer(*form_.ChkPrpty, *form_.CmbPrpty, folders || formulas);
    fillProperties();
}

void FindDialog::fillProperties() {
    QStringList names;
    if (form_.ChkFolder->isChecked()) {
        names += properties_.ofFolders;
    }
    if (form_.ChkFormula->isChecked()) {
        names += properties_.ofFormulas;
    }
    names.removeDuplicates();
    const QString typed = form_.CmbPrpty->currentText();
    form_.CmbPrpty->clear();
    form_.CmbPrpty->addItems(names);
    form_.CmbPrpty->setCurrentIndex(-1);
    form_.CmbPrpty->setEditText(typed);
}

FindCriteria FindDialog::criteria() const {
    FindCriteria wanted;
    wanted.inFolders = form_.ChkFolder->isChecked();
    wanted.inFormulas = form_.ChkFormula->isChecked();
    wanted.name = textOf(*form_.ChkName, form_.txtName->text());
    wanted.namePlace = placeOf(form_.OptFindName);
    wanted.memo = textOf(*form_.ChkMemo, form_.txtMemo->text());
    wanted.memoPlace = placeOf(form_.OptFindMemo);
    wanted.property = textOf(*form_.ChkPrpty, form_.CmbPrpty->currentText());
    return wanted;
}

void FindDialog::showCriteria(const FindCriteria& wanted) {
    form_.ChkFolder->setChecked(wanted.inFolders);
    form_.ChkFormula->setChecked(wanted.inFormulas);
    form_.ChkName->setChecked(!wanted.name.isEmpty());
    form_.txtName->setText(wanted.name);
    form_.OptFindName[static_cast<std::size_t>(wanted.namePlace)]->setChecked(true);
    form_.ChkMemo->setChecked(!wanted.memo.isEmpty());
    form_.txtMemo->setText(wanted.memo);
    form_.OptFindMemo[static_cast<std::size_t>(wanted.memoPlace)]->setChecked(true);
    form_.ChkPrpty->setChecked(!wanted.property.isEmpty());
    form_.CmbPrpty->setEditText(wanted.property);
    updateCriteria();
}

/// The button also stops a search that is under way, unless that was started with other criteria,
/// or by the first click of a double click.
void FindDialog::find() {
    const FindCriteria wanted = criteria();
    if (run_.isRunning()) {
        if (wanted == run_.search()->criteria() &&
            sinceStart_.elapsed() < QApplication::doubleClickInterval()) {
            return;
        }
        wasStopped_ = true;
        run_.stop();
        if (wanted == run_.search()->criteria()) {
            return;
        }
    }
    results_.clear();
    results_.setCriteria(wanted);
    if (!wanted.canBeSearched()) {
        form_.lblFindCount->setText(QStringLiteral("请选择查询范围，并填写至少一项条件"));
        return;
    }
    wasStopped_ = false;
    sinceStart_.start();
    run_.start(std::make_unique<NodeSearch>(libraries_, wanted));
}

void FindDialog::showProgress() {
    const NodeSearch& search = *run_.search();
    form_.CmdFind->setText(QStringLiteral("停止(&F)"));
    constexpr int kSteps = 1000;
    form_.PrgFind->setMaximum(kSteps);
    form_.PrgFind->setValue(static_cast<int>(search.fraction() * kSteps));
    form_.PrgFind->show();
    form_.lblFindCount->setText(QStringLiteral("正在查找第 %1 个公式库（共 %2 个），已找到 %3 项")
                                    .arg(search.position())
                                    .arg(search.libraries())
                                    .arg(run_.count()));
}

void FindDialog::showEnd() {
    form_.CmdFind->setText(QStringLiteral("查找(&F)"));
    form_.PrgFind->hide();
    const NodeSearch::Failure failure = run_.search()->failure();
    if (failure != NodeSearch::Failure::None) {
        const QPointer<FindDialog> self(this);
        questions_.inform(messageOf(failure));
        if (self.isNull()) {
            return;
        }
        if (failure == NodeSearch::Failure::NotOpened) {
            results_.clear();
        }
    }
    const QString found = QStringLiteral("找到 %1 项").arg(results_.count());
    form_.lblFindCount->setText(wasStopped_ ? QStringLiteral("已停止，") + found
                                : failure != NodeSearch::Failure::None
                                    ? QStringLiteral("查找没有完成，") + found
                                    : found);
}

void FindDialog::locateSelected() {
    const QModelIndex selected = form_.lvFindResult->currentIndex();
    if (selected.isValid()) {
        locator_.locate(results_, selected.row());
    }
}

void FindDialog::showTab(int tab) {
    const bool showsPictures = tab == 1;
    form_.PicFind->setVisible(!showsPictures);
    form_.PicImage->setVisible(showsPictures);
    form_.CmdFind->setVisible(!showsPictures);
    form_.CmdPosition->setVisible(!showsPictures);
    // With the keyboard the user goes on from tab to tab.
    if (!form_.TabFind->hasFocus()) {
        focusWork();
    }
    if (showsPictures && !picturesLoaded_) {
        picturesLoaded_ = true;
        form_.ImageGridFind->setPictures(&pictures_, &pictures_);
        pictures_.load();
    }
}

void FindDialog::showPictureCount() {
    QString text = pictures_.count() == 0 && !pictures_.isLoading()
                       ? QStringLiteral("公式库中没有图片")
                       : QStringLiteral("%1 幅图片").arg(pictures_.count());
    const auto append = [&text](const QString& what, const QStringList& libraries) {
        if (!libraries.isEmpty()) {
            text += what + libraries.join(QStringLiteral("、"));
        }
    };
    append(QStringLiteral("；无法读取公式库："), pictures_.unreadableLibraries());
    append(QStringLiteral("；其他程序正在使用，稍后再读："), pictures_.lockedLibraries());
    form_.lblImageCount->setText(text);
}

void FindDialog::locatePicture(int row) {
    NodeId folder;
    qint32 formulaID = 0;
    switch (pictures_.findFormula(row, folder, formulaID)) {
        case PictureCatalog::Found::Formula:
            locator_.locateFormula(folder, formulaID);
            break;
        case PictureCatalog::Found::NotOpened:
            questions_.inform(QStringLiteral("打开指定的数据库失败，无法定位！"));
            break;
        case PictureCatalog::Found::NotRead:
            questions_.inform(QStringLiteral("读取数据库失败，无法定位！"));
            break;
        case PictureCatalog::Found::Gone:
            questions_.inform(kFormulaGone);
            break;
    }
}

bool FindDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == form_.lvFindResult && isEnter(*event)) {
        locateSelected();
        return true;
    }
    if (watched == form_.lvFindResult->viewport() && event->type() == QEvent::Resize) {
        fitColumn();
    }
    return QDialog::eventFilter(watched, event);
}

void FindDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && run_.isRunning()) {
        wasStopped_ = true;
        run_.stop();
        return;
    }
    QDialog::keyPressEvent(event);
}

void FindDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    fitColumn();
}

void FindDialog::fitColumn() {
    const int width = form_.lvFindResult->width() - ui::toPixels(kColumnMargin);
    form_.lvFindResult->header()->resizeSection(0, width);
}

void FindDialog::reject() {
    run_.stop();
    QDialog::reject();
}

void openFindDialog(const colFormulaDB& libraries, FindResults& results, FindLocator& locator,
                    Questions& questions, QWidget* parent) {
    // It is destroyed with `parent` if the host destroys that meanwhile.
    const QPointer<FindDialog> dialog =
        new FindDialog(libraries, results, locator, questions, parent);
    dialog->InitForm();
    ui::runDialog(*dialog);
    delete dialog;
}

}  // namespace varo
