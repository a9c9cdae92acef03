#pragma once

#include "manager/library_list_view.h"
#include "manager/library_manager_dialog.h"
#include "support/beam_desk.h"

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

namespace varo::test {

/// The library manager, open over a control, as a user works with it.
class OpenManager {
  public:
    explicit OpenManager(LibraryManagerDialog& dialog) : dialog_(dialog) {}

    LibraryManagerDialog& dialog() const { return dialog_; }
    template <class Part>
    Part& child(const QString& name) const {
        auto* found = dialog_.findChild<Part*>(name);
        if (found == nullptr) {
            throw std::logic_error("no such part of the manager");
        }
        return *found;
    }
    LibraryListView& list() const { return child<LibraryListView>(u"lvDB"_s); }

    /// The texts of the list, with brackets around those that are selected.
    QString texts() const {
        QStringList shown;
        for (int row = 0; row < list().model()->rowCount(); ++row) {
            const QModelIndex index = list().model()->index(row, 0);
            const bool isSelected = list().selectionModel()->isSelected(index);
            shown.append((isSelected ? u"[%1]"_s : u"%1"_s).arg(index.data().toString()));
        }
        return shown.join(u' ');
    }
    QModelIndex item(const QString& text) const {
        return list().model()->match(list().model()->index(0, 0), Qt::DisplayRole, text).value(0);
    }
    QString toolTip(const QString& text) const {
        return item(text).data(Qt::ToolTipRole).toString();
    }

    void click(const QString& text, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, modifiers,
                          list().visualRect(item(text)).center());
        settle();
    }
    void clickEmptySpace() const {
        const QRect place = list().viewport()->rect();
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {},
                          place.bottomLeft() + QPoint(9, -9));
        settle();
    }
    /// Presses a button of the tool bar, or of the dialog, by its key or name.
    void press(const QString& button) const {
        QTest::mouseClick(&child<QWidget>(button), Qt::LeftButton);
        settle();
    }
    /// Types into the open editor of a text; ends with a key unless that is 0.
    void type(const QString& text, Qt::Key end = Qt::Key_Return) const {
        // Editors that are closed go when the dialog is back in its own event loop.
        for (auto* editor : dialog_.findChildren<QLineEdit*>(u"labelEditor"_s)) {
            if (editor->isVisible()) {
                editor->selectAll();
                editor->insert(text);
                if (end != 0) {
                    QTest::keyClick(editor, end);
                }
                settle();
                return;
            }
        }
        throw std::logic_error("no text is being edited");
    }
    /// Drops what is dragged on a row, or on empty space for -1.
    void drop(const QMimeData& dragged, int row) const {
        const QRect place = list().visualRect(list().model()->index(row, 0));
        const QPointF at = row < 0 ? QPointF(list().viewport()->rect().bottomLeft() + QPoint(9, -9))
                                   : QPointF(place.topLeft() + QPoint(20, 1));
        dropOn(*list().viewport(), dragged, at);
    }
    static void dropOn(QWidget& target, const QMimeData& dragged, QPointF at) {
        QDragEnterEvent enter(at.toPoint(), Qt::CopyAction | Qt::MoveAction, &dragged,
                              Qt::LeftButton, {});
        QCoreApplication::sendEvent(&target, &enter);
        QDragMoveEvent move(at.toPoint(), Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton,
                            {});
        QCoreApplication::sendEvent(&target, &move);
        if (move.isAccepted()) {
            QDropEvent event(at, Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
            QCoreApplication::sendEvent(&target, &event);
        }
        settle();
    }

  private:
    LibraryManagerDialog& dialog_;
};

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

    /// Lets `open` open the manager, works with it, and cancels it if it is still open.
    void manage(const std::function<void()>& open,
                const std::function<void(const OpenManager&)>& act) {
        bool opened = false;
        QTimer untilOpen;
        QObject::connect(&untilOpen, &QTimer::timeout, [&] {
            const QPointer dialog =
                qobject_cast<LibraryManagerDialog*>(QApplication::activeModalWidget());
            if (dialog.isNull()) {
                return;
            }
            untilOpen.stop();
            opened = true;
            settle();
            act(OpenManager(*dialog));
            if (!dialog.isNull() && dialog->isVisible()) {
                dialog->reject();
            }
        });
        untilOpen.start(0);
        open();
        settle();
        EXPECT_TRUE(opened);
    }
    void manage(const std::function<void(const OpenManager&)>& act) {
        manage([this] { desk->clickEditButton(u"公式库管理"_s); }, act);
    }

    QString iniPath() const { return configuration.folder() + u"/Varo-Pelm.ini"_s; }
    QString backupPath() const { return configuration.folder() + u"/backupfile.def"_s; }
    QByteArray ini() const { return fileContent(iniPath()); }
    QString libraries() const {
        QStringList roots = desk->treeTexts();
        roots.removeIf([](const QString& text) { return text.startsWith(u' '); });
        return roots.join(u' ');
    }
};

}  // namespace varo::test
