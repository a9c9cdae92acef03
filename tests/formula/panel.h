#pragma once

#include "driver/grid_driver.h"
#include "form/panes.h"
#include "formula/formula_pane.h"
#include "platform/ui/result_box.h"
#include "support/recording_questions.h"
#include "support/test_library.h"

#include <QHash>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

namespace varo::test {

using namespace Qt::StringLiterals;

/// The formula panel in a window on the screen, over a library of its own. Messages are recorded;
/// the host answers properties from a table.
class Panel : public testing::Test, public PropertySource {
  protected:
    Panel() {
        addLibrary(library);
        EXPECT_TRUE(current.open(1));
        window.resize(1000, 700);
        panes.follow();
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        const auto tell = [this](qint32 id, const QString& text) {
            told.append(u"%1|%2"_s.arg(id).arg(text));
        };
        QObject::connect(&pane, &FormulaPane::expressionStored, &window, tell);
        QObject::connect(&pane, &FormulaPane::memoStored, &window, tell);
    }

    QString propertyValue(const QString& name) override {
        asked.append(name);
        std::exchange(meanwhile, [] {})();
        return properties.value(name);
    }

    void addLibrary(const TestLibrary& added) {
        addTo(libraries, added.folder(), added.fileName(), u"库"_s);
    }

    /// Shows a formula as the library holds it.
    void show(qint32 formula) {
        clsFormulaInfo record;
        record.FormulaID = formula;
        record.FormulaExpression = stored(formula, u"Formula"_s);
        record.FormulaMemo = stored(formula, u"Memo"_s);
        HeldMessages messages;
        pane.show(record, messages);
        messages.show(questions);
        settle();
    }

    /// Adds a formula and shows it.
    qint32 showNew(const QString& expression) {
        const qint32 id = library.addFormula(0, u"式"_s, expression);
        show(id);
        return id;
    }

    QString stored(qint32 formula, const QString& column) {
        data::Recordset rs;
        EXPECT_TRUE(library.funcs().GetFormulaByID(formula, rs, library.connection()));
        return rs.text(column);
    }

    void click(QWidget* widget) {
        QTest::mouseClick(widget, Qt::LeftButton, {}, {8, 8});
        settle();
    }

    /// Gives the focus to a widget that stores nothing.
    void leave() {
        form.panel.result.UpDownPrecision->setFocus();
        settle();
    }

    void typeValue(const QString& name, const QString& value) {
        QTest::keyClick(&beginTyping(grid, name, value), Qt::Key_Return);
        settle();
    }

    /// The buttons that need a result; they are enabled together.
    bool canUseResult() {
        const ResultForm& area = form.panel.result;
        EXPECT_EQ(area.cmdSaveResult->isEnabled(), area.cmdCopy->isEnabled());
        EXPECT_EQ(area.cmdSaveResult->isEnabled(), area.cmdSend->isEnabled());
        return area.cmdCopy->isEnabled();
    }

    TestLibrary library;
    colFormulaDB libraries;
    RecordingQuestions questions;
    CurrentLibrary current{libraries, questions};
    QWidget window;
    Form form = buildForm(&window);
    Panes panes{form, window};
    QHash<QString, QString> properties;
    QStringList asked;                        ///< properties that the host was asked for
    std::function<void()> meanwhile = [] {};  ///< what the host does when it is asked next
    QStringList told;                         ///< "formula|text" that the panel said to have stored
    FormulaPane pane{form.panel, current, *this, questions};

    QLineEdit& box = *form.panel.txtFormula;
    QPlainTextEdit& memo = *form.panel.description.txtDesc;
    ui::EditGrid& grid = *form.panel.MSFEditVarList;
    ui::ResultBox& result = *form.panel.result.txtResult;
};

}  // namespace varo::test
