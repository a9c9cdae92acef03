#include "formula/symbol_palette.h"

#include "formula/symbol_table.h"
#include "platform/ui/colors.h"
#include "platform/ui/keystrokes.h"

#include <QAction>
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

/// Where the band is narrow a button gives up the space around its label, but a label is shown
/// whole, and a parenthesis stays wide enough to hit.
int narrowestWidth(const QToolButton& button) {
    constexpr int Frame = 8;
    return std::max(button.fontMetrics().horizontalAdvance(button.text()) + Frame,
                    button.sizeHint().height() * 5 / 4);
}

}  // namespace

SymbolPalette::SymbolPalette(Form& form) : form_(form) {
    fillTabStrip();
    for (int toolBar = 0; toolBar < SymbolTabs; ++toolBar) {
        fillToolBar(toolBar);
    }
    layOut();

    QTabBar* tabs = form.TabStripSymbol;
    tabs->setCurrentIndex(0);
    showToolBar(0);
    tabs->installEventFilter(this);
    form.picSymbol->installEventFilter(this);
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

void SymbolPalette::fillToolBar(int toolBar) {
    const auto index = static_cast<std::size_t>(toolBar);
    const SymbolTab& tab = symbolTabs()[index];
    QToolBar* bar = form_.tbSymbol[index];
    bar->setAccessibleName(tab.caption.toString());
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    for (const SymbolButton& button : tab.buttons) {
        QAction* action = bar->addAction(button.label.toString());
        action->setObjectName(button.key);
        action->setData(button.key.toString());
        action->setToolTip(button.toolTip.toString());
        auto* widget = qobject_cast<QToolButton*>(bar->widgetForAction(action));
        widget->setAccessibleName(action->toolTip());
        // Without a frame a bare sign does not look like a button.
        widget->setAutoRaise(false);
    }
    // The button that opens what does not fit is one of them.
    for (QToolButton* button : bar->findChildren<QToolButton*>()) {
        button->setFocusPolicy(Qt::NoFocus);
    }
    connect(bar, &QToolBar::actionTriggered, this, [this, toolBar](const QAction* action) {
        typeSymbol(toolBar, action->data().toString());
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

/// The tool bars are disabled until the user turns to the formula box; what they offer must be
/// readable before. Styles tend to make disabled text fainter than that.
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

int SymbolPalette::bandHeight() const {
    return form_.picSymbol->sizeHint().height();
}

void SymbolPalette::showToolBar(int toolBar) {
    toolBars_->setCurrentIndex(toolBar);
}

void SymbolPalette::returnToFormula() {
    QLineEdit* box = form_.txtFormula;
    const int caret = box->hasSelectedText() ? box->selectionStart() : box->cursorPosition();
    box->setFocus();
    box->setCursorPosition(caret);
}

void SymbolPalette::typeSymbol(int toolBar, const QString& key) {
    form_.txtFormula->setFocus();
    ui::typeKeys(*form_.txtFormula, symbolKeystrokes(toolBar, key));
}

bool SymbolPalette::eventFilter(QObject* watched, QEvent* event) {
    if (watched == form_.picSymbol) {
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
        // The arrow keys only go through the tabs; these choose one.
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
