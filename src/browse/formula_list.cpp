#include "browse/formula_list.h"

#include "library/formula_reader.h"
#include "library/properties.h"
#include "platform/ui/node_view.h"

namespace varo {

FormulaList::FormulaList(ui::NodeView& view, CurrentLibrary& library, const WorkingFiles& files)
    : view_(view), library_(library), files_(files) {
    view.setModel(&model_);
    connect(&view, &ui::NodeView::nodeClicked, this,
            [this](const QModelIndex& index) { emit formulaClicked(model_.idAt(index)); });
    connect(&view, &ui::NodeView::emptyClicked, this, &FormulaList::emptyClicked);
    connect(&view, &ui::NodeView::pressedAt, this,
            [this](const QModelIndex& index, Qt::MouseButton button) {
                if (!index.isValid() && button == Qt::RightButton) {
                    emit emptyClicked();
                }
            });
}

bool FormulaList::ShowFolderFormulas(qint32 folderID, HeldMessages& messages) {
    std::vector<qint32> withProperty;
    const bool propertiesRead = readNodesWithProperty(library_, NodeTypeFormula, withProperty);
    bool read = propertiesRead;
    model_.replace(
        [&](colFormulaInfo& formulas) {
            const auto pictureOf = [this](qint32 id) { return files_.listedPicture(id); };
            read =
                read && readFormulas(library_, folderID, FormulaTexts::Shown, pictureOf, formulas);
        },
        QSet<qint32>(withProperty.begin(), withProperty.end()));
    if (!propertiesRead) {
        messages.inform(propertiesNotReadMessage());
    }
    return read;
}

void FormulaList::clear() {
    model_.replace([](colFormulaInfo&) {});
}

std::optional<qint32> FormulaList::neighbour(qint32 id, int step) const {
    const QModelIndex index = model_.indexOf(id);
    const QModelIndex other = index.sibling(index.row() + step, index.column());
    return other.isValid() ? std::optional(model_.idAt(other)) : std::nullopt;
}

void FormulaList::select(std::optional<qint32> id) {
    const QModelIndex index = id ? model_.indexOf(*id) : QModelIndex();
    view_.selectItem(index);
    if (index.isValid()) {
        view_.scrollTo(index);
    }
}

void FormulaList::editLabel(qint32 id) {
    view_.setFocus();
    view_.edit(model_.indexOf(id));
}

}  // namespace varo
