#pragma once

#include "platform/questions.h"
#include "platform/ui/node_view.h"

#include <functional>

namespace varo {

/// What a name that the user types must keep to, and what the user is told about it.
struct NameRules {
    int limit;  ///< most characters
    QString empty;
    QString tooLong;
    QString notStored;  ///< the library did not take it
};

const NameRules& folderNameRules();
const NameRules& formulaNameRules();

/// Stores the name that was typed over a label of `view` with `store`, when it keeps to the rules.
/// Returns false when it does not, or is not stored; the user is told once the editing is over, and
/// the view then has the focus. View and questions must outlive that.
bool storeLabel(ui::NodeView& view, Questions& questions, const NameRules& rules,
                const QString& name, const std::function<bool()>& store);

}  // namespace varo
