#include "formula/select_value_dialog.h"

#include "formula/data_table_model.h"
#include "formula/data_table_view.h"
#include "library/limits.h"
#include "library/stored_values.h"
#include "platform/ui/named_widgets.h"
#include "platform/ui/path_label.h"
#include "platform/ui/wait_cursor.h"
#include "store/library_connection.h"

#include <QBoxLayout>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <utility>

namespace varo {

SelectValueDialog::SelectValueDialog(const QString& folder, const DataTableName& table,
                                     Questions& questions, QWidget* parent)
    : QDialog(parent),
      folder_(normalisedFolder(folder)),
      name_(table),
      questions_(questions),
      model_(new DataTableModel(table_, this)),
      txtFilter_(ui::makeNamed<QLineEdit>("txtFilter", this)),
      MSFShowTable_(ui::makeNamed<DataTableView>("MSFShowTable", this)),
      lblShowDBPath_(ui::makeNamed<ui::PathLabel>("lblShowDBPath", this)),
      lblShowTableName_(ui::makeNamed<ui::PathLabel>("lblShowTableName", this)),
      lblRows_(ui::makeNamed<QLabel>("lblRows", this)) {
    setObjectName(QStringLiteral("frmSelValue"));
    setWindowTitle(QStringLiteral("选择变量的值"));
    txtFilter_->setMaxLength(kTextLimit);
    txtFilter_->setClearButtonEnabled(true);
    txtFilter_->setPlaceholderText(QStringLiteral("只列出含有这些文字的行"));
    MSFShowTable_->setAccessibleName(QStringLiteral("数据表的内容"));
    MSFShowTable_->setModel(model_);
    MSFShowTable_->setSortingEnabled(true);
    buildLayout();
    connectParts();
}

SelectValueDialog::~SelectValueDialog() {
    // Before the table that the model reads from.
    MSFShowTable_->setModel(nullptr);
}

void SelectValueDialog::buildLayout() {
    auto* filterLabel = new QLabel(QStringLiteral("筛选(&F)："), this);
    filterLabel->setBuddy(txtFilter_);
    auto* top = new QFormLayout;
    top->addRow(QStringLiteral("数据库路径为："), lblShowDBPath_);
    top->addRow(QStringLiteral("数据表名称为："), lblShowTableName_);
    top->addRow(filterLabel, txtFilter_);

    const ui::DialogButtons buttons = ui::makeButtons(*this);
    cmdOK_ = buttons.cmdOK;
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(lblRows_, 1);
    bottom->addWidget(buttons.cmdOK);
    bottom->addWidget(buttons.cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(MSFShowTable_, 1);
    layout->addLayout(bottom);
    resize(600, 440);
    setTabOrder(txtFilter_, MSFShowTable_);
    MSFShowTable_->setFocus();
}

void SelectValueDialog::connectParts() {
    connect(cmdOK_, &QPushButton::clicked, this, &SelectValueDialog::accept);
    connect(MSFShowTable_, &QTableView::doubleClicked, this, &SelectValueDialog::accept);
    connect(MSFShowTable_, &DataTableView::typed, this, [this](const QString& text) {
        txtFilter_->setFocus();
        txtFilter_->setText(text);
    });
    connect(MSFShowTable_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SelectValueDialog::offer);
    filtering_.setSingleShot(true);
    connect(&filtering_, &QTimer::timeout, this, &SelectValueDialog::filter);
    connect(txtFilter_, &QLineEdit::textChanged, this, &SelectValueDialog::takeFilter);
    txtFilter_->installEventFilter(this);
    connect(model_, &DataTableModel::modelReset, this, [this] { loading_.start(); });
    // Queued: a failure can come while the grid is being drawn.
    connect(
        model_, &DataTableModel::readFailed, this,
        [this] {
            offer();
            questions_.inform(QStringLiteral("显示数据表结构失败！"));
        },
        Qt::QueuedConnection);
    connect(&loading_, &QTimer::timeout, this, &SelectValueDialog::loadMore);
}

void SelectValueDialog::InitForm() {
    lblShowDBPath_->setText(folder_ + name_.file);
    lblShowTableName_->setText(name_.table);
    QString failure;
    {
        const ui::clsWaitCursor waiting;
        if (!openDataFile(folder_, name_.file, connection_)) {
            failure = QStringLiteral("打开数据库失败！");
        } else if (!table_.open(connection_, name_.table)) {
            failure = QStringLiteral("显示数据表结构失败！");
        }
        model_->reset();
        MSFShowTable_->fitColumns();
    }
    offer();
    if (!failure.isEmpty()) {
        questions_.inform(failure);
    }
}

void SelectValueDialog::goTo(const QString& value, const std::optional<PickedPlace>& place) {
    wantedValue_ = value;
    wantedPlace_ = place;
}

/// Looks for the value where it was picked last, then in the whole table.
void SelectValueDialog::findValue() {
    const QString value = std::exchange(wantedValue_, {});
    const bool isUntouched = model_->listing().filter.isEmpty() && model_->listing().sortColumn < 0;
    if (value.isEmpty() || !isUntouched || selected().isValid()) {
        return;
    }
    std::optional<DataTable::Place> found;
    if (wantedPlace_) {
        const auto row = table_.rowWithNumber(wantedPlace_->rowNumber);
        if (row && table_.cell(*row, wantedPlace_->column).text == value) {
            found = {*row, wantedPlace_->column};
        }
    }
    // The value that a variable begins with was not picked.
    if (!found && value != kDefaultValue) {
        found = table_.find(value);
    }
    model_->loadMore();
    if (found) {
        moveTo(found->row, found->column);
    }
}

void SelectValueDialog::loadMore() {
    findValue();
    model_->loadMore();
    if (!table_.hasMore()) {
        loading_.stop();
    }
    offer();
}

void SelectValueDialog::moveTo(int row, int column) {
    const QModelIndex index = model_->index(row, column);
    MSFShowTable_->setCurrentIndex(index);
    MSFShowTable_->scrollTo(index, QAbstractItemView::PositionAtCenter);
}

/// A long table is filtered when the user pauses in typing.
void SelectValueDialog::takeFilter() {
    constexpr int kLong = 20000;
    constexpr int kPause = 200;  // milliseconds
    isLong_ = isLong_ || model_->rowCount() > kLong;
    if (isLong_) {
        filtering_.start(kPause);
    } else {
        filter();
    }
}

/// The first row that is left becomes the current one, in the column of the cell that was selected
/// last: the value of another row is then found by typing alone.
void SelectValueDialog::filter() {
    filtering_.stop();
    model_->setFilter(txtFilter_->text());
    if (column_ >= 0 && model_->rowCount() > 0) {
        moveTo(0, column_);
    }
    offer();
}

bool SelectValueDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up) {
            MSFShowTable_->setFocus();
            if (!selected().isValid() && model_->rowCount() > 0) {
                moveTo(0, std::max(column_, 0));
            }
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

/// The view makes its first cell the current one when it gets the focus, without selecting it.
QModelIndex SelectValueDialog::selected() const {
    return MSFShowTable_->selectionModel()->selectedIndexes().value(0);
}

QString SelectValueDialog::selectedText() {
    const QModelIndex index = selected();
    return table_.cell(index.row(), index.column()).text;
}

void SelectValueDialog::offer() {
    const int rows = model_->rowCount();
    const QString more = table_.hasMore() ? QStringLiteral("以上") : QString();
    lblRows_->setText(rows > 0 ? QStringLiteral("%1行%2").arg(rows).arg(more)
                      : model_->listing().filter.isEmpty() ? QStringLiteral("没有数据")
                                                           : QStringLiteral("没有符合筛选的行"));
    cmdOK_->setEnabled(!selectedText().isEmpty());
    column_ = selected().isValid() ? selected().column() : column_;
}

void SelectValueDialog::accept() {
    if (filtering_.isActive()) {
        filter();
    }
    const QString text = selectedText();
    if (text.isEmpty()) {
        return;
    }
    if (text.size() > kTextLimit) {
        questions_.inform(QStringLiteral("给定变量的值超过255个字符"));
        return;
    }
    const QModelIndex index = selected();
    value_ = text;
    if (const auto number = table_.numberOf(index.row())) {
        place_ = {*number, index.column()};
    }
    QDialog::accept();
}

void SelectValueDialog::done(int result) {
    cancelled_ = result != Accepted;
    loading_.stop();
    QDialog::done(result);
}

}  // namespace varo
