#pragma once

#include "driver/dialog_driver.h"
#include "search/find_dialog.h"
#include "support/beam_desk.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTabBar>
#include <QTreeView>

namespace varo::test {

/// The beam libraries with the find dialog, which is opened and worked with as a user does.
class FindDesk : public BeamDesk {
  protected:
    /// What the desktop does when the dialog has been closed.
    void activate() {
        desk->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(desk.get()));
    }

    /// Opens the dialog, runs `use` while it is open, and closes it.
    void withDialog(const std::function<void()>& use) {
        const auto open = [&] {
            activate();
            desk->tree().setFocus();
            desk->pressKey(Qt::Key_F, Qt::ControlModifier);
        };
        varo::withDialog("frmFind", open, [&](QDialog& opened) {
            dialog = qobject_cast<FindDialog*>(&opened);
            use();
        });
    }

    template <class Widget = QWidget>
    Widget& part(const char* name) {
        return partOf<Widget>(*dialog, name);
    }
    void click(const char* name) { desk->click(part(name), Qt::LeftButton, {12, 8}); }
    void key(QWidget& widget, Qt::Key pressed) {
        QTest::keyClick(&widget, pressed);
        settle();
    }

    /// Searches folders and formulas whose names contain `text`, or have another place of it.
    void search(const QString& text, const char* place = "OptFindName2") {
        for (const char* box : {"ChkFolder", "ChkFormula", "ChkName"}) {
            if (!part<QCheckBox>(box).isChecked()) {
                click(box);
            }
        }
        click(place);
        part<QLineEdit>("txtName").setText(text);
        click("CmdFind");
    }

    QTreeView& results() { return part<QTreeView>("lvFindResult"); }
    QString listed() {
        QStringList texts;
        for (int row = 0; row < results().model()->rowCount(); ++row) {
            texts.append(results().model()->index(row, 0).data().toString());
        }
        return texts.join(u' ');
    }
    QString counted() { return part<QLabel>("lblFindCount").text(); }

    /// Clicks on a result, twice when it is to be located.
    void clickResult(int row, bool twice = false) {
        const QPoint place = results().visualRect(results().model()->index(row, 0)).center();
        QTest::mouseClick(results().viewport(), Qt::LeftButton, {}, place);
        if (twice) {
            QTest::mouseDClick(results().viewport(), Qt::LeftButton, {}, place);
        }
        settle();
    }

    /// What the control shows: the node's text, then the formula's.
    QString shown() { return selected() + u'/' + desk->list().selectedIndex().data().toString(); }

    QPointer<FindDialog> dialog;
};

}  // namespace varo::test
