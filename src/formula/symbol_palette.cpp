#include "formula/symbol_palette.h"

#include "formula/symbol_table.h"
#include "platform/ui/colors.h"
#include "platform/ui/keystrokes.h"

#include <QAction>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStackedLayout>
#include <QTabBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace varo {

namespace {

/// The width of a button that shows its whole label and is wide enough to click on.
int narrowestWidth(const QToolButton& button) {
    constexpr int kFrame = 8;
    return std::max(button.fontMetrics().horizontalAdvance(button.text()) + kFrame,
                    button.sizeHint().height() * 5 / 4);
}

}  // namespace

SymbolPalette::SymbolPalette(SymbolForm& form, QLineEdit& formulaBox)
    : form_(form), formulaBox_(formulaBox) {
    fillTabStrip();
    for (std::size_t index = 0; index < form.tbSymbol.size(); ++index) {
        fillToolBar(index);
    }
    layOut();

    QTabBar* tabs = form.TabStripSymbol;
    tabs->setCurrentIndex(0);
    showToolBar(0);
    tabs->installEventFilter(this);
    form.picSymbol->installEventFilter(this);
    formulaBox.installEventFilter(this);
    fitFont();
    chooseColors();
    connect(tabs, &QTabBar::currentChanged, this, &SymbolPalette::showToolBar);
    connect(tabs, &QTabBar::tabBarClicked, this, &SymbolPalette::returnToFormula);
}

void SymbolPalette::fillTabStrip() {
    QTabBar* tabs = form_.TabStripSymbol;
    tabs->setUsesScrollButtons(true);
    tabs->setElideMode(Qt::ElideNone);
    for (const SymbolTab& tab : symbolTabs()) {
        const int index = tabs->addTab(tab.caption.toString());
        tabs->setTabData(index, tab.key.toString());
    }
}

void SymbolPalette::fillToolBar(std::size_t index) {
    const SymbolTab& tab = symbolTabs()[index];
    QToolBar* bar = form_.tbSymbol[index];
    bar->setAccessibleName(tab.caption.toString());
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    for (const SymbolButton& button : tab.buttons) {
        addButton(*bar, button);
    }
    // Includes the button that opens the menu of the actions that do not fit.
    for (QToolButton* button : bar->findChildren<QToolButton*>()) {
        button->setFocusPolicy(Qt::NoFocus);
    }
}

void SymbolPalette::addButton(QToolBar& bar, const SymbolButton& button) {
    QAction* action = bar.addAction(button.label.toString());
    action->setObjectName(button.key);
    action->setToolTip(button.toolTip.toString());
    auto* widget = qobject_cast<QToolButton*>(bar.widgetForAction(action));
    widget->setAccessibleName(action->toolTip());
    // Without a frame a bare sign does not look like a button.
    widget->setAutoRaise(false);
    connect(action, &QAction::triggered, this, [this, keystrokes = button.keystrokes] {
        formulaBox_.setFocus();
        ui::typeKeys(formulaBox_, keystrokes);
    });
}

void SymbolPalette::layOut() {
    auto* rows = new QVBoxLayout(form_.picSymbol);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(form_.TabStripSymbol);
    // One cell for all of them, so that the band is as high as the highest.
    toolBars_ = new QStackedLayout;
    rows->addLayout(toolBars_);
    for (QToolBar* bar : form_.tbSymbol) {
        toolBars_->addWidget(bar);
    }
}

void SymbolPalette::fitFont() {
    for (const QToolBar* bar : form_.tbSymbol) {
        for (QAction* action : bar->actions()) {
            auto* button = qobject_cast<QToolButton*>(bar->widgetForAction(action));
            button->setMinimumWidth(narrowestWidth(*button));
        }
    }
}

/// Sets the colour of disabled buttons: the tool bars are disabled until the formula box gains the
/// focus and must be readable before; many styles draw disabled text fainter than that.
void SymbolPalette::chooseColors() {
    const QPalette& around = form_.picSymbol->palette();
    const QColor text = ui::mixed(around.color(QPalette::Active, QPalette::ButtonText),
                                  around.color(QPalette::Active, QPalette::Button), 50);
    QPalette own;
    own.setColor(QPalette::Disabled, QPalette::ButtonText, text);
    for (QToolBar* bar : form_.tbSymbol) {
        bar->setPalette(own);
    }
}

void SymbolPalette::showToolBar(int toolBar) {
    toolBars_->setCurrentIndex(toolBar);
}

void SymbolPalette::returnToFormula() {
    const int caret =
        formulaBox_.hasSelectedText() ? formulaBox_.selectionStart() : formulaBox_.cursorPosition();
    formulaBox_.setFocus();
    formulaBox_.setCursorPosition(caret);
}

void SymbolPalette::setEnabled(bool enabled) {
    form_.TabStripSymbol->setEnabled(enabled);
    enableToolBars(enabled && formulaBox_.hasFocus());
}

void SymbolPalette::enableToolBars(bool enabled) {
    for (QToolBar* bar : form_.tbSymbol) {
        bar->setEnabled(enabled);
    }
}

void SymbolPalette::followFocus(const QFocusEvent& event) {
    if (event.gotFocus()) {
        form_.TabStripSymbol->setEnabled(true);
        enableToolBars(true);
    } else if (event.reason() != Qt::PopupFocusReason) {
        // A popup may be the menu of a tool bar that does not fit, which must stay enabled.
        enableToolBars(false);
    }
}

bool SymbolPalette::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &formulaBox_) {
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
            followFocus(static_cast<const QFocusEvent&>(*event));
        }
    } else if (watched == form_.picSymbol) {
        switch (event->type()) {
            case QEvent::FontChange:
            case QEvent::StyleChange:
                fitFont();
                break;
            case QEvent::PaletteChange:
                chooseColors();
                break;
            default:
                break;
        }
    } else if (watched == form_.TabStripSymbol && event->type() == QEvent::KeyPress) {
        // The arrow keys change the tab and leave the focus in the strip.
        switch (static_cast<QKeyEvent*>(event)->key()) {
            case Qt::Key_Return:
            case Qt::Key_Enter:
            case Qt::Key_Space:
                returnToFormula();
                return true;
            default:
                break;
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace varo
