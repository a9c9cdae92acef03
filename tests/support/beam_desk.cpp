#include "support/beam_desk.h"

#include "browse/folder_tree_model.h"

#include <QIcon>

namespace varo::test {

namespace {

using namespace Qt::StringLiterals;

QString textAndKey(const QModelIndex& index) {
    return index.data(Qt::EditRole).toString() + u' ' +
           index.data(ui::NodeView::KeyRole).toString();
}

void addNodes(const FolderTreeModel& model, const QModelIndex& parent, int depth,
              QStringList& lines) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const FolderTree::Images images = model.tree().images(FolderTreeModel::nodeOf(index));
        lines.append(u"%1%2 [%3 %4]"_s.arg(QString(2 * depth, u' '), textAndKey(index))
                         .arg(images.image)
                         .arg(images.selectedImage));
        addNodes(model, index, depth + 1, lines);
    }
}

QStringList shown(const ControlDriver& control) {
    const auto& model = static_cast<const FolderTreeModel&>(*control.tree().model());
    QStringList lines;
    addNodes(model, {}, 0, lines);
    lines.append(u"selected "_s + control.tree().selectedKey());
    for (int row = 0; row < control.list().model()->rowCount(); ++row) {
        const QModelIndex index = control.list().model()->index(row, 0);
        const QImage picture = index.data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
        const auto bytes = QByteArrayView(picture.constBits(), picture.sizeInBytes());
        lines.append(u"%1 [%2]"_s.arg(textAndKey(index)).arg(qChecksum(bytes)));
    }
    return lines;
}

/// The selected formula and what is shown of it.
QStringList shownFormula(const ControlDriver& control) {
    return {control.list().selectedKey(), control.formulaBox().text()};
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
        shown(ControlDriver(fresh)) +
        (deselected ? QStringList{{}, {}} : shownFormula(ControlDriver(fresh)));
    const QStringList found = shown(desk) + shownFormula(desk);
    if (wanted == found && questions.informed.isEmpty()) {
        return testing::AssertionSuccess();
    }
    const QStringList told =
        QStringList{u"stored:"_s} + wanted + QStringList{u"shown:"_s} + found + questions.informed;
    return testing::AssertionFailure() << told.join(u'\n').toStdString();
}

}  // namespace varo::test
