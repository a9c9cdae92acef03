#include "formula/symbol_palette.h"

#include "formula/formula_box.h"
#include "platform/ui/keystrokes.h"
#include "support/recording_questions.h"

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
#include <memory>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

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
        setBox(u"a|b"_s);
        form_.txtFormula->setFocus();
    }

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

    QLineEdit& box() { return *form_.txtFormula; }
    QTabBar& tabs() { return *form_.TabStripSymbol; }
    QToolBar& toolBar(int index) { return *form_.tbSymbol.at(static_cast<std::size_t>(index)); }

    QToolButton* button(int index, const QString& key) {
        return qobject_cast<QToolButton*>(
            toolBar(index).widgetForAction(toolBar(index).findChild<QAction*>(key)));
    }

    void clickTab(int index) {
        QTest::mouseClick(&tabs(), Qt::LeftButton, {}, tabs().tabRect(index).center());
        QCoreApplication::processEvents();
        for (int i = 0; i < SymbolTabs; ++i) {
            EXPECT_EQ(toolBar(i).isVisible(), i == index) << "only its tool bar is shown";
        }
        EXPECT_TRUE(box().hasFocus());
    }

    /// Clicks a button and lets its keystrokes arrive.
    QString afterClick(int index, const QString& key) {
        QTest::mouseClick(button(index, key), Qt::LeftButton);
        QCoreApplication::processEvents();
        return withCaret(box());
    }

    QWidget window_;
    Form form_ = buildForm(&window_);
    test::RecordingQuestions questions_;
    ControlState state_{questions_};
    FormulaBox formulaBox_{form_, state_, questions_};
    std::unique_ptr<SymbolPalette> palette_;
};

/// For each tab its buttons as key=what one click types, separated by semicolons.
const char* const Symbols[SymbolTabs] = {
    "左括号=(|;右括号=)|;加=+|;减=-|;乘=*|;除=/|;乘方=^|;阶乘=(|)!",
    "正弦=sin(|);余弦=cos(|);正切=tan(|);反正弦=arcsin(|);反余弦=arccos(|);反正切=arctan(|);"
    "反余切=arcctan(|)",
    "开方=sqrt(|);自然对数=ln(|);对数=log(|);取整=int(|);取小数=deci(|);精度=preci(|);求余=mod(|)",
    "圆周率=pi|;指数=exp|;真=1|;假=0|",
    "R2s=R2S(|);S2r=S2R(|);Case=StrCase(|)",
    "合并字符串=StrCat(|);子串=StrSub(|);左子串=Left(|);右子串=Right(|);部份子串=StrSubN(|)",
    "字符串长度=StrLen(|);子串位置=StrFind(|);子串次数=StrFindN(|);匹配字符串位置=StrMismatch(|)",
    "删除子串=StrTrim(|);删除空格=StrTrimS(|);替换子串=StrReplace(|);删除所有相同子串=StrDelete(|);"
    "插入子串=StrInsert(|)",
    "与= And |;或= Or |;非=Not(|)",
    "大于= > |;小于= < |;大于等于= >= |;小于等于= <= |;等于= = |;不等于= <> |;包含= Like |;"
    "匹配= Equal |;条件运算=If(|)",
};

TEST_F(SymbolPaletteTest, EveryButtonTypesItsSymbolAtTheCaret) {
    int losses = 0;
    const QObject watch;
    QObject::connect(qApp, &QApplication::focusChanged, &watch, [&losses] { ++losses; });
    for (int tab = 0; tab < SymbolTabs; ++tab) {
        clickTab(tab);
        const QStringList symbols = QString::fromUtf8(Symbols[tab]).split(u';');
        EXPECT_EQ(toolBar(tab).actions().size(), symbols.size());
        QStringList labels;
        for (const QString& symbol : symbols) {
            const QString key = symbol.section(u'=', 0, 0);
            const QToolButton* shown = button(tab, key);
            ASSERT_TRUE(shown != nullptr && shown->isVisible()) << qPrintable(key);
            EXPECT_EQ(shown->accessibleName(), shown->toolTip());
            labels.append(shown->text());
            setBox(u"x|y"_s);
            EXPECT_EQ(afterClick(tab, key), u'x' + symbol.section(u'=', 1) + u'y');
        }
        EXPECT_EQ(labels.removeDuplicates() + labels.count(QString()), 0);
    }
    EXPECT_EQ(losses, 0) << "the focus stays in the formula box";
}

