#include "manager/library_manager_dialog.h"

#include "browse/label_edit.h"
#include "library/library_list.h"
#include "library/limits.h"
#include "library/new_library.h"
#include "manager/library_list_view.h"
#include "platform/ui/twips.h"
#include "platform/ui/wait_cursor.h"

#include <QFileInfo>
#include <QHeaderView>

#include <algorithm>

namespace varo {

namespace {

constexpr QSize kOpeningSize(560, 420);
constexpr int kNameWidth = 1730;  // twips
constexpr int kPathWidth = 3200;

constexpr std::size_t at(ManagerCommand command) {
    return static_cast<std::size_t>(command);
}

/// What a library is called whose file was dropped.
QString nameOf(const QString& path) {
    const QString name = QFileInfo(path).completeBaseName().left(kFolderNameLimit);
    return name.trimmed().isEmpty() ? newLibraryText() : name;
}

}  // namespace

LibraryManagerDialog::LibraryManagerDialog(colFormulaDB& libraries, QWidget* parent,
                                           Questions* questions)
    : QDialog(parent),
      controlLibraries_(libraries),
      boxes_(this),
      questions_(questions == nullptr ? boxes_ : *questions),
      model_(libraries_) {
    setObjectName(QStringLiteral("frmLibraryManager"));
    setWindowTitle(QStringLiteral("公式库管理"));
    form_ = buildLibraryManagerForm(*this);
    model_.setRenamer(
        [this](const QString& key, const QString& text) { return storeText(key, text); });
    form_.lvDB->setModel(&model_);
    form_.lvDB->header()->resizeSection(LibraryListModel::NameColumn, ui::toPixels(kNameWidth));
    form_.lvDB->header()->resizeSection(LibraryListModel::PathColumn, ui::toPixels(kPathWidth));
    resize(kOpeningSize);
    connectCommands();
    setState(State::Nothing);
}

void LibraryManagerDialog::connectCommands() {
    const auto connectCommand = [this](ManagerCommand command, auto run) {
        const auto commit = [this, run] {
            if (form_.lvDB->commitEdit()) {
                run();
            }
        };
        connect(form_.entries[at(command)], &QAction::triggered, this, commit);
        connect(form_.buttons[at(command)], &QAction::triggered, this, commit);
    };
    connectCommand(ManagerCommand::New, [this] { createLibrary(); });
    connectCommand(ManagerCommand::Add, [this] { AddExistingLibrary(); });
    connectCommand(ManagerCommand::MoveUp, [this] { MoveLibrary(1); });
    connectCommand(ManagerCommand::MoveDown, [this] { MoveLibrary(2); });
    connectCommand(ManagerCommand::Rename, [this] { rename(); });
    connectCommand(ManagerCommand::Delete, [this] { DeleteSelectedLibraries(); });
    connect(form_.mnuExit, &QAction::triggered, this, &QDialog::reject);
    connect(form_.cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(form_.cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(&model_, &LibraryListModel::filesDropped, this, &LibraryManagerDialog::addFiles);
    connect(&model_, &LibraryListModel::librariesDropped, this,
            &LibraryManagerDialog::moveSelected);
    connect(form_.lvDB->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &LibraryManagerDialog::followSelection);
    form_.lvDB->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(form_.lvDB, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        form_.mnuEdit->popup(form_.lvDB->viewport()->mapToGlobal(place));
    });
}

void LibraryManagerDialog::CopyColData(bool fromControl) {
    if (fromControl) {
        copyLibraries(controlLibraries_, libraries_);
    } else {
        copyLibraries(libraries_, controlLibraries_);
    }
}

void LibraryManagerDialog::InitForm() {
    setState(State::Nothing);
    configFolder_ = normalisedFolder(configFolder_);
    const QFileInfo file(configFolder_ + QLatin1StringView(kConfigFileName));
    if (configFolder_.isEmpty() || !file.isFile()) {
        form_.lvDB->setEmptyText(
            QStringLiteral("没有找到配置文件 %1，不能管理公式库。").arg(file.fileName()));
        libraries_.Clear();
        model_.refill();
        return;
    }
    form_.lvDB->setEmptyText(
        QStringLiteral("还没有公式库。\n用“添加数据库”加入已有的公式库，或者把文件拖到这里。"));
    setState(State::List);
    const ui::clsWaitCursor waiting;
    model_.refill();
    form_.lvDB->setFocus();
}

void LibraryManagerDialog::SelectDataBase(SelectMode mode, QString& path, bool& ok) {
    varo::SelectDataBase(mode, path, ok, questions_);
}

void LibraryManagerDialog::createLibrary() {
    const QString path = CreateLibraryFromTemplate(questions_, [this](const QString& chosen) {
        return QFileInfo::exists(chosen) && (findLibrary(libraries_, chosen) != nullptr ||
                                             findLibrary(controlLibraries_, chosen) != nullptr);
    });
    if (!path.isEmpty() &&
        questions_.confirm(QStringLiteral("已经创建公式库：\n%1\n现在就添加到列表中吗？").arg(path),
                           Choice::YesNo)) {
        add(path);
    }
}

void LibraryManagerDialog::AddExistingLibrary() {
    QString path;
    bool ok = false;
    SelectDataBase(SelectMode::Add, path, ok);
    if (ok) {
        add(path);
    }
}

void LibraryManagerDialog::add(const QString& path) {
    const AddedLibrary added = varo::AddExistingLibrary(path, newLibraryText(), libraries_);
    if (added.key.isEmpty()) {
        questions_.inform(added.refusal);
        return;
    }
    model_.refill();
    select(added.key);
    rename();
}

void LibraryManagerDialog::addFiles(const QStringList& files) {
    if (state_ == State::Nothing || !form_.lvDB->commitEdit()) {
        return;
    }
    QStringList refusals;
    QString last;
    for (const QString& path : files) {
        const AddedLibrary added = varo::AddExistingLibrary(path, nameOf(path), libraries_);
        if (added.key.isEmpty()) {
            refusals.append(added.refusal + u'\n' + path);
        } else {
            last = added.key;
        }
    }
    if (!last.isEmpty()) {
        model_.refill();
        select(last);
    }
    for (const QString& refusal : refusals) {
        questions_.inform(refusal);
    }
}

QList<int> LibraryManagerDialog::selectedPositions() const {
    QList<int> positions;
    const QModelIndexList rows = form_.lvDB->selectionModel()->selectedRows();
    for (const QModelIndex& row : rows) {
        positions.append(row.row() + 1);
    }
    std::ranges::sort(positions);
    return positions;
}

/// The one of several that has the focus, or else the first; 0 when none is selected.
int LibraryManagerDialog::selectedPosition() const {
    const QList<int> positions = selectedPositions();
    const int current = form_.lvDB->currentIndex().row() + 1;
    return positions.contains(current) ? current : positions.value(0);
}

void LibraryManagerDialog::select(const QString& key) {
    const QModelIndex index = model_.indexOf(key);
    form_.lvDB->setFocus();
    form_.lvDB->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    form_.lvDB->scrollTo(index);
}

void LibraryManagerDialog::DeleteSelectedLibraries() {
    QStringList keys;
    for (const int position : selectedPositions()) {
        keys.append(libraries_.Item(position).NodeKey);
    }
    for (const QString& key : keys) {
        libraries_.Remove(key);
    }
    model_.refill();
    followSelection();
}

bool LibraryManagerDialog::MoveLibrary(int direction) {
    const int position = selectedPosition();
    const int neighbour = position + (direction == 1 ? -1 : 1);
    if (position == 0 || neighbour < 1 || neighbour > libraries_.Count()) {
        return false;
    }
    try {
        moveLibraries(libraries_, {std::max(position, neighbour)}, std::min(position, neighbour));
        model_.refill();
        select(libraries_.Item(neighbour).NodeKey);
        return true;
    } catch (const CollectionError&) {
        questions_.inform(QStringLiteral("移动数据库失败！"));
        return false;
    }
}

void LibraryManagerDialog::moveSelected(int before) {
    const QList<int> positions = selectedPositions();
    const auto inFront = std::ranges::count_if(positions, [&](int each) { return each < before; });
    moveLibraries(libraries_, positions, before);
    model_.refill();
    // They stand together now.
    const int first = before - static_cast<int>(inFront);
    const int last = first + static_cast<int>(positions.size()) - 1;
    if (!positions.isEmpty()) {
        select(libraries_.Item(first).NodeKey);
        form_.lvDB->selectionModel()->select(
            QItemSelection(model_.index(first - 1, 0), model_.index(last - 1, 0)),
            QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

void LibraryManagerDialog::rename() {
    if (const int position = selectedPosition(); position > 0) {
        form_.lvDB->setFocus();
        form_.lvDB->edit(model_.index(position - 1, LibraryListModel::NameColumn));
    }
}

bool LibraryManagerDialog::storeText(const QString& key, const QString& text) {
    const bool stored = storeLabel(*form_.lvDB, questions_, libraryNameRules(), text, [&] {
        libraries_.Item(key).FormulaNodeText = text;
        return true;
    });
    if (!stored) {
        refused_ = true;
        // Behind the message, which is queued too.
        QMetaObject::invokeMethod(
            this, [this] { refused_ = false; }, Qt::QueuedConnection);
    }
    return stored;
}

void LibraryManagerDialog::setState(State state) {
    state_ = state;
    const bool usable = state != State::Nothing;
    for (QWidget* widget : std::initializer_list<QWidget*>{form_.lvDB, form_.tbsDB, form_.cmdOK}) {
        widget->setEnabled(usable);
    }
    form_.mnuEdit->setEnabled(usable);
    const int position = selectedPosition();
    const bool isFirst = position == 1;
    const bool isLast = position == libraries_.Count();
    for (int i = 0; i < kManagerCommands; ++i) {
        const auto command = static_cast<ManagerCommand>(i);
        const bool adds = command == ManagerCommand::New || command == ManagerCommand::Add;
        const bool offered = usable && (adds || state == State::Item);
        // A single library is offered the way down, where it then stays.
        const bool hasWay = command == ManagerCommand::MoveUp     ? !isFirst
                            : command == ManagerCommand::MoveDown ? isFirst || !isLast
                                                                  : true;
        form_.entries[at(command)]->setEnabled(offered);
        form_.buttons[at(command)]->setEnabled(offered && hasWay);
    }
}

void LibraryManagerDialog::followSelection() {
    if (state_ != State::Nothing) {
        setState(selectedPosition() == 0 ? State::List : State::Item);
    }
}

void LibraryManagerDialog::accept() {
    if (state_ != State::Nothing && form_.lvDB->commitEdit() && !refused_) {
        cancelled_ = false;
        QDialog::accept();
    }
}

void LibraryManagerDialog::reject() {
    cancelled_ = true;
    QDialog::reject();
}

}  // namespace varo
