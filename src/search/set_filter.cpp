#include "search/set_filter.h"

#include "library/condition_trial.h"
#include "library/condition_words.h"
#include "library/limits.h"
#include "platform/ui/icons.h"
#include "platform/ui/shown_text.h"

#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QToolBar>
#include <QVBoxLayout>

#include <optional>
#include <utility>

namespace varo {

namespace {

/// The place of `path` if there is a node, else of one near it.
ConditionPath existing(const ConditionTree& tree, ConditionPath path) {
    while (!path.empty() && tree.find(path) == nullptr) {
        if (path.back() > 0) {
            --path.back();
        } else {
            path.pop_back();
        }
    }
    return path;
}

/// Tells which constants of a stored condition are read as other numbers than they show.
QStringList numberRemarks(const ConditionTree& tree) {
    QStringList texts;
    for (const ConditionFault& fault : conditionFaults(tree)) {
        if (fault.kind == ConditionFaultKind::NoNumber || isWarning(fault.kind)) {
            texts.append(fault.text);
        }
    }
    return texts.size() < 2 ? texts
                            : QStringList(QStringLiteral("有 %1 处比较值不是数值。第一处：%2")
                                              .arg(QString::number(texts.size()), texts.front()));
}

/// What check() says of a condition as a whole.
QString wholeText(const ConditionFault& fault, bool isStored) {
    if (fault.kind != ConditionFaultKind::Empty) {
        return fault.text;
    }
    return fault.text + (isStored ? QStringLiteral("按下面的“删除”去掉这个属性的过滤条件。")
                                  : QStringLiteral("没有过滤条件的属性总是符合。"));
}

/// Asks the host through `source` while the editor, and the control with it, is there.
class WhileShown : public PropertySource {
  public:
    WhileShown(const QPointer<SetFilter>& editor, PropertySource& source)
        : editor_(editor), source_(source) {}

    QString propertyValue(const QString& name) override {
        return editor_.isNull() ? QString() : source_.propertyValue(name);
    }

  private:
    const QPointer<SetFilter>& editor_;
    PropertySource& source_;
};

}  // namespace

SetFilter::SetFilter(PropertySource& properties, QWidget* parent)
    : QWidget(parent),
      properties_(properties),
      view_(new ConditionView(this)),
      actions_(
          new ConditionActions(*this, *view_, [this](ConditionCommand command) { run(command); })),
      lblRemarks_(new QLabel(this)),
      txtCondition_(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("SetFilterProp"));
    layOut();
    connect(&model_, &ConditionModel::termEdited, this,
            [this](const ConditionPath& path, const ComparisonTerm& term) {
                ConditionTree changed = tree();
                changed.setTerm(path, term);
                push(std::move(changed), path);
            });
    connect(&model_, &ConditionModel::groupTypeEdited, this,
            [this](const ConditionPath& path, ConditionType type) {
                ConditionTree changed = tree();
                changed.setGroupType(path, type);
                push(std::move(changed), path);
            });
    connect(&model_, &ConditionModel::dropped, this,
            [this](const ConditionPath& from, const ConditionPath& group, int position) {
                if (auto edit = editedByDrop(tree(), from, group, position)) {
                    push(std::move(edit->tree), edit->selected);
                }
            });
    connect(&model_, &ConditionModel::modelReset, view_, &QTreeView::expandAll);
    connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &SetFilter::updateActions);
    startEmpty();
}

SetFilter::~SetFilter() {
    // The view, which goes later, tells nothing more of the model.
    view_->setModel(nullptr);
}

void SetFilter::layOut() {
    auto* adding = new QToolBar(this);
    auto* changing = new QToolBar(this);
    adding->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    for (QToolBar* bar : {adding, changing}) {
        bar->setIconSize(ui::iconSizeFor(*this));
    }
    actions_->fillBars(*adding, *changing);

    view_->setObjectName(QStringLiteral("tvCondition"));
    view_->setAccessibleName(QStringLiteral("过滤条件"));
    view_->setModel(&model_);
    constexpr int kWidths[] = {210, 90, 110};
    for (int column = 0; column < static_cast<int>(std::size(kWidths)); ++column) {
        view_->header()->resizeSection(column, kWidths[column]);
    }
    lblRemarks_->setObjectName(QStringLiteral("lblRemarks"));
    lblRemarks_->setWordWrap(true);
    lblRemarks_->setTextFormat(Qt::PlainText);
    // A line of it always has its place, so that the tree does not jump.
    lblRemarks_->setMinimumHeight(fontMetrics().lineSpacing());
    txtCondition_->setObjectName(QStringLiteral("txtCondition"));
    txtCondition_->setAccessibleName(QStringLiteral("整个条件"));
    txtCondition_->setReadOnly(true);
    txtCondition_->setTabChangesFocus(true);
    txtCondition_->setPlaceholderText(QStringLiteral("这里用文字说明整个条件"));
    constexpr int kLines = 3;
    constexpr int kMargins = 14;
    txtCondition_->setFixedHeight(kLines * fontMetrics().lineSpacing() + kMargins);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(adding);
    layout->addWidget(changing);
    layout->addWidget(view_, 1);
    layout->addWidget(lblRemarks_);
    layout->addWidget(txtCondition_);
    setFocusProxy(view_);
}

void SetFilter::setEditing(bool on, const QString& placeholder) {
    isEditing_ = on;
    placeholder_ = placeholder;
    show(selectedPath());
}

void SetFilter::load(StoredCondition stored) {
    Draft draft;
    draft.history.reset(stored.tree);
    draft.stored = std::move(stored);
    resume(std::move(draft));
}

void SetFilter::resume(Draft draft) {
    view_->commitEdit();
    draft_ = std::move(draft);
    notice_.clear();
    model_.showFaults({});
    model_.showTrial({});
    show({});
}

