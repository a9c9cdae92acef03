#pragma once

#include "form/form.h"
#include "form/pane_layout.h"

#include <QObject>

namespace varo {

/// Lays out the panes of the form in the control and moves the two splitter bars that the user
/// drags.
class Panes : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. Sets the minimum size of the control.
    Panes(const Form& form, QWidget& control);

    /// To be called when the control has been resized: lays out all panes.
    void follow();

    /// To be called when the control is shown: see PaneLayout::endFirstLayout().
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

    const Form& form_;
    QWidget& control_;
    PaneLayout layout_;
    Splitter treeSplitter_;
    Splitter listSplitter_;
    int grabbedAt_ = 0;
    bool dragging_ = false;
};

}  // namespace varo
