#pragma once

#include "control/form.h"
#include "control/pane_layout.h"

#include <QObject>

namespace varo {

/// Keeps the panes of the form in their places: follows the size of the control and lets the user
/// drag the two splitter bars.
class Panes : public QObject {
    Q_OBJECT

  public:
    /// The form must outlive this; the control that holds it gets its least size.
    Panes(Form& form, QWidget& control);

    /// The control has been resized.
    void follow();

    /// The control is on screen: from now on the description panel keeps its width.
    void endFirstLayout() { layout_.endFirstLayout(); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Splitter {
        QWidget* bar;
        QWidget* dragBar;
        int (PaneLayout::*clamp)(int) const;
        void (PaneLayout::*move)(int);
    };

    bool dragSplitter(const Splitter& splitter, const QEvent& event);
    void place();

    Form& form_;
    QWidget& control_;
    PaneLayout layout_;
    Splitter treeSplitter_;
    Splitter listSplitter_;
    int grabbedAt_ = 0;
    bool dragging_ = false;
};

}  // namespace varo
