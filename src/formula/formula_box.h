#pragma once

#include "formula/refusal_notice.h"
#include "formula/shown_formula.h"
#include "library/current_library.h"

#include <QObject>

class QLineEdit;

namespace varo {

/// The formula box: shows the text of the shown formula and stores it when the box loses the focus
/// and its text is not the stored one. An empty text is never stored.
class FormulaBox : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    FormulaBox(QLineEdit& box, CurrentLibrary& library, const ShownFormula& shown,
               Questions& questions);

    /// Shows the stored text of the shown formula, whatever its length, from its beginning.
    void setText(const QString& text);

    /// The text that is shown; where the user has removed it, the stored one.
    QString text() const;

    /// Shows `text` anew, as if the user had typed it, even if it is shown already.
    void reload(const QString& text);

    /// Stores the text if it is not the stored one. Why it cannot be stored is told once for each
    /// text.
    void store();

  signals:
    void stored(qint32 formulaID, const QString& text);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QLineEdit& box_;
    CurrentLibrary& library_;
    const ShownFormula& shown_;
    RefusalNotice refusal_;
    QString storedText_;  ///< as the box gives it
};

}  // namespace varo
