#include "formula/panel.h"
#include "platform/ui/keystrokes.h"

#include <QAction>
#include <QMenu>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>

namespace varo::test {
namespace {

/// What is on the screen is compared as "text before the caret|text behind it".
QString withCaret(const QLineEdit& line) {
    return line.text().insert(line.cursorPosition(), u'|');
}

/// The panel with the formula ab shown and the caret between its letters.
class SymbolPaletteTest : public Panel {
  protected:
    SymbolPaletteTest() {
        showNew(u"ab"_s);
        setBox(u"a|b"_s);
        box.setFocus();
    }

    void showBand(int width) {
        band.setGeometry(0, 0, width, band.sizeHint().height());
        settle();
    }

    /// Shows "a+b|" as the text a+b with the caret behind it, nothing selected.
    void setBox(QString text) {
        const auto caret = text.indexOf(u'|');
        box.setText(text.remove(caret, 1));
        box.setCursorPosition(static_cast<int>(caret));
    }

    QToolBar& toolBar(int index) {
        return *form.panel.symbols.tbSymbol.at(static_cast<std::size_t>(index));
    }

    QToolButton* button(int index, const QString& key) {
        return qobject_cast<QToolButton*>(
            toolBar(index).widgetForAction(toolBar(index).findChild<QAction*>(key)));
    }

    void clickTab(int index) {
        QTest::mouseClick(&tabs, Qt::LeftButton, {}, tabs.tabRect(index).center());
        settle();
        for (int i = 0; i < kSymbolTabs; ++i) {
            EXPECT_EQ(toolBar(i).isVisible(), i == index) << "only its tool bar is shown";
        }
        EXPECT_TRUE(box.hasFocus());
    }

    /// Clicks a button and lets its keystrokes arrive.
    QString afterClick(int index, const QString& key) {
        click(button(index, key));
        return withCaret(box);
    }

