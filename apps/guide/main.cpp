#include "condition_scene.h"
#include "driver/dialog_driver.h"
#include "guide_desk.h"
#include "host/chinese_application.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/picture_grid.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QTabBar>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <cstdlib>

namespace varo::guide {
namespace {

constexpr int kMarkSize = 22;

/// Tool bar, tree, list and the box of a question, which opens in the middle of the window.
constexpr QRect kQuestionCrop(0, 0, 640, 400);

/// A number in a disc, which the text of the guide refers to.
void mark(QPainter& painter, QPoint centre, int number) {
    QRect disc(0, 0, kMarkSize, kMarkSize);
    disc.moveCenter(centre);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xC0, 0x39, 0x2B));
    painter.drawEllipse(disc);
    painter.setPen(Qt::white);
    painter.drawText(disc, Qt::AlignCenter, QString::number(number));
}

/// Both pictures, one beside the other.
QImage sideBySide(const QImage& left, const QImage& right) {
    constexpr int kGap = 24;
    QImage both(left.width() + kGap + right.width(), std::max(left.height(), right.height()),
                QImage::Format_RGB32);
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawImage(0, 0, left);
    painter.drawImage(left.width() + kGap, 0, right);
    return both;
}

bool areAlike(QRgb one, QRgb other) {
    constexpr int kDifference = 6;
    return std::abs(qRed(one) - qRed(other)) <= kDifference &&
           std::abs(qGreen(one) - qGreen(other)) <= kDifference &&
           std::abs(qBlue(one) - qBlue(other)) <= kDifference;
}

/// The picture in its most frequent colors, none of them like another, which makes a small file and
/// looks the same.
QImage withFewColors(const QImage& image) {
    constexpr qsizetype kMostColors = 256;
    QHash<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            ++counts[image.pixel(x, y)];
        }
    }
    QList<QRgb> byFrequency = counts.keys();
    std::ranges::sort(byFrequency, std::ranges::greater(),
                      [&](QRgb color) { return std::pair(counts.value(color), color); });
    QList<QRgb> colors;
    for (const QRgb color : byFrequency) {
        if (colors.size() < kMostColors &&
            std::ranges::none_of(colors, [&](QRgb taken) { return areAlike(taken, color); })) {
            colors.append(color);
        }
    }
    return image.convertToFormat(QImage::Format_Indexed8, colors,
                                 Qt::ThresholdDither | Qt::AvoidDither);
}

QImage overview(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    desk.clickItem(desk.list(), QStringLiteral("轴向拉压杆的变形"));
    QImage image = desk.picture();
    // Where each pane is empty, in hundredths of its size.
    const struct {
        const char* pane;
        QPoint at;
    } marks[] = {
        {"tbEdit", {50, 50}},         {"tvFolder", {75, 85}},  {"lvFormula", {85, 85}},
        {"picFormula", {95, 8}},      {"picSymbol", {95, 75}}, {"txtFormula", {96, 50}},
        {"MSFEditVarList", {85, 85}}, {"picResult", {92, 10}},
    };
    QPainter painter(&image);
    int number = 0;
    for (const auto& each : marks) {
        const QRect place = desk.place(QString::fromLatin1(each.pane));
        const QPoint offset(place.width() * each.at.x(), place.height() * each.at.y());
        mark(painter, place.topLeft() + offset / 100, ++number);
    }
    return image;
}

/// The buttons of the tool bar with a number below each.
QImage toolBar(GuideDesk& desk) {
    const auto& bar = desk.child<QToolBar>(QStringLiteral("tbEdit"));
    desk.clickItem(desk.tree(), QStringLiteral("扭转"));
    const QImage shown = desk.picture();
    QRect crop;
    for (const auto* button : bar.findChildren<QToolButton*>()) {
        crop |= button->isVisible() ? desk.place(*button) : QRect();
    }
    QImage image(crop.width() + kMarkSize, crop.height() + kMarkSize + 4, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.drawImage(0, 0, shown, crop.left() - kMarkSize / 2, crop.top(), image.width(),
                      crop.height());
    int number = 0;
    for (const QAction* action : bar.actions()) {
        if (!action->isSeparator()) {
            const QRect place = desk.place(action->text()).translated(-crop.topLeft());
            mark(painter, {place.center().x() + kMarkSize / 2, crop.height() + kMarkSize / 2 + 2},
                 ++number);
        }
    }
    return image;
}

/// Stored results are offered where a value is entered.
QImage calculation(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    for (const auto* formula : {"轴向拉压杆的正应力", "轴向拉压杆的变形"}) {
        desk.clickItem(desk.list(), QString::fromUtf8(formula));
        desk.clickButton(QStringLiteral("cmdSaveResult"));
    }
    auto& grid = desk.child<ui::EditGrid>(QStringLiteral("MSFEditVarList"));
    const QPoint cell = grid.visualItemRect(grid.item(0, 1)).center();
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, cell);
    desk.pressKey(Qt::Key_F2);
    desk.pressKey(Qt::Key_F4);
    const QImage image = desk.pictureOfPopup();
    return image.copy(desk.place(QStringLiteral("picInputFormula")) | desk.place(grid) |
                      desk.place(QStringLiteral("picResult")));
}

