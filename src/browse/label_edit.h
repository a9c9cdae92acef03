#pragma once

#include "library/name_rules.h"
#include "platform/questions/questions.h"

#include <QWidget>

#include <functional>

namespace varo {

/// Stores the name that was typed over a label of `view` with `store`, if it complies with the
/// rules. Returns false when it does not, or is not stored; the user is told once the editing has
/// ended, and the view then has the focus. View and questions must outlive that.
bool storeLabel(QWidget& view, Questions& questions, const NameRules& rules, const QString& name,
                const std::function<bool()>& store);

}  // namespace varo
