#include "formula/formula_box.h"

#include "library/formulas.h"
#include "library/limits.h"
#include "platform/ui/shown_text.h"

#include <QFocusEvent>
#include <QLineEdit>

#include <algorithm>

namespace varo {

FormulaBox::FormulaBox(QLineEdit& box, CurrentLibrary& library, const ShownFormula& shown,
                       Questions& questions)
    : box_(box), library_(library), shown_(shown), refusal_(questions) {
    box.installEventFilter(this);
    connect(&box, &QLineEdit::textChanged, this,
            [this](const QString& text) { box_.setToolTip(ui::plainToolTip(text)); });
}

void FormulaBox::setText(const QString& text) {
    refusal_.forget();
    // A library made elsewhere can hold longer formulas; cutting them here would lose their end.
    box_.setMaxLength(std::max(kTextLimit, static_cast<int>(text.size())));
    box_.setText(text);
    box_.setCursorPosition(0);
    storedText_ = box_.text();
}

QString FormulaBox::text() const {
    return box_.text().isEmpty() ? storedText_ : box_.text();
}

void FormulaBox::reload(const QString& text) {
    box_.clear();
    box_.setText(text);
    box_.setCursorPosition(0);
}

bool FormulaBox::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        refusal_.focusGained(*static_cast<QFocusEvent*>(event));
    } else if (event->type() == QEvent::FocusOut &&
               static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
        store();
    }
    return QObject::eventFilter(watched, event);
}

void FormulaBox::store() {
    const QString text = box_.text();
    const auto formula = shown_.id();
    if (!formula || text.isEmpty() || text == storedText_) {
        return;
    }
    if (text.size() > kTextLimit) {
        refusal_.tell(text, QStringLiteral("用户输入的公式超过255个字符！"));
        return;
    }
    if (!storeExpression(library_, *formula, text)) {
        refusal_.tell(text, QStringLiteral("无法编辑选定公式的内容！"));
        return;
    }
    storedText_ = text;
    refusal_.forget();
    emit stored(*formula, text);
}

}  // namespace varo
