#include "control/edit_bar.h"

#include "platform/ui/icons.h"

#include <QAction>
#include <QToolBar>

#include <array>

namespace varo {

namespace {

/// The command states as bits.
constexpr unsigned in(int state) {
    return 1U << static_cast<unsigned>(state);
}
constexpr unsigned Always = in(EditBar::LibrarySelected) | in(EditBar::FolderSelected) |
                            in(EditBar::FormulaSelected) | in(EditBar::NoFormula);
constexpr unsigned OnItem = in(EditBar::FolderSelected) | in(EditBar::FormulaSelected);

struct Button {
    QString key;
    QString icon;
    unsigned offered;
    bool endsGroup;
};

const std::array Buttons{
    Button{QStringLiteral("新建公式夹"), QStringLiteral("folder-new"), Always, false},
    Button{QStringLiteral("新建公式"), QStringLiteral("document-new"), Always, true},
    Button{QStringLiteral("复制"), QStringLiteral("edit-copy"), OnItem, false},
    Button{QStringLiteral("粘贴"), QStringLiteral("edit-paste"), 0, false},
    Button{QStringLiteral("删除"), QStringLiteral("edit-delete"), OnItem, true},
    Button{QStringLiteral("上移"), QStringLiteral("go-up"), 0, false},
    Button{QStringLiteral("下移"), QStringLiteral("go-down"), 0, true},
    Button{QStringLiteral("查找"), QStringLiteral("edit-find"), Always, false},
    Button{QStringLiteral("查找下一个"), QStringLiteral("go-next"), 0, false},
    Button{QStringLiteral("查找上一个"), QStringLiteral("go-previous"), 0, true},
    Button{QStringLiteral("帮助"), QStringLiteral("help-contents"), Always, false},
};

}  // namespace

EditBar::EditBar(Form& form) : form_(form) {
    form.tbEdit->setIconSize({16, 16});
    for (const Button& button : Buttons) {
        QAction* made = form.tbEdit->addAction(ui::themeIcon(button.icon), button.key);
        made->setObjectName(button.key);
        made->setToolTip(button.key);
        made->setEnabled(false);
        if (button.endsGroup) {
            form.tbEdit->addSeparator();
        }
    }
}

QAction* EditBar::action(const QString& key) const {
    return form_.tbEdit->findChild<QAction*>(key, Qt::FindDirectChildrenOnly);
}

void EditBar::connectCommand(const QString& key, std::function<void()> run) {
    QAction* command = action(key);
    command->setProperty("runs", true);
    connect(command, &QAction::triggered, this, std::move(run));
}

void EditBar::setCommandState(int state) {
    const unsigned bit = state >= LibrarySelected && state <= NoFormula ? in(state) : 0;
    for (const Button& button : Buttons) {
        setEnabled(button.key, (button.offered & bit) != 0);
    }
}

void EditBar::setEnabled(const QString& key, bool enabled) {
    QAction* command = action(key);
    command->setEnabled(enabled && command->property("runs").toBool());
}

}  // namespace varo
