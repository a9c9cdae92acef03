#pragma once

#include "control/form.h"

#include <QObject>
#include <QString>

class QStackedLayout;

namespace varo {

/// The symbol palette: a tab strip and, below it, the tool bar of the selected tab, whose buttons
/// type operators, functions and constants into the formula box. Nothing here takes the focus from
/// the formula box while the mouse is used. It does not decide when tabs and tool bars are enabled.
class SymbolPalette : public QObject {
    Q_OBJECT

  public:
    /// Fills the tab strip and the tool bars, lays them out in `picSymbol` and shows the first tab.
    /// The form's widgets must outlive this.
    explicit SymbolPalette(Form& form);

    /// Height in pixels that tab strip and tool bar need at the present font.
    int bandHeight() const;

    /// Gives the formula box the focus and queues what the button `key` of tool bar `toolBar` (0 to
    /// 9) types at its caret; types nothing for a key that the tool bar does not have.
    void typeSymbol(int toolBar, const QString& key);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fillTabStrip();
    void fillToolBar(int toolBar);
    void layOut();
    void fitFont();
    void chooseColors();
    void showToolBar(int toolBar);
    void returnToFormula();

    Form& form_;
    QStackedLayout* toolBars_ = nullptr;
};

}  // namespace varo
