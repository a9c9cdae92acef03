#pragma once

#include "platform/ui/picture_box.h"
#include "support/desk.h"
#include "support/wmf_builder.h"

#include <QBuffer>
#include <QFile>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {

inline QByteArray imageBytes(QSize size, const QColor& color, const char* format) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, format);
    return bytes;
}

/// A library with two formulas, the first one with a red picture and selected, and a control whose
/// working files are at hand.
class PictureDesk : public testing::Test {
  protected:
    PictureDesk() {
        first = library.addFormula(0, QStringLiteral("一"), QStringLiteral("a+b"));
        second = library.addFormula(0, QStringLiteral("二"), QStringLiteral("c"));
        library.addPicture(first, red);
        start();
    }

    void start() {
        desk = std::make_unique<Desk>();
        desk->control().setWorkFolder(work.path());
        desk->run(configuration.folder());
    }

    ui::PictureBox& picture() { return desk->child<ui::PictureBox>("imgDesc"); }
    QWidget& label() { return desk->child<QWidget>("lblDesc"); }
    QMenu& menu() { return desk->child<QMenu>("PopPicMnu"); }

    /// Opens the menu with the right button; returns what menuEntries() does.
    QStringList openMenu(QWidget& on) {
        QTest::mouseClick(&on, Qt::RightButton);
        settle();
        return menuEntries();
    }

    /// The entries that the user sees, those not offered in parentheses, or nothing when the menu
    /// is closed.
    QStringList menuEntries() {
        QStringList entries;
        for (const QAction* action : menu().actions()) {
            if (menu().isVisible() && action->isVisible()) {
                const QString text = action->isSeparator() ? QStringLiteral("-") : action->text();
                entries.append(action->isEnabled() ? text : u'(' + text + u')');
            }
        }
        return entries;
    }

    /// Clicks an entry of the menu that a right click on a widget opens.
    void choose(QWidget& on, const QString& caption) {
        openMenu(on);
        for (QAction* action : menu().actions()) {
            if (action->isVisible() && action->text() == caption) {
                QTest::mouseClick(&menu(), Qt::LeftButton, {},
                                  menu().actionGeometry(action).center());
                settle();
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

    QString addFile(const QString& name, const QByteArray& content) {
        return library.addFile(name, content);
    }
    QString workFile(const QString& name) const { return work.filePath(name); }
    QString pictureFile(qint32 formula) const {
        return workFile(QString::number(formula) + QStringLiteral("TempPic.bmp"));
    }
    QStringList workFiles() const { return QDir(work.path()).entryList(QDir::Files); }

    /// Type and bytes of the picture in the library.
    QString stored(qint32 formula) {
        return library
            .rows(
                QStringLiteral("select PicType, hex(Pic) from Formula where ID = %1").arg(formula))
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

    QTemporaryDir work;
    TestLibrary library;
    TestConfiguration configuration{&library};
    std::unique_ptr<Desk> desk;
    qint32 first = 0;
    qint32 second = 0;
};

}  // namespace varo::test
