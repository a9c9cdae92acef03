#include "browse/label_edit.h"

namespace varo {

bool storeLabel(QWidget& view, Questions& questions, const NameRules& rules, const QString& name,
                const std::function<bool()>& store) {
    QString refused = refusal(rules, name);
    if (refused.isEmpty()) {
        if (store()) {
            return true;
        }
        refused = rules.notStored;
    }
    // Behind the end of the editing: a message opened from within it would end it a second time.
    QMetaObject::invokeMethod(
        &view,
        [&view, &questions, refused] {
            questions.inform(refused);
            view.setFocus();
        },
        Qt::QueuedConnection);
    return false;
}

}  // namespace varo
