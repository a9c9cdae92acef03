#pragma once

#include <QString>

namespace varo {

// What the user is told when something that is to be located is not there.

inline const QString kNodeGone = QStringLiteral("用户需要定位的节点不存在！");
/// The folder of a formula.
inline const QString kFolderGone = QStringLiteral("用户需要定位的公式夹不存在！");
inline const QString kFormulaGone = QStringLiteral("用户需要定位的公式不存在！");

}  // namespace varo
