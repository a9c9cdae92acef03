#pragma once

#include "library/property_source.h"
#include "library/stored_condition.h"
#include "search/condition_actions.h"
#include "search/condition_view.h"

#include <QWidget>

#include <functional>

class QLabel;
class QPlainTextEdit;

namespace varo {

/// The filter editor, `SetFilterProp`: edits one condition as a tree, tells what is wrong with it,
/// and tries it with the values of the host. It stores nothing.
class SetFilter : public QWidget {
    Q_OBJECT

  public:
    /// A condition that is being edited, with what can be undone.
    struct Draft {
        StoredCondition stored;
        ConditionHistory history;

        bool isModified() const { return !(history.current() == stored.tree); }
    };

    /// `properties` answers a trial; it must outlive this.
    SetFilter(PropertySource& properties, QWidget* parent);
    ~SetFilter() override;

    /// Switches editing on or off; off at first. While it is off, `placeholder` is shown in the
    /// place of an empty condition.
    void setEditing(bool on, const QString& placeholder = {});

    /// What gives the names that are offered for properties, beside those in the condition and in
    /// those that have been saved; asked once, when it is needed first.
    void setNames(std::function<QStringList()> source) { view_->setNames(std::move(source)); }

    /// Begins with a stored condition, as it is; nothing can be undone.
    void load(StoredCondition stored);
    void startEmpty() { load({}); }

    /// Goes on with what was edited before.
    void resume(Draft draft);
    const Draft& draft() const { return draft_; }

    const ConditionTree& tree() const { return draft_.history.current(); }
    /// Whether the condition differs from the stored one.
    bool isModified() const { return draft_.isModified(); }

    /// Takes over what is being typed.
    void commitEdit() { view_->commitEdit(); }

    /// Returns whether the condition can be saved and is then evaluated as it is shown. What is
    /// wrong is marked at its place, until the condition changes, and the first such place
    /// has the focus.
    bool check();

    /// Says that the condition is stored as it stands. One that has not been edited stays in the
    /// shape in which it was stored.
    void setSaved();

    /// Says that the stored condition has been deleted, and shows none; that can be undone, as an
    /// edit.
    void setDeleted();

    /// Asks the host for the values that the condition names, and marks what is true and what is
    /// not, until the condition changes; or says that the condition is beyond what is evaluated.
    void tryCondition();

  signals:
    /// The condition has been edited, or an edit undone.
    void edited();

  private:
    void layOut();
    void run(ConditionCommand command);
    void step(void (ConditionHistory::*go)());
    void push(ConditionTree changed, const ConditionPath& selected);
    void show(const ConditionPath& selected);
    void showRemarks();
    void updateActions();
    bool isPartial() const;
    bool canRun(ConditionCommand command) const;
    ConditionPath selectedPath() const;

    PropertySource& properties_;
    ConditionModel model_;
    ConditionView* view_;
    ConditionActions* actions_;
    QLabel* lblRemarks_;
    QPlainTextEdit* txtCondition_;
    Draft draft_;
    QString notice_;  ///< what the last check or trial said of the whole
    QString placeholder_;
    bool isEditing_ = false;
};

}  // namespace varo
