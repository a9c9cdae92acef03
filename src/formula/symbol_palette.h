#pragma once

#include "form/form.h"

#include <QObject>

class QFocusEvent;
class QLineEdit;
class QStackedLayout;

namespace varo {

struct SymbolButton;

/// The symbol palette: a tab strip and, below it, the tool bar of the selected tab, whose buttons
/// type operators, functions and constants into the formula box. Clicks here leave the focus in the
/// formula box or give it back. The tool bars are enabled while the formula box has the focus.
class SymbolPalette : public QObject {
    Q_OBJECT

  public:
    /// Fills the tab strip and the tool bars, lays them out in `picSymbol` and shows the first tab.
    /// Everything handed in must outlive this.
    SymbolPalette(SymbolForm& form, QLineEdit& formulaBox);

    /// Enables the tab strip; the tool bars only if the formula box has the focus.
    void setEnabled(bool enabled);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fillTabStrip();
    void fillToolBar(std::size_t index);
    void addButton(QToolBar& bar, const SymbolButton& button);
    void layOut();
    void fitFont();
    void chooseColors();
    void showToolBar(int toolBar);
    void returnToFormula();
    void enableToolBars(bool enabled);
    void followFocus(const QFocusEvent& event);

    SymbolForm& form_;
    QLineEdit& formulaBox_;
    QStackedLayout* toolBars_ = nullptr;
};

}  // namespace varo
