#include "host/control_report.h"

#include "driver/control_driver.h"
#include "platform/ui/picture_box.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpression>

namespace varo::host {

namespace {

/// The source of a variable's value, as the colour of its name tells it (0x00BBGGRR).
QString sourceName(quint32 color) {
    constexpr quint32 kBlue = 0xFF0000;
    constexpr quint32 kRed = 0x0000FF;
    switch (color) {
        case kBlue:
            return QStringLiteral("property");
        case kRed:
            return QStringLiteral("table");
        default:
            return QStringLiteral("typed");
    }
}

QString pictureSize(const ui::PictureBox& box) {
    const QSize size = box.picture().size();
    return size.isEmpty() ? QStringLiteral("none")
                          : QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QString line(const QString& name, const QString& text) {
    return name + QStringLiteral(": ") + oneLine(text);
}

}  // namespace

QString oneLine(const QString& text) {
    static const QRegularExpression lineEnd(QStringLiteral("\r\n|[\r\n\u2028\u2029]"));
    return QString(text).replace(lineEnd, QStringLiteral("\\n"));
}

QStringList shownLines(Varo_CalcEx& control) {
    const ControlDriver driver(control);
    const ui::EditGrid& grid = driver.grid();
    const QModelIndex node = driver.tree().selectedIndex();
    const QModelIndex formula = driver.list().selectedIndex();
    QModelIndex library = node;
    while (library.parent().isValid()) {
        library = library.parent();
    }
    QStringList lines{
        line(QStringLiteral("library"), library.data().toString()),
        line(QStringLiteral("folder"), node == library ? QString() : node.data().toString()),
        line(QStringLiteral("formula"), formula.data().toString()),
        line(QStringLiteral("expression"), driver.formulaBox().text()),
        line(QStringLiteral("description"), driver.child<QPlainTextEdit>("txtDesc").toPlainText()),
        line(QStringLiteral("picture"), pictureSize(driver.child<ui::PictureBox>("imgDesc"))),
    };
    for (int row = 1; row < grid.Rows(); ++row) {
        lines.append(line(QStringLiteral("variable"),
                          QStringLiteral("%1 = %2 (%3)")
                              .arg(grid.GetCellText(row, 0), grid.GetCellText(row, 1),
                                   sourceName(grid.CellForeColor(row, 0)))));
    }
    lines.append(line(QStringLiteral("result"), driver.result()));
    return lines;
}

}  // namespace varo::host
