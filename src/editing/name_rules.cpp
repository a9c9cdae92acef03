#include "editing/name_rules.h"

namespace varo {

const NameRules& folderNameRules() {
    static const NameRules rules{40, QStringLiteral("公式夹名称不能为空！"),
                                 QStringLiteral("公式夹名称超过40个字符！"),
                                 QStringLiteral("无法修改公式夹名称！")};
    return rules;
}

const NameRules& formulaNameRules() {
    static const NameRules rules{20, QStringLiteral("公式名称不能为空！"),
                                 QStringLiteral("公式名称超过20个字符！"),
                                 QStringLiteral("无法修改公式名称！")};
    return rules;
}

namespace {

/// Why a name is refused; "" when it keeps to the rules.
QString refusal(const NameRules& rules, const QString& name) {
    if (name.trimmed().isEmpty()) {
        return rules.empty;
    }
    return name.size() > rules.limit ? rules.tooLong : QString();
}

}  // namespace

bool storeLabel(ui::NodeView& view, Questions& questions, const NameRules& rules,
                const QString& name, const std::function<bool()>& store) {
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
