#include "search/property_dialog.h"

#include "platform/ui/node_view.h"
#include "platform/ui/wait_cursor.h"

#include <QLabel>
#include <QPushButton>

#include <utility>
#include <vector>

namespace varo {

namespace {

QString withoutPropertyText() {
    return QStringLiteral(
        "先在左边添加或选择一个属性，再编辑它的过滤条件。\n"
        "没有过滤条件的属性总是符合。");
}

}  // namespace

PropertyDialog::PropertyDialog(const QString& title, PropertySession& session,
                               PropertySource& properties, Questions& questions, QWidget* parent)
    : QDialog(parent),
      session_(session),
      questions_(questions),
      model_(session),
      form_(buildPropertyForm(*this, properties)) {
    setObjectName(QStringLiteral("frmLocateNode"));
    setWindowTitle(title);
    form_.lblTitle->setText(title);
    form_.lvProp->setModel(&model_);
    form_.lvProp->fitFirstColumn();
    form_.lvProp->setCommandKeys({Qt::Key_Insert, Qt::Key_Delete, Qt::Key_F2});
    connectCommands();
    constexpr QSize kOpeningSize(820, 560);
    resize(kOpeningSize);
    const auto& listed = session.properties();
    showProperty(listed.empty() ? std::nullopt : std::optional(listed.front().id));
    (listed.empty() ? static_cast<QWidget*>(form_.cmdAddProp) : form_.lvProp)->setFocus();
}

PropertyDialog::~PropertyDialog() {
    // A label that is being edited goes with its list, without renaming anything.
    form_.lvProp->setModel(nullptr);
}

void PropertyDialog::offerNames(std::function<QStringList()> source) {
    form_.SetFilterProp->setNames(std::move(source));
}

void PropertyDialog::connectCommands() {
    connect(form_.lvProp, &ui::NodeView::nodeClicked, this,
            [this](const QModelIndex& index) { showProperty(model_.idAt(index)); });
    connect(form_.lvProp, &ui::NodeView::commandKeyPressed, this, [this](const QKeySequence& key) {
        if (key == QKeySequence(Qt::Key_Insert)) {
            addProperty();
        } else if (key == QKeySequence(Qt::Key_Delete)) {
            deleteProperty();
        } else {
            renameProperty();
        }
    });
    connect(form_.lvProp, &ui::NodeView::doubleClicked, this, &PropertyDialog::renameProperty);
    connect(&model_, &PropertyListModel::refused, this, &PropertyDialog::tellRefused);
    connect(form_.SetFilterProp, &SetFilter::edited, this, &PropertyDialog::followEdits);
    connect(form_.cmdAddProp, &QPushButton::clicked, this, &PropertyDialog::addProperty);
    connect(form_.cmdDelProp, &QPushButton::clicked, this, &PropertyDialog::deleteProperty);
    connect(form_.cmdSearch, &QPushButton::clicked, this, &PropertyDialog::checkFilter);
    connect(form_.cmdSaveFilter, &QPushButton::clicked, this, &PropertyDialog::saveFilter);
    connect(form_.cmdDelFilter, &QPushButton::clicked, this, &PropertyDialog::deleteFilter);
    connect(form_.cmdOK, &QPushButton::clicked, this, &PropertyDialog::accept);
}

/// Behind the end of the editing: a message opened from within it would end it a second time.
void PropertyDialog::tellRefused(const QString& message) {
    isRefusalPending_ = true;
    QMetaObject::invokeMethod(
        this,
        [this, message] {
            isRefusalPending_ = false;
            questions_.inform(message);
        },
        Qt::QueuedConnection);
}

/// Takes over what is being typed. Returns false when a name is refused, which the user is told.
bool PropertyDialog::commitEdits() {
    form_.lvProp->commitEdit();
    form_.SetFilterProp->commitEdit();
    return !isRefusalPending_;
}

void PropertyDialog::followEdits() {
    if (shown_) {
        model_.setUnsaved(*shown_, form_.SetFilterProp->isModified());
        if (hasStoredFilter()) {
            form_.cmdDelFilter->setEnabled(true);
        }
    }
}

void PropertyDialog::keepDraft() {
    form_.SetFilterProp->commitEdit();
    if (shown_ && form_.SetFilterProp->isModified()) {
        drafts_[*shown_] = form_.SetFilterProp->draft();
    } else if (shown_) {
        drafts_.erase(*shown_);
    }
}

void PropertyDialog::showProperty(std::optional<qint32> id) {
    if (id && id == shown_) {
        form_.lvProp->selectItem(model_.indexOf(*id));
        return;
    }
    keepDraft();
    shown_ = id;
    form_.cmdDelProp->setEnabled(id.has_value());
    form_.cmdSaveFilter->setEnabled(false);
    form_.lvProp->selectItem(id ? model_.indexOf(*id) : QModelIndex());
    if (id) {
        form_.lvProp->scrollTo(model_.indexOf(*id));
        loadFilter(*id);
    } else {
        form_.cmdSearch->setEnabled(false);
        form_.cmdDelFilter->setEnabled(false);
        form_.SetFilterProp->startEmpty();
        form_.SetFilterProp->setEditing(false, withoutPropertyText());
    }
}

/// Whether the property that is shown has one.
bool PropertyDialog::hasStoredFilter() const {
    return session_.find(*shown_)->filter != 0;
}

void PropertyDialog::loadFilter(qint32 id) {
    form_.cmdDelFilter->setEnabled(hasStoredFilter());
    std::optional<StoredCondition> stored;
    const auto draft = drafts_.find(id);
    if (draft != drafts_.end()) {
        form_.SetFilterProp->resume(std::move(drafts_.extract(draft).mapped()));
    } else if ((stored = session_.readFilter(id))) {
        form_.SetFilterProp->load(std::move(*stored));
    } else {
        form_.SetFilterProp->startEmpty();
        form_.SetFilterProp->setEditing(false, QStringLiteral("无法读取这个属性的过滤条件。"));
        form_.cmdSearch->setEnabled(false);
        return;
    }
    form_.SetFilterProp->setEditing(true);
    form_.cmdSearch->setEnabled(true);
}

void PropertyDialog::addProperty() {
    if (!commitEdits()) {
        return;
    }
    const QModelIndex added = model_.add();
    if (!added.isValid()) {
        questions_.inform(QStringLiteral("属性的编号已经用完，无法添加属性！"));
        return;
    }
    showProperty(model_.idAt(added));
    renameProperty();
}

void PropertyDialog::renameProperty() {
    if (shown_ && commitEdits()) {
        form_.lvProp->setFocus();
        form_.lvProp->edit(model_.indexOf(*shown_));
    }
}

void PropertyDialog::deleteProperty() {
    if (!shown_ || !commitEdits()) {
        return;
    }
    const int row = model_.indexOf(*shown_).row();
    const qint32 id = *std::exchange(shown_, std::nullopt);
    drafts_.erase(id);
    model_.remove(id);
    const int next = std::min(row, model_.rowCount() - 1);
    showProperty(next < 0 ? std::nullopt : std::optional(model_.idAt(model_.index(next, 0))));
    form_.lvProp->setFocus();
}

void PropertyDialog::checkFilter() {
    if (!commitEdits()) {
        return;
    }
    const bool isGood = form_.SetFilterProp->check();
    form_.cmdSaveFilter->setEnabled(isGood);
    if (isGood) {
        form_.cmdDelFilter->setEnabled(true);
    }
}

void PropertyDialog::saveFilter() {
    if (commitEdits()) {
        saveShown();
    }
}

/// Returns whether the condition that is shown is stored now; what is wrong is told.
bool PropertyDialog::saveShown() {
    if (!form_.SetFilterProp->check()) {
        form_.cmdSaveFilter->setEnabled(false);
        return false;
    }
    if (!write([&] { return session_.saveFilter(*shown_, form_.SetFilterProp->tree()); })) {
        return false;
    }
    form_.SetFilterProp->setSaved();
    showWritten();
    return true;
}

/// Runs what writes a filter, and tells what the user is to be told. Returns whether it was done.
bool PropertyDialog::write(const std::function<PropertySession::Outcome()>& edit) {
    PropertySession::Outcome outcome;
    {
        const ui::clsWaitCursor waiting;
        outcome = edit();
    }
    if (!outcome.message.isEmpty()) {
        questions_.inform(outcome.message);
    }
    return outcome.isDone;
}

void PropertyDialog::deleteFilter() {
    if (!shown_ || !commitEdits()) {
        return;
    }
    if (!write([&] { return session_.deleteFilter(*shown_); })) {
        return;
    }
    form_.SetFilterProp->setDeleted();
    showWritten();
}

/// The condition that is shown has just been stored or deleted.
void PropertyDialog::showWritten() {
    drafts_.erase(*shown_);
    model_.setUnsaved(*shown_, false);
    model_.update(*shown_);
    form_.cmdSaveFilter->setEnabled(false);
    form_.cmdDelFilter->setEnabled(false);
}

/// Asks about each condition that has been edited and not saved. Returns false when one that is to
/// be saved cannot be; it is then shown.
bool PropertyDialog::saveDrafts() {
    keepDraft();
    std::vector<qint32> unsaved;
    for (const ListedProperty& property : session_.properties()) {
        if (drafts_.contains(property.id)) {
            unsaved.push_back(property.id);
        }
    }
    for (const qint32 id : unsaved) {
        const QString question = QStringLiteral("属性“%1”的过滤条件修改后还没有保存，现在保存吗？")
                                     .arg(session_.find(id)->name);
        if (!questions_.confirm(question, Choice::YesNo)) {
            continue;
        }
        showProperty(id);
        if (!saveShown()) {
            return false;
        }
    }
    return true;
}

void PropertyDialog::accept() {
    if (!commitEdits() || !saveDrafts()) {
        return;
    }
    if (!session_.hasChanges()) {
        reject();
        return;
    }
    QString failure;
    {
        const ui::clsWaitCursor waiting;
        failure = session_.commit();
    }
    if (!failure.isEmpty()) {
        questions_.inform(failure);
        return;
    }
    propertyCount_ = static_cast<int>(session_.properties().size());
    QDialog::accept();
}

}  // namespace varo