TEST_F(SymbolPaletteTest, TabsCarryCaptionsAndKeysAndButtonsTheirArguments) {
    QStringList texts;
    for (int i = 0; i < tabs().count(); ++i) {
        texts.append(tabs().tabText(i) + u'=' + tabs().tabData(i).toString());
    }
    EXPECT_EQ(texts.join(u' ').toStdString(),
              "运算符=Operator 三角函数=TriFunction 算术函数=MathFunction 常数=Const "
              "类型转换=Conversion 合并分解=TreatString 大小位置=FindString 修剪字符=CutString "
              "逻辑运算=Login 关系运算=Relation");
    EXPECT_EQ(button(0, u"加"_s)->toolTip(), u"加"_s);
    EXPECT_EQ(button(1, u"反余切"_s)->toolTip(), u"反余切：ctan(real)"_s);
    EXPECT_EQ(button(6, u"匹配字符串位置"_s)->toolTip(),
              u"匹配字符串长度：StrMisMatch(str,str,int,int,bool)"_s);
}

TEST_F(SymbolPaletteTest, SymbolsFollowEachOtherAndReplaceTheSelection) {
    box().clear();
    clickTab(2);
    afterClick(2, u"开方"_s);
    EXPECT_EQ(afterClick(2, u"自然对数"_s), u"sqrt(ln(|))"_s);
    box().setSelection(1, 6);
    clickTab(0);
    EXPECT_EQ(withCaret(box()), u"s|qrt(ln())"_s) << "a tab click ends the selection at its begin";
    box().setSelection(1, 6);
    EXPECT_EQ(afterClick(0, u"加"_s), u"s+|())"_s);
}

TEST_F(SymbolPaletteTest, KeystrokesArriveOneByOneInTheFormulaBoxWhereverTheFocusWas) {
    QStringList texts;
    QObject::connect(&box(), &QLineEdit::textEdited,
                     [&texts](const QString& text) { texts << text; });
    form_.txtResult->setFocus();
    palette_->typeSymbol(2, u"自然对数"_s);
    palette_->typeSymbol(0, u"正弦"_s);
    EXPECT_TRUE(box().hasFocus());
    EXPECT_EQ(box().text(), u"ab"_s) << "nothing arrives before the click has ended";
    QCoreApplication::processEvents();
    EXPECT_EQ(texts.join(u' ').toStdString(), "alb alnb aln(b aln()b");
}

TEST_F(SymbolPaletteTest, ArrowKeysGoThroughTheTabsUntilOneIsChosen) {
    for (const Qt::Key choice : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        form_.txtResult->setFocus();
        clickTab(0);
        tabs().setFocus();
        QTest::keyClick(&tabs(), Qt::Key_Right);
        QTest::keyClick(&tabs(), Qt::Key_Right);
        EXPECT_TRUE(toolBar(2).isVisible() && tabs().hasFocus());
        QTest::keyClick(&tabs(), choice);
        EXPECT_TRUE(box().hasFocus());
        EXPECT_EQ(withCaret(box()), u"a|b"_s);
    }
}

TEST_F(SymbolPaletteTest, ANarrowBandKeepsEveryButtonReachable) {
    showBand(150);
    tabs().setCurrentIndex(9);
    QCoreApplication::processEvents();
    EXPECT_TRUE(tabs().rect().contains(tabs().tabRect(9).center()));
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
    EXPECT_EQ(withCaret(box()), u"aIf(|)b"_s);
}

TEST_F(SymbolPaletteTest, ABandHoldsItsToolBarsAndShowsLabelsWholeOrNotAtAll) {
    for (const auto& [points, width] :
         {std::pair{9, 150}, {9, 306}, {9, 900}, {8, 306}, {16, 306}, {12, 306}, {16, 900}}) {
        QFont font = window_.font();
        font.setPointSize(points);
        window_.setFont(font);
        showBand(width);
        for (int i = 0; i < SymbolTabs; ++i) {
            tabs().setCurrentIndex(i);
            QCoreApplication::processEvents();
            EXPECT_GE(toolBar(i).y(), tabs().geometry().bottom());
            EXPECT_TRUE(form_.picSymbol->rect().contains(toolBar(i).geometry()));
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

TEST_F(SymbolPaletteTest, WhatIsOfferedCanBeReadBeforeItIsEnabled) {
    for (const auto& [text, surface] : {std::pair{Qt::black, 0xefefefU}, {Qt::white, 0x303030U}}) {
        QPalette palette(QColor::fromRgb(surface));
        palette.setColor(QPalette::ButtonText, text);
        palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor::fromRgb(surface));
        window_.setPalette(palette);
        form_.txtResult->setFocus();
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
