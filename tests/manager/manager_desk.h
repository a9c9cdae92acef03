#pragma once

#include "driver/dialog_driver.h"
#include "manager/library_list_view.h"
#include "manager/library_manager_dialog.h"
#include "support/beam_desk.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

namespace varo::test {

/// Libraries that are not configured.
struct OtherLibraries {
    TestLibrary third{u"third.mdb"_s};
    TestLibrary fourth{u"fourth.mdb"_s};
};

/// A control on the beam libraries, 库1 and 库2, with its library manager.
class ManagerDesk : protected OtherLibraries, public BeamDesk {
  protected:
    /// A control that is started then shows the same libraries, under keys that count from 1.
    ~ManagerDesk() override {
        const QStringList shown = desk->treeTexts();
        start();
        EXPECT_EQ(desk->treeTexts(), shown);
    }

    /// Lets `open` open the manager and works with it; cancels it if it is then still open.
    void manage(const std::function<void()>& open, const std::function<void()>& act) {
        withDialog("frmLibraryManager", open, [&](QDialog& dialog) {
            manager = static_cast<LibraryManagerDialog*>(&dialog);
            settle();
            act();
        });
        settle();
    }
    void manage(const std::function<void()>& act) {
        manage([this] { desk->clickEditButton(u"公式库管理"_s); }, act);
    }

    /// Clicks on a button of the open manager, by its key or name.
    void give(const char* button) { clickIn(*manager, button); }
    /// Chooses a file where a button of the open manager asks for one.
    void give(const char* button, const QString& chosen) {
        desk->questions().file = ChosenFile{chosen, 0};
        give(button);
    }
    LibraryListView& list() const { return partOf<LibraryListView>(*manager, "lvDB"); }
    QModelIndex item(const QString& text) const {
        return list().model()->match(list().model()->index(0, 0), Qt::DisplayRole, text).value(0);
    }
    void click(const QString& text, Qt::KeyboardModifiers modifiers = {}) {
        clickOn(list(), item(text), modifiers);
    }
    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&list(), key, modifiers);
        settle();
    }

    /// The texts of the list, with brackets around those that are selected.
    QString listed() const {
        QStringList shown;
        for (int row = 0; row < list().model()->rowCount(); ++row) {
            const QModelIndex index = list().model()->index(row, 0);
            const bool isSelected = list().selectionModel()->isSelected(index);
            shown.append((isSelected ? u"[%1]"_s : u"%1"_s).arg(index.data().toString()));
        }
        return shown.join(u' ');
    }
    /// The texts of the control's libraries.
    QString libraries() const {
        QStringList roots = desk->treeTexts();
        roots.removeIf([](const QString& text) { return text.startsWith(u' '); });
        return roots.join(u' ');
    }

    QString iniPath() const { return configuration.folder() + u"/Varo-Pelm.ini"_s; }
    QString backupPath() const { return configuration.folder() + u"/backupfile.def"_s; }
    QByteArray ini() const { return fileContent(iniPath()); }

    LibraryManagerDialog* manager = nullptr;  ///< the one that is open
};

}  // namespace varo::test
