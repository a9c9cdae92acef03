#include "library/name_rules.h"

#include "library/limits.h"

namespace varo {

const NameRules& folderNameRules() {
    static const NameRules rules{kFolderNameLimit, QStringLiteral("公式夹名称不能为空！"),
                                 QStringLiteral("公式夹名称超过40个字符！"),
                                 QStringLiteral("无法修改公式夹名称！")};
    return rules;
}

const NameRules& formulaNameRules() {
    static const NameRules rules{kFormulaNameLimit, QStringLiteral("公式名称不能为空！"),
                                 QStringLiteral("公式名称超过20个字符！"),
                                 QStringLiteral("无法修改公式名称！")};
    return rules;
}

const NameRules& libraryNameRules() {
    static const NameRules rules{kFolderNameLimit, QStringLiteral("公式库名称不能为空！"),
                                 QStringLiteral("公式库名称超过40个字符！"),
                                 QStringLiteral("无法修改公式库名称！")};
    return rules;
}

QString refusal(const NameRules& rules, const QString& name) {
    if (name.trimmed().isEmpty()) {
        return rules.empty;
    }
    return name.size() > rules.limit ? rules.tooLong : QString();
}

}  // namespace varo
