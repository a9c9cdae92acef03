#include "formula/symbol_palette.h"

#include "formula/parsed_formula.h"
#include "platform/ui/keystrokes.h"
#include "platform/ui/result_box.h"
#include "support/printers.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

/// What is on the screen is compared as "text before the caret|text behind it".
QString withCaret(const QLineEdit& box) {
    return box.text().insert(box.cursorPosition(), u'|');
}

/// The palette and the formula box in a window.
class SymbolPaletteTest : public testing::Test {
  protected:
    SymbolPaletteTest() {
        form_.PicControl->resize(900, 600);
        form_.picBackGround->resize(900, 600);
        form_.picInputFormula->setGeometry(0, 100, 900, 40);
        band_.raise();
        showBand(900);
        window_.resize(900, 600);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        setBox(u"a|b"_s);
        box_.setFocus();
    }

    void showBand(int width) {
        band_.setGeometry(0, 0, width, band_.sizeHint().height());
        QCoreApplication::processEvents();
    }

    /// Shows "a+b|" as the text a+b with the caret behind it, nothing selected.
    void setBox(QString text) {
        const auto caret = text.indexOf(u'|');
        box_.setText(text.remove(caret, 1));
        box_.setCursorPosition(static_cast<int>(caret));
    }

    QToolBar& toolBar(int index) {
        return *form_.panel.symbols.tbSymbol.at(static_cast<std::size_t>(index));
    }

    QToolButton* button(int index, const QString& key) {
        return qobject_cast<QToolButton*>(
            toolBar(index).widgetForAction(toolBar(index).findChild<QAction*>(key)));
    }

    void clickTab(int index) {
        QTest::mouseClick(&tabs_, Qt::LeftButton, {}, tabs_.tabRect(index).center());
        QCoreApplication::processEvents();
        for (int i = 0; i < kSymbolTabs; ++i) {
            EXPECT_EQ(toolBar(i).isVisible(), i == index) << "only its tool bar is shown";
        }
        EXPECT_TRUE(box_.hasFocus());
    }

    /// Clicks a button and lets its keystrokes arrive.
    QString afterClick(int index, const QString& key) {
        QTest::mouseClick(button(index, key), Qt::LeftButton);
        QCoreApplication::processEvents();
        return withCaret(box_);
    }

    QWidget window_;
    Form form_ = buildForm(&window_);
    QLineEdit& box_ = *form_.panel.txtFormula;
    QTabBar& tabs_ = *form_.panel.symbols.TabStripSymbol;
    QWidget& band_ = *form_.panel.symbols.picSymbol;
    SymbolPalette palette_{form_.panel.symbols, box_};
};

TEST_F(SymbolPaletteTest, EveryButtonTypesItsSymbolAtTheCaret) {
    // What the buttons of a tab type that are not functions with a name in their tool tip.
    const std::map<int, QString> signs{
        {0, u"(|;)|;+|;-|;*|;/|;^|;(|)!"_s},
        {3, u"pi|;exp|;1|;0|"_s},
        {8, u" And |; Or |;Not(|)"_s},
        {9, u" > |; < |; >= |; <= |; = |; <> |; Like |; Equal |;If(|)"_s}};
    int losses = 0;
    int symbols = 0;
    const QObject watch;
    QObject::connect(qApp, &QApplication::focusChanged, &watch, [&losses] { ++losses; });
    for (int tab = 0; tab < kSymbolTabs; ++tab) {
        clickTab(tab);
        QStringList labels;
        QStringList typed;
        for (const QAction* action : toolBar(tab).actions()) {
            const QToolButton* shown = button(tab, action->objectName());
            EXPECT_TRUE(shown->isVisible());
            EXPECT_EQ(shown->accessibleName(), shown->toolTip());
            labels.append(shown->text());
            setBox(u"x|y"_s);
            const QString text = afterClick(tab, action->objectName()).sliced(1).chopped(1);
            typed.append(text);
            if (!signs.contains(tab)) {
                const QString name = text.chopped(3);
                EXPECT_EQ(text, name + u"(|)"_s);
                EXPECT_TRUE(shown->toolTip().contains(name.right(4) + u'(', Qt::CaseInsensitive));
                ParsedFormula formula;
                formula.setText(name + u"()"_s);
                EXPECT_FALSE(formula.evaluate({}).text.contains(u"没有函数"_s))
                    << text.toStdString();
            }
        }
        if (signs.contains(tab)) {
            EXPECT_EQ(typed.join(u';'), signs.at(tab));
        }
        symbols += static_cast<int>(typed.size());
        EXPECT_EQ(labels.removeDuplicates() + labels.count(QString()), 0);
        EXPECT_EQ(typed.removeDuplicates(), 0);
    }
    EXPECT_EQ(symbols, 55);
    EXPECT_EQ(losses, 0) << "the focus stays in the formula box";
}

TEST_F(SymbolPaletteTest, SymbolsFollowEachOtherAndReplaceTheSelection) {
    box_.clear();
    clickTab(2);
    afterClick(2, u"开方"_s);
    EXPECT_EQ(afterClick(2, u"自然对数"_s), u"sqrt(ln(|))"_s);
    box_.setSelection(1, 6);
    clickTab(0);
    EXPECT_EQ(withCaret(box_), u"s|qrt(ln())"_s) << "a tab click ends the selection at its begin";
    box_.setSelection(1, 6);
    EXPECT_EQ(afterClick(0, u"加"_s), u"s+|())"_s);
}

