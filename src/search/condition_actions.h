#pragma once

#include "search/condition_commands.h"

#include <QObject>

#include <functional>
#include <map>

class QAction;
class QToolBar;
class QToolButton;
class QWidget;

namespace varo {

/// The actions of the commands on a condition, with their captions, icons and keys.
class ConditionActions : public QObject {
    Q_OBJECT

  public:
    /// `run` is called when the user gives a command. The keys of commands on a node are those of
    /// `view` alone, whose menu has all of them; the others are those of `editor`.
    ConditionActions(QWidget& editor, QWidget& view, std::function<void(ConditionCommand)> run);

    /// Puts the buttons of what adds, and of what changes, into two bars.
    void fillBars(QToolBar& adding, QToolBar& changing);

    /// Enables each command as `canRun` says.
    void enable(const std::function<bool(ConditionCommand)>& canRun);

  private:
    std::map<ConditionCommand, QAction*> actions_;
    QToolButton* wrap_ = nullptr;
};

}  // namespace varo