    QTabBar& tabs = *form.panel.symbols.TabStripSymbol;
    QWidget& band = *form.panel.symbols.picSymbol;
};

TEST_F(SymbolPaletteTest, EveryButtonTypesWhatTheEngineKnowsAtTheCaret) {
    QStringList typed;
    const QObject watch;
    QObject::connect(qApp, &QApplication::focusChanged, &watch, [] { ADD_FAILURE(); });
    for (int tab = 0; tab < kSymbolTabs; ++tab) {
        clickTab(tab);
        for (const QAction* action : toolBar(tab).actions()) {
            EXPECT_EQ(button(tab, action->objectName())->accessibleName(), action->toolTip());
            setBox(u"x|y"_s);
            QString text = afterClick(tab, action->objectName()).sliced(1).chopped(1);
            typed.append(text);
            ParsedFormula formula;
            formula.setText(text.remove(u'|'));
            if (tab != 0 && text.endsWith(u')')) {
                EXPECT_TRUE(typed.last().endsWith(u"(|)"_s));
                EXPECT_TRUE(tab == 8 || action->toolTip().contains(text.chopped(1).right(5),
                                                                   Qt::CaseInsensitive));
            }
            EXPECT_TRUE(formula.variables().empty()) << text.toStdString();
            EXPECT_FALSE(formula.evaluate({}).text.contains(u"没有函数"_s)) << text.toStdString();
        }
    }
    EXPECT_EQ(typed.removeDuplicates(), 0);
    EXPECT_EQ(typed.size(), 55);
    EXPECT_EQ(typed.first(8).join(u' '), u"(| )| +| -| *| /| ^| (|)!"_s);
    EXPECT_EQ(typed.last(9).join(u';'),
              u" > |; < |; >= |; <= |; = |; <> |; Like |; Equal |;If(|)"_s);
}

TEST_F(SymbolPaletteTest, SymbolsArriveKeyByKeyOneAfterTheOtherAndReplaceTheSelection) {
    QStringList texts;
    QObject::connect(&box, &QLineEdit::textEdited,
                     [&texts](const QString& text) { texts << text; });
    clickTab(2);
    QTest::mouseClick(button(2, u"开方"_s), Qt::LeftButton);
    EXPECT_EQ(box.text(), u"ab"_s) << "nothing arrives before the click has ended";
    EXPECT_EQ(afterClick(2, u"自然对数"_s), u"asqrt(ln(|))b"_s);
    EXPECT_EQ(texts.size(), 10);
    box.setSelection(1, 6);
    clickTab(0);
    EXPECT_EQ(withCaret(box), u"a|sqrt(ln())b"_s) << "a click on a tab ends the selection";
    box.setSelection(1, 6);
    EXPECT_EQ(afterClick(0, u"加"_s), u"a+|n())b"_s);
}

TEST_F(SymbolPaletteTest, ArrowKeysGoThroughTheTabsUntilOneIsChosen) {
    for (const Qt::Key choice : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        leave();
        clickTab(0);
        tabs.setFocus();
        QTest::keyClick(&tabs, Qt::Key_Right);
        QTest::keyClick(&tabs, Qt::Key_Right);
        EXPECT_TRUE(toolBar(2).isVisible() && tabs.hasFocus());
        QTest::keyClick(&tabs, choice);
        EXPECT_TRUE(box.hasFocus());
        EXPECT_EQ(withCaret(box), u"a|b"_s);
    }
}

TEST_F(SymbolPaletteTest, ANarrowBandKeepsEveryButtonReachable) {
    showBand(150);
    tabs.setCurrentIndex(9);
    settle();
    EXPECT_TRUE(tabs.rect().contains(tabs.tabRect(9).center()));
    EXPECT_FALSE(button(9, u"条件运算"_s)->isVisible());
    // The click does not return before the menu is closed.
    QTimer::singleShot(0, [] {
        auto& opened = dynamic_cast<QMenu&>(*QApplication::activePopupWidget());
        const QRect entry = opened.actionGeometry(opened.actions().last());
        QTest::mouseClick(&opened, Qt::LeftButton, {}, entry.center());
        opened.close();
    });
    QTest::mouseClick(toolBar(9).findChild<QToolButton*>(u"qt_toolbar_ext_button"_s),
                      Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(withCaret(box), u"aIf(|)b"_s);
}

TEST_F(SymbolPaletteTest, ABandHoldsItsToolBarsAndShowsLabelsWholeOrNotAtAll) {
    for (const auto& [points, width] : {std::pair{9, 150}, {16, 306}, {8, 900}}) {
        QFont font = window.font();
        font.setPointSize(points);
        window.setFont(font);
        showBand(width);
        for (int i = 0; i < kSymbolTabs; ++i) {
            tabs.setCurrentIndex(i);
            QCoreApplication::processEvents();
            EXPECT_GE(toolBar(i).y(), tabs.geometry().bottom());
            EXPECT_TRUE(band.rect().contains(toolBar(i).geometry()));
            for (const QAction* action : toolBar(i).actions()) {
                const QToolButton& shown = *button(i, action->objectName());
                const QSize text = shown.fontMetrics().size(0, action->text());
                EXPECT_TRUE(!shown.isVisible() ||
                            (shown.width() > text.width() && shown.height() >= text.height()))
                    << points << " points in " << width;
            }
        }
    }
}

TEST_F(SymbolPaletteTest, TheToolBarsAreEnabledWithTheFocusOfTheFormulaBoxAndReadableBefore) {
    const int behind = 0x30;
    QPalette palette(QColor(behind, behind, behind));
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, palette.color(QPalette::Button));
    window.setPalette(palette);
    leave();
    const QToolButton& shown = *button(0, u"加"_s);
    ASSERT_FALSE(shown.isEnabled() || toolBar(9).isEnabled());
    EXPECT_TRUE(tabs.isEnabled());
    const int disabled = qGray(shown.palette().color(QPalette::ButtonText).rgb());
    EXPECT_GT(disabled, behind + 90);
    box.setFocus();
    EXPECT_TRUE(shown.isEnabled() && toolBar(9).isEnabled());
    EXPECT_GT(qGray(shown.palette().color(QPalette::ButtonText).rgb()), disabled + 60);
}

TEST(Keystrokes, AreTypedInOrder) {
    for (const QString& text :
         u"+^()%~ +^()%~|;{+}{^} +^|;{{}{}} {}|;} }|;a{left}b b|a;"
         "a{nowhere}b ab|;a{left a|;正{弦} 正弦|"_s.split(u';')) {
        QLineEdit line;
        ui::typeKeys(line, text.section(u' ', 0, 0));
        EXPECT_TRUE(line.text().isEmpty());
        QCoreApplication::processEvents();
        EXPECT_EQ(withCaret(line), text.section(u' ', 1));
    }
}

}  // namespace
}  // namespace varo::test
