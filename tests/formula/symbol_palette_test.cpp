#include "formula/panel.h"
#include "platform/ui/keystrokes.h"

#include <QAction>
#include <QMenu>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>

#include <cstdlib>
#include <map>

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
    EXPECT_EQ(withCaret(box), u"aIf(|)b"_s);
}

TEST_F(SymbolPaletteTest, ABandHoldsItsToolBarsAndShowsLabelsWholeOrNotAtAll) {
    for (const auto& [points, width] :
         {std::pair{9, 150}, {9, 306}, {9, 900}, {8, 306}, {16, 306}, {12, 306}, {16, 900}}) {
        QFont font = window.font();
        font.setPointSize(points);
        window.setFont(font);
        showBand(width);
        for (int i = 0; i < kSymbolTabs; ++i) {
            tabs.setCurrentIndex(i);
            QCoreApplication::processEvents();
            EXPECT_GE(toolBar(i).y(), tabs.geometry().bottom());
            EXPECT_TRUE(band.rect().contains(toolBar(i).geometry()));
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

TEST_F(SymbolPaletteTest, TheToolBarsAreEnabledWithTheFocusOfTheFormulaBoxAndReadableBefore) {
    for (const auto& [text, surface] : {std::pair{Qt::black, 0xefefefU}, {Qt::white, 0x303030U}}) {
        QPalette palette(QColor::fromRgb(surface));
        palette.setColor(QPalette::ButtonText, text);
        palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor::fromRgb(surface));
        window.setPalette(palette);
        leave();
        QToolButton& shown = *button(0, u"加"_s);
        ASSERT_FALSE(shown.isEnabled() || toolBar(9).isEnabled());
        const int enabled =
            qGray(shown.palette().color(QPalette::Active, QPalette::ButtonText).rgb());
        const int disabled = qGray(shown.palette().color(QPalette::ButtonText).rgb());
        const int behind = qGray(surface);
        EXPECT_GT(std::abs(disabled - behind), 90);
        EXPECT_GT(std::abs(enabled - behind), std::abs(disabled - behind) + 60);
        EXPECT_TRUE(tabs.isEnabled());
        box.setFocus();
        EXPECT_TRUE(shown.isEnabled() && toolBar(9).isEnabled());
    }
}

TEST(Keystrokes, AreTypedInOrder) {
    const QString cases =
        u"+^()%~ +^()%~|;{+}{^} +^|;{{}{}} {}|;} }|;a{left}b b|a;a{nowhere}b ab|;"
        "a{left a|;正{弦} 正弦|"_s;
    for (const QString& text : cases.split(u';')) {
        QLineEdit line;
        ui::typeKeys(line, text.section(u' ', 0, 0));
        EXPECT_TRUE(line.text().isEmpty());
        QCoreApplication::processEvents();
        EXPECT_EQ(withCaret(line), text.section(u' ', 1));
    }
}

}  // namespace
}  // namespace varo::test
