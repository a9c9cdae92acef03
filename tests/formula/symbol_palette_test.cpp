#include "formula/symbol_palette.h"

#include "formula/formula_box.h"
#include "platform/ui/keystrokes.h"
#include "support/recording_questions.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <set>

namespace varo {

namespace {

/// What is on the screen is compared as "text before the caret|text behind it".
QString withCaret(const QLineEdit& box) {
    return box.text().insert(box.cursorPosition(), u'|');
}

/// The widgets of a control in a window, with the formula box and the palette at work.
class SymbolPaletteTest : public testing::Test {
  protected:
    SymbolPaletteTest() {
        form_.PicControl->resize(900, 600);
        form_.picBackGround->resize(900, 600);
        form_.picInputFormula->setGeometry(0, 100, 900, 40);
        palette_ = std::make_unique<SymbolPalette>(form_);
        form_.picSymbol->raise();
        showBand(900);
        window_.resize(900, 600);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        box().setFocus();
    }

    QLineEdit& box() { return *form_.txtFormula; }
    QTabBar& tabs() { return *form_.TabStripSymbol; }
    QToolBar& toolBar(int index) { return *form_.tbSymbol.at(static_cast<std::size_t>(index)); }

    void showBand(int width) {
        form_.picSymbol->setGeometry(0, 0, width, palette_->bandHeight());
        QCoreApplication::processEvents();
    }

    /// Shows "a+b|" as the text a+b with the caret behind it, nothing selected.
    void setBox(QString text) {
        const auto caret = text.indexOf(u'|');
        box().setText(text.remove(caret, 1));
        box().setCursorPosition(static_cast<int>(caret));
    }

    void clickTab(int index) {
        QTest::mouseClick(&tabs(), Qt::LeftButton, {}, tabs().tabRect(index).center());
        QCoreApplication::processEvents();
    }

    QToolButton* button(int index, const QString& key) {
        auto* action = toolBar(index).findChild<QAction*>(key);
        return action == nullptr
                   ? nullptr
                   : qobject_cast<QToolButton*>(toolBar(index).widgetForAction(action));
    }

    /// Clicks a button of the tool bar that is shown, and lets its keystrokes arrive.
    void clickButton(int index, const QString& key) {
        QToolButton* clicked = button(index, key);
        ASSERT_NE(clicked, nullptr) << qPrintable(key);
        ASSERT_TRUE(clicked->isVisible()) << qPrintable(key);
        QTest::mouseClick(clicked, Qt::LeftButton);
        QCoreApplication::processEvents();
    }

    /// Opens the menu of what does not fit and clicks the entry with this text.
    static void chooseFromMenuOf(QToolButton& more, const QString& text) {
        QMenu* opened = nullptr;
        // The click does not return before the menu is closed.
        QTimer::singleShot(0, [&] {
            opened = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(opened, nullptr);
            for (QAction* action : opened->actions()) {
                if (action->text() == text) {
                    QTest::mouseClick(opened, Qt::LeftButton, {},
                                      opened->actionGeometry(action).center());
                }
            }
            opened->close();
        });
        QTest::mouseClick(&more, Qt::LeftButton);
        QCoreApplication::processEvents();
        EXPECT_NE(opened, nullptr);
    }

    QList<int> shownToolBars() {
        QList<int> shown;
        for (int i = 0; i < SymbolTabs; ++i) {
            if (toolBar(i).isVisible()) {
                shown.append(i);
            }
        }
        return shown;
    }

