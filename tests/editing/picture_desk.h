#pragma once

#include "platform/ui/picture_box.h"
#include "support/beam_desk.h"
#include "support/wmf_builder.h"

#include <QDir>
#include <QMenu>

namespace varo::test {

inline const auto kNotStored = u"处理图形文件失败！"_s;

/// The beam libraries, where 弯曲 has a red picture and is selected, and 剪切 has none.
class PictureDesk : public BeamDesk {
  protected:
    PictureDesk() {
        first.addPicture(bending, red);
        restart();
    }

    void restart() {
        start();
        select(u"梁"_s, u"弯曲"_s);
    }

    ui::PictureBox& picture() { return desk->child<ui::PictureBox>("imgDesc"); }
    QWidget& label() { return desk->child("lblDesc"); }
    QMenu& menu() { return desk->child<QMenu>("PopPicMnu"); }

    /// Opens the menu with the right button; returns what menuEntries() does.
    QString openMenu(QWidget& on) {
        QTest::mouseClick(&on, Qt::RightButton);
        settle();
        return menuEntries();
    }

    /// The entries that the user sees, those not offered in parentheses, or nothing when the menu
    /// is closed.
    QString menuEntries() {
        QStringList entries;
        for (const QAction* action : menu().actions()) {
            if (menu().isVisible() && action->isVisible()) {
                const QString text = action->isSeparator() ? u"-"_s : action->text();
                entries.append(action->isEnabled() ? text : u'(' + text + u')');
            }
        }
        return entries.join(u' ');
    }

    /// Clicks an entry of the menu that a right click on a widget opens.
    void choose(QWidget& on, const QString& caption) {
        openMenu(on);
        for (QAction* action : menu().actions()) {
            if (action->isVisible() && action->text() == caption) {
                desk->click(menu(), Qt::LeftButton, menu().actionGeometry(action).center());
                return;
            }
        }
        throw std::logic_error("no such entry in the menu");
    }

    /// The same, when the user then names this file, with the filter at that position.
    void chooseFile(QWidget& on, const QString& caption, const QString& path, int filter) {
        desk->questions().file = ChosenFile{path, filter};
        choose(on, caption);
    }

    QString workFile(const QString& name) const { return work.filePath(name); }
    QString pictureFile(qint32 formula) const {
        return workFile(QString::number(formula) + u"TempPic.bmp"_s);
    }
    QStringList workFiles() const { return QDir(work.path()).entryList(QDir::Files); }

    /// Kind and bytes of the picture in the library.
    QString stored(qint32 formula) {
        return first.rows(u"Select PicType, hex(Pic) From Formula Where ID = %1"_s.arg(formula))
            .value(0);
    }
    static QString storedAs(int type, const QByteArray& bytes) {
        return QString::number(type) + u'|' + QString::fromLatin1(bytes.toHex().toUpper());
    }

    /// The color in the middle of the picture that is shown; none when the label is.
    QColor shownColor() {
        return desk->isShown("imgDesc") && !desk->isShown("lblDesc")
                   ? picture().grab().toImage().pixelColor(picture().rect().center())
                   : QColor();
    }

    const QByteArray red = imageBytes({60, 40}, Qt::red, "bmp");
    const QByteArray blue = imageBytes({40, 60}, Qt::blue, "png");
    const QString newPicture = first.addFile(u"new.bmp"_s, blue);
};

}  // namespace varo::test