QImage palette(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    desk.clickItem(desk.list(), QStringLiteral("轴向拉压杆的正应力"));
    desk.clickButton(QStringLiteral("txtFormula"));
    desk.pressKey(Qt::Key_End);
    desk.type(QStringLiteral("*"));
    auto& tabs = desk.child<QTabBar>(QStringLiteral("TabStripSymbol"));
    QTest::mouseClick(&tabs, Qt::LeftButton, {}, tabs.tabRect(1).center());
    const auto& functions = desk.child<QToolBar>(QStringLiteral("tbSymbol1"));
    desk.click(*functions.widgetForAction(&desk.child<QAction>(QStringLiteral("余弦"))));
    return desk.picture().copy(desk.place(QStringLiteral("picSymbol")) |
                               desk.place(QStringLiteral("picInputFormula")));
}

QImage menus(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("弯曲"), Qt::RightButton);
    desk.pointAt(QStringLiteral("新建公式夹"));
    const QImage tree = desk.pictureOfPopup();
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    desk.clickItem(desk.list(), QStringLiteral("阶梯杆的总伸长"), Qt::RightButton);
    desk.pointAt(QStringLiteral("新建公式"));
    const QImage list = desk.pictureOfPopup();
    const int top = desk.place(desk.tree()).top();
    return sideBySide(tree.copy(0, top, 270, 320),
                      list.copy(desk.place(desk.list()).left(), top, 310, 320));
}

QImage rename(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("弯曲"));
    desk.pressKey(Qt::Key_F2);
    if (QApplication::focusWidget() != &desk.child(QStringLiteral("labelEditor"))) {
        throw DriverError(QStringLiteral("no label is being edited"));
    }
    desk.type(QStringLiteral("梁的弯曲"));
    return desk.picture().copy(0, 0, 300, 200);
}

QImage deletion(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("弯曲"));
    return desk.pictureOfQuestion([&] { desk.clickButton(QStringLiteral("删除")); })
        .copy(kQuestionCrop);
}

QImage pictureMenu(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    desk.clickItem(desk.list(), QStringLiteral("轴向拉压杆的变形"));
    const QPoint aboveTheDrawing(140, 12);
    desk.click(desk.child(QStringLiteral("imgDesc")), Qt::RightButton, aboveTheDrawing);
    desk.pointAt(QStringLiteral("替换"));
    return desk.pictureOfPopup().copy(desk.place(QStringLiteral("picFormula")));
}

QImage copying(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    desk.clickButton(QStringLiteral("复制"));
    desk.clickItem(desk.tree(), QStringLiteral("电工学"));
    return desk.pictureOfQuestion([&] { desk.clickButton(QStringLiteral("粘贴")); })
        .copy(kQuestionCrop);
}

/// Shows a folder that a user could have in place of the one that the pictures are taken in.
void showFolder(const QDialog& dialog, const QString& file) {
    const QStringList folders{QStringLiteral("/"), QStringLiteral("home"),
                              QStringLiteral("公式库")};
    partOf<QLabel>(dialog, "lblShowDBPath").setText(QStringLiteral("/home/公式库/") + file);
    if (auto* list = dialog.findChild<QListWidget*>(QStringLiteral("DirDB"))) {
        list->clear();
        for (qsizetype depth = 0; depth < folders.size(); ++depth) {
            list->addItem(QString(2 * depth, u' ') + folders[depth]);
        }
        list->setCurrentRow(list->count() - 1);
    }
}

/// The dialog of the value sources on the elongation of a stepped bar, whose E comes from a table.
QImage valueSources(GuideDesk& desk) {
    QImage taken;
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    const auto open = [&] {
        desk.clickItem(desk.list(), QStringLiteral("阶梯杆的总伸长"), Qt::RightButton);
        desk.choose("mnuPopVarSource");
    };
    withDialog("frmVarSource", open, [&](QDialog& dialog) {
        auto& grid = partOf<ui::EditGrid>(dialog, "MSFEditVarSource");
        grid.setCurrentCell(rowOf(grid, QStringLiteral("E")) - 1, 2);
        settle();
        const QImage sources = dialog.grab().toImage();
        const auto choose = [&] { QTest::keyClick(&grid, Qt::Key_F4); };
        withDialog("frmSelDB", choose, [&](QDialog& chooser) {
            showFolder(chooser, {});
            settle();
            taken = sideBySide(sources, chooser.grab().toImage());
        });
    });
    return taken;
}