void SetFilter::setSaved() {
    if (isModified()) {
        draft_.stored = {.tree = tree(), .remarks = {}};
    }
    view_->addNames(namesIn(tree()));
    notice_ = QStringLiteral("条件已保存。");
    show(selectedPath());
}

void SetFilter::setDeleted() {
    // A part of a condition must not come back as if it were the whole.
    if (isPartial()) {
        startEmpty();
        return;
    }
    draft_.stored = {};
    push({}, {});
}

ConditionPath SetFilter::selectedPath() const {
    return model_.pathOf(view_->currentIndex());
}

/// Whether what is shown is a stored condition that was not read whole.
bool SetFilter::isPartial() const {
    return !draft_.stored.isWhole && !isModified();
}

void SetFilter::push(ConditionTree changed, const ConditionPath& selected) {
    if (changed == tree()) {
        return;
    }
    draft_.history.push(std::move(changed));
    notice_.clear();
    show(selected);
    emit edited();
}

void SetFilter::step(void (ConditionHistory::*go)()) {
    (draft_.history.*go)();
    notice_.clear();
    show(selectedPath());
    emit edited();
}

/// Shows the condition as it is now, with the node at `selected`, or one near it, selected.
void SetFilter::show(const ConditionPath& selected) {
    model_.setEditable(isEditing_ && !isPartial());
    model_.show(tree());
    const QModelIndex index = model_.indexOf(existing(tree(), selected));
    if (index != view_->currentIndex().siblingAtColumn(0)) {
        view_->select(index);
    }
    view_->setPlaceholder(
        isEditing_ ? QStringLiteral("还没有条件。按“比较”添加一个比较，或者先添加一个组。")
                   : placeholder_);
    constexpr qsizetype kMostWords = 10 * qsizetype{kShownTextLimit};
    txtCondition_->setPlainText(ui::shortened(conditionWords(tree()), kMostWords));
    showRemarks();
    updateActions();
}

void SetFilter::showRemarks() {
    QStringList remarks;
    if (!isModified()) {
        remarks = draft_.stored.remarks;
        for (const QString& remark : numberRemarks(tree())) {
            remarks.append(ui::lineOf(remark));
        }
    }
    if (isPartial()) {
        remarks.append(QStringLiteral("这个条件没有全部显示，不能修改，只能清空后重新建立。"));
    }
    if (!notice_.isEmpty()) {
        remarks.append(notice_);
    }
    lblRemarks_->setText(remarks.join(u'\n'));
}

bool SetFilter::canRun(ConditionCommand command) const {
    switch (command) {
        case ConditionCommand::Undo:
            return isEditing_ && draft_.history.canUndo();
        case ConditionCommand::Redo:
            return isEditing_ && draft_.history.canRedo();
        case ConditionCommand::Clear:
            return isEditing_ && canEdit(command, tree(), {});
        case ConditionCommand::Try:
            return isEditing_ && !isPartial() && !tree().isEmpty();
        default:
            return isEditing_ && !isPartial() && canEdit(command, tree(), selectedPath());
    }
}

void SetFilter::updateActions() {
    actions_->enable([this](ConditionCommand command) { return canRun(command); });
}

void SetFilter::run(ConditionCommand command) {
    view_->commitEdit();
    switch (command) {
        case ConditionCommand::Undo:
            return step(&ConditionHistory::undo);
        case ConditionCommand::Redo:
            return step(&ConditionHistory::redo);
        case ConditionCommand::Try:
            return tryCondition();
        default:
            break;
    }
    auto edit = editedBy(command, tree(), selectedPath());
    if (!edit) {
        return;
    }
    const ConditionPath selected = edit->selected;
    push(std::move(edit->tree), selected);
    view_->setFocus();
    if (command == ConditionCommand::AddComparison) {
        view_->setCurrentIndex(model_.indexOf(selected));
        view_->edit(view_->currentIndex());
    }
}

bool SetFilter::check() {
    view_->commitEdit();
    const std::vector<ConditionFault> faults = conditionFaults(tree());
    model_.showTrial({});
    model_.showFaults(faults);
    QStringList texts;
    const ConditionFault* first = nullptr;
    int marked = 0;
    for (const ConditionFault& fault : faults) {
        if (fault.place.empty()) {
            texts.append(wholeText(fault, !draft_.stored.tree.isEmpty()));
        } else {
            ++marked;
            first = first == nullptr ? &fault : first;
        }
    }
    if (first != nullptr) {
        view_->select(model_.indexOf(first->place));
        view_->setFocus();
        texts.append(QStringLiteral("标出了 %1 处错误。第一处：%2")
                         .arg(QString::number(marked), ui::lineOf(first->text)));
    }
    const bool isGood = faults.empty() && !isPartial();
    notice_ = isGood ? QStringLiteral("检查通过。") : texts.join(u'\n');
    showRemarks();
    return isGood;
}

void SetFilter::tryCondition() {
    view_->commitEdit();
    const QPointer<SetFilter> self(this);
    const ConditionTree tried = tree();
    // The host may close the editor, or destroy the control, while it is asked.
    WhileShown source(self, properties_);
    const std::optional<ConditionTrial> trial = varo::tryCondition(tried, source);
    if (self.isNull() || !(tried == tree())) {
        return;
    }
    model_.showFaults({});
    model_.showTrial(trial.value_or(ConditionTrial()));
    notice_ = !trial ? QStringLiteral("试算：条件太大、嵌套太深或文字太长，无法计算。")
              : trial->holds ? QStringLiteral("试算：整个条件成立。")
                             : QStringLiteral("试算：整个条件不成立。");
    showRemarks();
}

}  // namespace varo
