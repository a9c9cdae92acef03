#pragma once

#include <QKeySequence>
#include <QObject>

#include <vector>

class QAction;
class QKeyEvent;
class QWidget;

namespace varo::ui {

/// The keys that are down; those of the number pad count as the others.
QKeySequence keysOf(const QKeyEvent& event);

/// Triggers actions by their shortcuts wherever the focus is within a widget. Unlike a shortcut of
/// the widget, the key of an enabled action is taken before the shortcuts of the application around
/// the widget; the key of a disabled one is left to them.
class ActionKeys : public QObject {
    Q_OBJECT

  public:
    /// `area` must outlive this.
    explicit ActionKeys(QWidget& area);

    /// Both the shortcut and what is enabled are asked when a key is pressed. `action`, which must
    /// outlive this, is not to have its shortcut in the area by other means.
    void add(QAction& action) { actions_.push_back(&action); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QAction* actionFor(const QKeyEvent& event) const;

    std::vector<QAction*> actions_;
};

}  // namespace varo::ui