/// The picker on the steels, filtered by what is typed.
QImage picker(GuideDesk& desk) {
    QImage taken;
    desk.clickItem(desk.tree(), QStringLiteral("轴向拉伸与压缩"));
    desk.clickItem(desk.list(), QStringLiteral("阶梯杆的总伸长"));
    auto& grid = desk.child<ui::EditGrid>(QStringLiteral("MSFEditVarList"));
    grid.setFocus();
    grid.setCurrentCell(rowOf(grid, QStringLiteral("E")) - 1, 1);
    const auto open = [&] { QTest::keyClick(&grid, Qt::Key_F4); };
    withDialog("frmSelValue", open, [&](QDialog& dialog) {
        settle();
        desk.type(partOf<QLineEdit>(dialog, "txtFilter"), QStringLiteral("Q3"));
        showFolder(dialog, QStringLiteral("材料.mdb"));
        settle();
        taken = dialog.grab().toImage();
    });
    return taken;
}

QImage manager(GuideDesk& desk) {
    desk.clickItem(desk.tree(), QStringLiteral("弯曲"));
    const auto selectSecond = [](const QWidget& dialog) {
        auto& list = *dialog.findChild<QTreeView*>();
        list.setCurrentIndex(list.model()->index(1, 0));
    };
    return desk.pictureOfDialog([&] { desk.clickButton(QStringLiteral("公式库管理")); },
                                selectSecond);
}

/// Works with the find dialog and takes its picture.
QImage findDialog(GuideDesk& desk, const std::function<void(QWidget&)>& use) {
    QRect dialog;
    desk.clickItem(desk.tree(), QStringLiteral("弯曲"));
    const QImage image = desk.pictureOfDialog([&] { desk.clickButton(QStringLiteral("查找")); },
                                              [&](QWidget& shown) {
                                                  shown.resize(560, 420);
                                                  shown.move(desk.mapToGlobal(QPoint(0, 0)));
                                                  use(shown);
                                                  settle();
                                                  dialog = QRect(QPoint(0, 0), shown.size());
                                              });
    return image.copy(dialog);
}

QImage finding(GuideDesk& desk) {
    return findDialog(desk, [](QWidget& dialog) {
        for (const char* name : {"ChkFolder", "ChkFormula", "ChkName", "OptFindName2"}) {
            dialog.findChild<QAbstractButton*>(QString::fromLatin1(name))->click();
        }
        auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("txtName"));
        name->setText(QStringLiteral("弯"));
        QTest::keyClick(name, Qt::Key_Return);
        auto* results = dialog.findChild<QTreeView*>(QStringLiteral("lvFindResult"));
        results->setCurrentIndex(results->model()->index(1, 0));
    });
}

QImage findingByPicture(GuideDesk& desk) {
    return findDialog(desk, [](QWidget& dialog) {
        dialog.findChild<QTabBar*>(QStringLiteral("TabFind"))->setCurrentIndex(1);
        auto* grid = dialog.findChild<ui::PictureGrid*>(QStringLiteral("ImageGridFind"));
        grid->setFocus();
        grid->setCurrentIndex(grid->model()->index(1, 0));
        constexpr int kSeen = 6;
        if (!QTest::qWaitFor([&] {
                return grid->stateOf(kSeen - 1) == ui::PictureGrid::State::Shown &&
                       grid->stateOf(0) == ui::PictureGrid::State::Shown;
            })) {
            throw DriverError(QStringLiteral("the pictures do not appear"));
        }
    });
}

void makePictures(const QString& configuration, const QDir& folder) {
    struct {
        const char* name;
        QImage (*make)(GuideDesk&);
    } const scenes[] = {
        {"overview", overview},
        {"toolbar", toolBar},
        {"calculation", calculation},
        {"palette", palette},
        {"menus", menus},
        {"rename", rename},
        {"delete", deletion},
        {"picture", pictureMenu},
        {"copy", copying},
        {"conditions", locateConditions},
        {"sources", valueSources},
        {"picker", picker},
        {"manager", manager},
        {"find", finding},
        {"images", findingByPicture},
    };
    for (const auto& scene : scenes) {
        GuideDesk desk(configuration);
        const QString file = folder.filePath(QStringLiteral("guide-%1.png").arg(scene.name));
        if (!withFewColors(scene.make(desk)).save(file, "PNG", 0)) {
            throw DriverError(QStringLiteral("'%1' cannot be written").arg(file));
        }
    }
}

/// The platform without a screen warns of everything that it cannot do.
void printMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    if (!message.startsWith(QStringLiteral("This plugin does not support"))) {
        QTextStream(stderr) << message << Qt::endl;
    }
}

}  // namespace
}  // namespace varo::guide

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(varo::guide::printMessage);
    QApplication application(argc, argv);
    QTextStream err(stderr);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3) {
        err << "usage: varo-guide-pictures <configuration folder> <picture folder>" << Qt::endl;
        return 2;
    }
    varo::host::makeApplicationChinese();
    QApplication::setCursorFlashTime(0);
    QTimer::singleShot(60'000, &application, [&err] {
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        err << "varo-guide-pictures: waits for an answer to: "
            << (box == nullptr ? QString() : box->text()) << Qt::endl;
        std::_Exit(1);
    });
    try {
        varo::guide::makePictures(arguments.at(1), QDir(arguments.at(2)));
    } catch (const varo::DriverError& error) {
        err << "varo-guide-pictures: " << error.what() << Qt::endl;
        return 1;
    }
    return 0;
}
