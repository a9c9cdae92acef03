#include "host/control_report.h"

#include "control/varo_calcex.h"
#include "host/named_widget.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/node_view.h"
#include "platform/ui/picture_box.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpression>

namespace varo::host {

namespace {

/// The source of a variable's value, as the colour of its name tells it (0x00BBGGRR).
QString sourceName(quint32 color) {
    constexpr quint32 Blue = 0xFF0000;
    constexpr quint32 Red = 0x0000FF;
    switch (color) {
        case Blue:
            return QStringLiteral("property");
        case Red:
            return QStringLiteral("table");
        default:
            return QStringLiteral("typed");
    }
}

QModelIndex selectedItem(const ui::NodeView& view) {
    return view.selectionModel()->selectedIndexes().value(0);
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

QStringList shownLines(const Varo_CalcEx& control) {
    const auto& grid = namedWidget<ui::EditGrid>(control, "MSFEditVarList");
    const QModelIndex node = selectedItem(namedWidget<ui::NodeView>(control, "tvFolder"));
    const QModelIndex formula = selectedItem(namedWidget<ui::NodeView>(control, "lvFormula"));
    QModelIndex library = node;
    while (library.parent().isValid()) {
        library = library.parent();
    }
    QStringList lines{
        line(QStringLiteral("library"), library.data().toString()),
        line(QStringLiteral("folder"), node == library ? QString() : node.data().toString()),
        line(QStringLiteral("formula"), formula.data().toString()),
        line(QStringLiteral("expression"), namedWidget<QLineEdit>(control, "txtFormula").text()),
        line(QStringLiteral("description"),
             namedWidget<QPlainTextEdit>(control, "txtDesc").toPlainText()),
        line(QStringLiteral("picture"),
             pictureSize(namedWidget<ui::PictureBox>(control, "imgDesc"))),
    };
    for (int row = 1; row < grid.Rows(); ++row) {
        lines.append(line(QStringLiteral("variable"),
                          QStringLiteral("%1 = %2 (%3)")
                              .arg(grid.GetCellText(row, 0), grid.GetCellText(row, 1),
                                   sourceName(grid.CellForeColor(row, 0)))));
    }
    lines.append(
        line(QStringLiteral("result"), namedWidget<QLineEdit>(control, "txtResult").text()));
    return lines;
}

}  // namespace varo::host