    QWidget window_;
    Form form_ = buildForm(&window_);
    test::RecordingQuestions questions_;
    ControlState state_{questions_};
    FormulaBox formulaBox_{form_, state_, questions_};
    std::unique_ptr<SymbolPalette> palette_;
};

struct TypedSymbol {
    int toolBar;
    const char* key;
    const char* typed;  ///< between "x" and "y", with the caret
};

constexpr TypedSymbol TypedSymbols[] = {
    {0, "左括号", "x(|y"},
    {0, "右括号", "x)|y"},
    {0, "加", "x+|y"},
    {0, "减", "x-|y"},
    {0, "乘", "x*|y"},
    {0, "除", "x/|y"},
    {0, "乘方", "x^|y"},
    {0, "阶乘", "x(|)!y"},
    {1, "正弦", "xsin(|)y"},
    {1, "余弦", "xcos(|)y"},
    {1, "正切", "xtan(|)y"},
    {1, "反正弦", "xarcsin(|)y"},
    {1, "反余弦", "xarccos(|)y"},
    {1, "反正切", "xarctan(|)y"},
    {1, "反余切", "xarcctan(|)y"},
    {2, "开方", "xsqrt(|)y"},
    {2, "自然对数", "xln(|)y"},
    {2, "对数", "xlog(|)y"},
    {2, "取整", "xint(|)y"},
    {2, "取小数", "xdeci(|)y"},
    {2, "精度", "xpreci(|)y"},
    {2, "求余", "xmod(|)y"},
    {3, "圆周率", "xpi|y"},
    {3, "指数", "xexp|y"},
    {3, "真", "x1|y"},
    {3, "假", "x0|y"},
    {4, "R2s", "xR2S(|)y"},
    {4, "S2r", "xS2R(|)y"},
    {4, "Case", "xStrCase(|)y"},
    {5, "合并字符串", "xStrCat(|)y"},
    {5, "子串", "xStrSub(|)y"},
    {5, "左子串", "xLeft(|)y"},
    {5, "右子串", "xRight(|)y"},
    {5, "部份子串", "xStrSubN(|)y"},
    {6, "字符串长度", "xStrLen(|)y"},
    {6, "子串位置", "xStrFind(|)y"},
    {6, "子串次数", "xStrFindN(|)y"},
    {6, "匹配字符串位置", "xStrMismatch(|)y"},
    {7, "删除子串", "xStrTrim(|)y"},
    {7, "删除空格", "xStrTrimS(|)y"},
    {7, "替换子串", "xStrReplace(|)y"},
    {7, "删除所有相同子串", "xStrDelete(|)y"},
    {7, "插入子串", "xStrInsert(|)y"},
    {8, "与", "x And |y"},
    {8, "或", "x Or |y"},
    {8, "非", "xNot(|)y"},
    {9, "大于", "x > |y"},
    {9, "小于", "x < |y"},
    {9, "大于等于", "x >= |y"},
    {9, "小于等于", "x <= |y"},
    {9, "等于", "x = |y"},
    {9, "不等于", "x <> |y"},
    {9, "包含", "x Like |y"},
    {9, "匹配", "x Equal |y"},
    {9, "条件运算", "xIf(|)y"},
};

}  // namespace

TEST_F(SymbolPaletteTest, EveryButtonTypesItsSymbolAtTheCaret) {
    std::array<int, SymbolTabs> buttons{};
    for (const TypedSymbol& symbol : TypedSymbols) {
        SCOPED_TRACE(symbol.key);
        clickTab(symbol.toolBar);
        setBox(QStringLiteral("x|y"));
        clickButton(symbol.toolBar, QString::fromUtf8(symbol.key));
        EXPECT_EQ(withCaret(box()).toStdString(), symbol.typed);
        ++buttons.at(static_cast<std::size_t>(symbol.toolBar));
    }
    for (int i = 0; i < SymbolTabs; ++i) {
        EXPECT_EQ(toolBar(i).actions().size(), buttons.at(static_cast<std::size_t>(i))) << i;
    }
}

TEST_F(SymbolPaletteTest, TabsCarryCaptionsAndKeys) {
    QStringList captions;
    QStringList keys;
    for (int i = 0; i < tabs().count(); ++i) {
        captions.append(tabs().tabText(i));
        keys.append(tabs().tabData(i).toString());
    }
    EXPECT_EQ(
        captions.join(u' ').toStdString(),
        "运算符 三角函数 算术函数 常数 类型转换 合并分解 大小位置 修剪字符 逻辑运算 关系运算");
    EXPECT_EQ(keys.join(u' ').toStdString(),
              "Operator TriFunction MathFunction Const Conversion TreatString FindString CutString "
              "Login Relation");
}

TEST_F(SymbolPaletteTest, ToolTipsGiveTheNameAndTheArguments) {
    EXPECT_EQ(button(0, QStringLiteral("加"))->toolTip(), QStringLiteral("加"));
    EXPECT_EQ(button(1, QStringLiteral("反余切"))->toolTip(), QStringLiteral("反余切：ctan(real)"));
    EXPECT_EQ(button(3, QStringLiteral("圆周率"))->toolTip(),
              QStringLiteral("圆周率：PI=3.14159265359…"));
    EXPECT_EQ(button(6, QStringLiteral("匹配字符串位置"))->toolTip(),
              QStringLiteral("匹配字符串长度：StrMisMatch(str,str,int,int,bool)"));
}

TEST_F(SymbolPaletteTest, NoButtonIsMuteOrLooksLikeAnotherOrTakesTheFocus) {
    for (int i = 0; i < SymbolTabs; ++i) {
        std::set<QString> labels;
        for (const QAction* action : toolBar(i).actions()) {
            const QToolButton* shown = button(i, action->data().toString());
            ASSERT_NE(shown, nullptr);
            EXPECT_FALSE(shown->accessibleName().isEmpty());
            EXPECT_EQ(shown->accessibleName(), shown->toolTip());
            EXPECT_FALSE(shown->text().isEmpty());
            EXPECT_TRUE(labels.insert(shown->text()).second) << qPrintable(shown->text());
        }
        for (const QToolButton* any : toolBar(i).findChildren<QToolButton*>()) {
            EXPECT_EQ(any->focusPolicy(), Qt::NoFocus);
        }
    }
}

TEST_F(SymbolPaletteTest, FactorialOnAnEmptyBoxLeavesTheCaretBetweenTheParentheses) {
    box().clear();
    clickButton(0, QStringLiteral("阶乘"));
    EXPECT_EQ(withCaret(box()), QStringLiteral("(|)!"));
}

TEST_F(SymbolPaletteTest, TypingReplacesTheSelection) {
    box().setText(QStringLiteral("abcd"));
    box().setSelection(1, 2);
    clickButton(0, QStringLiteral("加"));
    EXPECT_EQ(withCaret(box()), QStringLiteral("a+|d"));
}

TEST_F(SymbolPaletteTest, FunctionsFollowEachOtherIntoTheParentheses) {
    box().clear();
    clickTab(2);
    clickButton(2, QStringLiteral("开方"));
    clickButton(2, QStringLiteral("自然对数"));
    EXPECT_EQ(withCaret(box()), QStringLiteral("sqrt(ln(|))"));
}

TEST_F(SymbolPaletteTest, KeystrokesArriveAfterTheClickAndEachChangesTheText) {
    box().clear();
    QStringList texts;
    QObject::connect(&box(), &QLineEdit::textEdited,
                     [&texts](const QString& text) { texts << text; });
    palette_->typeSymbol(2, QStringLiteral("自然对数"));
    EXPECT_EQ(box().text(), QString());
    QCoreApplication::processEvents();
    EXPECT_EQ(texts.join(u' ').toStdString(), "l ln ln( ln()");
    EXPECT_TRUE(box().isModified());
}

TEST_F(SymbolPaletteTest, TypingASymbolGivesTheFormulaBoxTheFocus) {
    setBox(QStringLiteral("a|b"));
    form_.txtResult->setFocus();
    palette_->typeSymbol(0, QStringLiteral("乘方"));
    EXPECT_TRUE(box().hasFocus());
    QCoreApplication::processEvents();
    EXPECT_EQ(withCaret(box()), QStringLiteral("a^|b"));
}

TEST_F(SymbolPaletteTest, AFullBoxTakesNoMoreCharacters) {
    const QString full(TextLimit, u'a');
    box().setText(full);
    clickButton(0, QStringLiteral("加"));
    EXPECT_EQ(box().text(), full);
    EXPECT_EQ(box().cursorPosition(), TextLimit);

    box().setText(full.chopped(4));
    palette_->typeSymbol(7, QStringLiteral("替换子串"));
    QCoreApplication::processEvents();
    EXPECT_EQ(box().text(), full.chopped(4) + QStringLiteral("StrR"));
}

TEST_F(SymbolPaletteTest, AnUnknownKeyTypesNothing) {
    setBox(QStringLiteral("a|b"));
    palette_->typeSymbol(0, QStringLiteral("正弦"));
    palette_->typeSymbol(1, QString());
    QCoreApplication::processEvents();
    EXPECT_EQ(withCaret(box()), QStringLiteral("a|b"));
}

TEST_F(SymbolPaletteTest, OnlyTheSelectedTabsToolBarIsShown) {
    EXPECT_EQ(tabs().currentIndex(), 0);
    EXPECT_EQ(shownToolBars(), QList<int>{0});
    for (const int tab : {9, 3, 3, 0, 5}) {
        clickTab(tab);
        EXPECT_EQ(shownToolBars(), QList<int>{tab});
    }
}

TEST_F(SymbolPaletteTest, ATabClickReturnsToTheCaretInTheFormulaBox) {
    setBox(QStringLiteral("a+|b"));
    form_.txtResult->setFocus();
    clickTab(1);
    EXPECT_TRUE(box().hasFocus());
    clickButton(1, QStringLiteral("正弦"));
    EXPECT_EQ(withCaret(box()), QStringLiteral("a+sin(|)b"));
}

TEST_F(SymbolPaletteTest, ATabClickPutsTheCaretWhereTheSelectionBegan) {
    box().setText(QStringLiteral("abcd"));
    box().setSelection(1, 2);
    clickTab(8);
    EXPECT_FALSE(box().hasSelectedText());
    clickButton(8, QStringLiteral("与"));
    EXPECT_EQ(withCaret(box()), QStringLiteral("a And |bcd"));
}

TEST_F(SymbolPaletteTest, AClickOnTheSelectedTabAlsoReturnsToTheFormulaBox) {
    form_.txtResult->setFocus();
    clickTab(0);
    EXPECT_TRUE(box().hasFocus());
}

TEST_F(SymbolPaletteTest, MouseClicksNeverTakeTheFocusFromTheFormulaBox) {
    int losses = 0;
    QObject::connect(qApp, &QApplication::focusChanged, &window_, [&losses] { ++losses; });
    clickTab(1);
    clickButton(1, QStringLiteral("余弦"));
    EXPECT_EQ(losses, 0);
    EXPECT_TRUE(box().hasFocus());
}

TEST_F(SymbolPaletteTest, ArrowKeysGoThroughTheTabsUntilOneIsChosen) {
    for (const Qt::Key choice : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        clickTab(0);
        setBox(QStringLiteral("a|b"));
        tabs().setFocus();
        QTest::keyClick(&tabs(), Qt::Key_Right);
        QTest::keyClick(&tabs(), Qt::Key_Right);
        EXPECT_EQ(shownToolBars(), QList<int>{2});
        EXPECT_TRUE(tabs().hasFocus());

        QTest::keyClick(&tabs(), choice);
        EXPECT_TRUE(box().hasFocus());
        EXPECT_EQ(withCaret(box()), QStringLiteral("a|b"));
    }
}

TEST_F(SymbolPaletteTest, ANarrowBandKeepsEveryTabAndButtonReachable) {
    showBand(150);
    tabs().setCurrentIndex(9);
    QCoreApplication::processEvents();
    EXPECT_TRUE(tabs().rect().contains(tabs().tabRect(9).center()));
    const auto scrollers = tabs().findChildren<QToolButton*>();
    EXPECT_TRUE(std::ranges::any_of(scrollers, &QToolButton::isVisible));

    auto* more = toolBar(9).findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"));
    ASSERT_NE(more, nullptr);
    EXPECT_TRUE(more->isVisible());
    EXPECT_FALSE(button(9, QStringLiteral("条件运算"))->isVisible());

    box().clear();
    chooseFromMenuOf(*more, QStringLiteral("If"));
    EXPECT_EQ(withCaret(box()), QStringLiteral("If(|)"));
}

TEST_F(SymbolPaletteTest, ANarrowBandShowsLabelsWholeOrNotAtAll) {
    for (const int width : {150, 200, 306}) {
        showBand(width);
        for (int i = 0; i < SymbolTabs; ++i) {
            clickTab(i);
            for (const QAction* action : toolBar(i).actions()) {
                const QToolButton* shown = button(i, action->data().toString());
                EXPECT_TRUE(!shown->isVisible() ||
                            shown->width() > shown->fontMetrics().horizontalAdvance(shown->text()))
                    << qPrintable(shown->text()) << " in " << width;
            }
        }
    }
}

TEST_F(SymbolPaletteTest, TheBandsHeightHoldsTabStripAndToolBarWithoutOverlap) {
    for (int i = 0; i < SymbolTabs; ++i) {
        clickTab(i);
        EXPECT_GE(tabs().height(), tabs().sizeHint().height());
        EXPECT_GE(toolBar(i).y(), tabs().geometry().bottom());
        EXPECT_GE(toolBar(i).height(), toolBar(i).sizeHint().height());
        EXPECT_TRUE(form_.picSymbol->rect().contains(toolBar(i).geometry()));
    }
}

namespace {

struct Keys {
    const char* keys;
    const char* typed;
};

constexpr Keys KeyTexts[] = {
    {"", "|"},           {"aZ 1", "aZ 1|"}, {"+^()%~", "+^()%~|"},
    {"{+}{^}", "+^|"},   {"{{}{}}", "{}|"}, {"}", "}|"},
    {"a{left}b", "b|a"}, {"{left}a", "a|"}, {"a{nowhere}b", "ab|"},
    {"a{left", "a|"},    {"a{}", "a|"},     {"正{弦}", "正弦|"},
};

}  // namespace

TEST(Keystrokes, AreTypedInOrder) {
    for (const auto& [keys, typed] : KeyTexts) {
        QLineEdit box;
        ui::typeKeys(box, QString::fromUtf8(keys));
        EXPECT_TRUE(box.text().isEmpty()) << keys;
        QCoreApplication::processEvents();
        EXPECT_EQ(withCaret(box).toStdString(), typed) << keys;
    }
}

TEST(Keystrokes, EachPressIsFollowedByItsRelease) {
    class KeyLog : public QWidget {
      public:
        QStringList events;

      protected:
        void keyPressEvent(QKeyEvent* event) override { note(u'+', *event); }
        void keyReleaseEvent(QKeyEvent* event) override { note(u'-', *event); }

      private:
        void note(QChar direction, const QKeyEvent& event) {
            events.append(direction + QKeySequence(event.key()).toString() + event.text());
        }
    };
    KeyLog log;
    ui::typeKeys(log, u"a{(}{left}");
    QCoreApplication::processEvents();
    EXPECT_EQ(log.events.join(u' ').toStdString(), "+Aa -Aa +(( -(( +Left -Left");
}

TEST(Keystrokes, AreDroppedWithTheirTarget) {
    auto box = std::make_unique<QLineEdit>();
    QSignalSpy edits(box.get(), &QLineEdit::textEdited);
    ui::typeKeys(*box, u"abc");
    box.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(edits.count(), 0);
}

}  // namespace varo
