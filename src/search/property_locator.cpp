#include "search/property_locator.h"

#include "platform/ui/wait_cursor.h"
#include "search/locate_messages.h"
#include "store/keys.h"

#include <QScopedValueRollback>

namespace varo {

namespace {

const QString kNotOpened = QStringLiteral("无法打开用户选择的数据库！");

/// The node that is located, or that has the located formula in it.
NodeId placeOf(const clsLocateProp& located) {
    const qint32 folder = located.NodeType == NodeTypeFormula ? located.PID : located.NodeID;
    return nodeOf(libraryNumberOf(located.RootKey), folder);
}

}  // namespace

PropertyLocator::PropertyLocator(SelectionController& selection, CurrentLibrary& library,
                                 PropertySearch& search, Questions& questions)
    : selection_(selection), library_(library), search_(search), questions_(questions) {}

void PropertyLocator::locate(const QString& property) {
    // The search asks the host, who must not start another one on the same list.
    if (isSearching_ || !selection_.storeEdits()) {
        return;
    }
    const QScopedValueRollback searching(isSearching_, true);
    emit stepsChanged(false, false);
    shown_ = 0;
    const QString failure = [&] {
        const ui::clsWaitCursor waiting;
        return search_.run(property, located_);
    }();
    if (!failure.isEmpty()) {
        questions_.inform(failure);
    }
    library_.variables().Clear();
    if (const auto formula = selection_.formula()) {
        selection_.showFormula(*formula);
    }
    if (failure.isEmpty() && located_.Count() > 0) {
        showItem(1);
        emit stepsChanged(located_.Count() > 1, false);
    }
}

void PropertyLocator::forget() {
    located_.Clear();
    shown_ = 0;
    emit stepsChanged(false, false);
}

void PropertyLocator::step(int by) {
    const int wanted = shown_ + by;
    if (!isSearching_ && wanted >= 1 && wanted <= located_.Count()) {
        const QScopedValueRollback searching(isSearching_, true);
        showItem(wanted);
        const bool canStepNext = shown_ < located_.Count();
        emit stepsChanged(canStepNext, shown_ > 1);
    }
}

void PropertyLocator::showItem(int position) {
    if (!selection_.storeEdits()) {
        return;
    }
    selection_.highlight().remove();
    const clsLocateProp& item = located_.Item(position);
    const NodeId node = placeOf(item);
    const qint32 id = item.NodeID;
    const bool isFormula = item.NodeType == NodeTypeFormula;
    switch (selection_.findNode(node)) {
        case SelectionController::NodePlace::Gone:
            shown_ = position;  // the user steps past it
            questions_.inform(isFormula ? kFolderGone : kNodeGone);
            return;
        case SelectionController::NodePlace::Unknown:
            questions_.inform(kNotOpened);
            return;
        case SelectionController::NodePlace::Tree:
            break;
    }
    library_.variables().Clear();
    if (!selection_.showNode(node, kNotOpened)) {
        return;
    }
    shown_ = position;
    if (!isFormula) {
        selection_.highlight().setNode(node);
        return;
    }
    selection_.showFormula(id);
    if (selection_.formula() == id) {
        selection_.highlight().setFormula(id);
    } else if (selection_.listedNode() == node) {
        questions_.inform(kFormulaGone);
    }
}

}  // namespace varo