TEST_F(SymbolPaletteTest, KeystrokesArriveOneByOneWhenTheClickHasEnded) {
    QStringList texts;
    QObject::connect(&box_, &QLineEdit::textEdited,
                     [&texts](const QString& text) { texts << text; });
    clickTab(2);
    QTest::mouseClick(button(2, u"自然对数"_s), Qt::LeftButton);
    EXPECT_EQ(box_.text(), u"ab"_s);
    QCoreApplication::processEvents();
    EXPECT_EQ(texts.join(u' '), u"alb alnb aln(b aln()b"_s);
}

TEST_F(SymbolPaletteTest, ArrowKeysGoThroughTheTabsUntilOneIsChosen) {
    for (const Qt::Key choice : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        form_.panel.result.txtResult->setFocus();
        clickTab(0);
        tabs_.setFocus();
        QTest::keyClick(&tabs_, Qt::Key_Right);
        QTest::keyClick(&tabs_, Qt::Key_Right);
        EXPECT_TRUE(toolBar(2).isVisible() && tabs_.hasFocus());
        QTest::keyClick(&tabs_, choice);
        EXPECT_TRUE(box_.hasFocus());
        EXPECT_EQ(withCaret(box_), u"a|b"_s);
    }
}

TEST_F(SymbolPaletteTest, ANarrowBandKeepsEveryButtonReachable) {
    showBand(150);
    tabs_.setCurrentIndex(9);
    QCoreApplication::processEvents();
    EXPECT_TRUE(tabs_.rect().contains(tabs_.tabRect(9).center()));
    auto* more = toolBar(9).findChild<QToolButton*>(u"qt_toolbar_ext_button"_s);
    ASSERT_TRUE(more != nullptr && more->isVisible());
    EXPECT_FALSE(button(9, u"条件运算"_s)->isVisible());
    // The click does not return before the menu is closed.
    QTimer::singleShot(0, [] {
        auto* opened = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(opened, nullptr);
        const QRect entry = opened->actionGeometry(opened->actions().last());
        QTest::mouseClick(opened, Qt::LeftButton, {}, entry.center());
        opened->close();
    });
    QTest::mouseClick(more, Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(withCaret(box_), u"aIf(|)b"_s);
}

TEST_F(SymbolPaletteTest, ABandHoldsItsToolBarsAndShowsLabelsWholeOrNotAtAll) {
    for (const auto& [points, width] :
         {std::pair{9, 150}, {9, 306}, {9, 900}, {8, 306}, {16, 306}, {12, 306}, {16, 900}}) {
        QFont font = window_.font();
        font.setPointSize(points);
        window_.setFont(font);
        showBand(width);
        for (int i = 0; i < kSymbolTabs; ++i) {
            tabs_.setCurrentIndex(i);
            QCoreApplication::processEvents();
            EXPECT_GE(toolBar(i).y(), tabs_.geometry().bottom());
            EXPECT_TRUE(band_.rect().contains(toolBar(i).geometry()));
            for (QAction* action : toolBar(i).actions()) {
                const QWidget* shown = toolBar(i).widgetForAction(action);
                const QSize text = shown->fontMetrics().size(0, action->text());
                EXPECT_TRUE(!shown->isVisible() ||
                            (shown->width() > text.width() && shown->height() >= text.height()))
                    << points << " points in " << width;
            }
        }
    }
}

TEST_F(SymbolPaletteTest, TheToolBarsAreEnabledWhileTheFormulaBoxHasTheFocus) {
    EXPECT_TRUE(toolBar(0).isEnabled() && toolBar(9).isEnabled());
    form_.panel.result.txtResult->setFocus();
    EXPECT_FALSE(toolBar(0).isEnabled() || toolBar(9).isEnabled());
    EXPECT_TRUE(tabs_.isEnabled());
    palette_.setEnabled(false);
    EXPECT_FALSE(tabs_.isEnabled());
    palette_.setEnabled(true);
    EXPECT_TRUE(tabs_.isEnabled());
    EXPECT_FALSE(toolBar(0).isEnabled());
}

TEST_F(SymbolPaletteTest, WhatIsOfferedCanBeReadBeforeItIsEnabled) {
    for (const auto& [text, surface] : {std::pair{Qt::black, 0xefefefU}, {Qt::white, 0x303030U}}) {
        QPalette palette(QColor::fromRgb(surface));
        palette.setColor(QPalette::ButtonText, text);
        palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor::fromRgb(surface));
        window_.setPalette(palette);
        form_.panel.result.txtResult->setFocus();
        QToolButton& shown = *button(0, u"加"_s);
        ASSERT_FALSE(shown.isEnabled());
        const int enabled =
            qGray(shown.palette().color(QPalette::Active, QPalette::ButtonText).rgb());
        const int disabled = qGray(shown.palette().color(QPalette::ButtonText).rgb());
        const int behind = qGray(surface);
        EXPECT_GT(std::abs(disabled - behind), 90);
        EXPECT_GT(std::abs(enabled - behind), std::abs(disabled - behind) + 60);
    }
}

TEST(Keystrokes, AreTypedInOrder) {
    const QString cases =
        u"+^()%~ +^()%~|;{+}{^} +^|;{{}{}} {}|;} }|;a{left}b b|a;a{nowhere}b ab|;"
        "a{left a|;正{弦} 正弦|"_s;
    for (const QString& text : cases.split(u';')) {
        QLineEdit box;
        ui::typeKeys(box, text.section(u' ', 0, 0));
        EXPECT_TRUE(box.text().isEmpty());
        QCoreApplication::processEvents();
        EXPECT_EQ(withCaret(box), text.section(u' ', 1));
    }
}

}  // namespace
}  // namespace varo
