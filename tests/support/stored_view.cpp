#include "support/stored_view.h"

#include "browse/folder_tree_model.h"

#include <QIcon>

namespace varo::test {

namespace {

void addNodes(const FolderTreeModel& model, const QModelIndex& parent, int depth,
              QStringList& lines) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const FolderTree::Images images = model.tree().images(FolderTreeModel::nodeOf(index));
        lines.append(QStringLiteral("%1%2 %3 [%4 %5]")
                         .arg(QString(2 * depth, u' '), index.data(Qt::EditRole).toString(),
                              index.data(ui::NodeView::KeyRole).toString())
                         .arg(images.image)
                         .arg(images.selectedImage));
        addNodes(model, index, depth + 1, lines);
    }
}

QStringList shown(const Varo_CalcEx& control) {
    const auto& tree = *control.findChild<ui::NodeView*>(QStringLiteral("tvFolder"));
    const auto& list = *control.findChild<ui::NodeView*>(QStringLiteral("lvFormula"));
    QStringList lines;
    addNodes(static_cast<const FolderTreeModel&>(*tree.model()), {}, 0, lines);
    lines.append(QStringLiteral("selected ") + tree.selectedKey());
    for (int row = 0; row < list.model()->rowCount(); ++row) {
        const QModelIndex index = list.model()->index(row, 0);
        const QImage picture = index.data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
        const auto bytes = QByteArrayView(picture.constBits(), picture.sizeInBytes());
        lines.append(QStringLiteral("%1 %2 [%3]")
                         .arg(index.data(Qt::EditRole).toString(),
                              index.data(ui::NodeView::KeyRole).toString())
                         .arg(qChecksum(bytes)));
    }
    return lines;
}

/// The selected formula and what is shown of it.
QStringList shownFormula(const Varo_CalcEx& control) {
    return {control.findChild<ui::NodeView*>(QStringLiteral("lvFormula"))->selectedKey(),
            control.findChild<QLineEdit*>(QStringLiteral("txtFormula"))->text()};
}

}  // namespace

testing::AssertionResult showsWhatIsStored(Desk& desk) {
    RecordingQuestions questions;
    const QTemporaryDir workFolder;
    Varo_CalcEx fresh(nullptr, &questions);
    fresh.setWorkFolder(workFolder.path());
    fresh.SetDeployFolder(desk.configurationFolder());
    fresh.RunCalc();
    fresh.ClickTreeNode(desk.tree().selectedKey());
    fresh.SelFormula(desk.list().selectedKey());
    // A user can deselect every formula; a control that has just been started does not.
    const bool deselected = desk.list().selectedKey().isEmpty();
    const QStringList wanted =
        shown(fresh) + (deselected ? QStringList{QString(), QString()} : shownFormula(fresh));
    const QStringList found = shown(desk.control()) + shownFormula(desk.control());
    if (wanted == found && questions.informed.isEmpty()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "stored:\n"
                                       << wanted.join(u'\n').toStdString() << "\nshown:\n"
                                       << found.join(u'\n').toStdString() << "\n"
                                       << questions.informed.join(u'\n').toStdString();
}

}  // namespace varo::test
