#include "library/formula_reader.h"

#include "library/limits.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

namespace varo {

namespace {

/// The columns of a record set with formulas.
class FormulaColumns {
  public:
    FormulaColumns(const data::Recordset& rows, FormulaTexts texts)
        : rows_(rows),
          limit_(texts == FormulaTexts::Shown ? kShownTextLimit : std::numeric_limits<int>::max()) {
    }

    qint32 id() const { return rows_.integer(id_); }
    qint32 pictureType() const { return rows_.integer(picType_); }
    QString name() const { return text(name_); }
    QString expression() const { return text(formula_); }
    QString memo() const { return text(memo_); }

  private:
    QString text(int column) const { return rows_.text(column, limit_); }

    const data::Recordset& rows_;
    const int limit_;
    const int id_ = rows_.column(u"ID");
    const int name_ = rows_.column(u"Name");
    const int formula_ = rows_.column(u"Formula");
    const int memo_ = rows_.column(u"Memo");
    const int picType_ = rows_.column(u"PicType");
};

}  // namespace

bool readFormulas(CurrentLibrary& library, qint32 folderID, FormulaTexts texts,
                  const std::function<QString(qint32 formulaID)>& pictureOf,
                  colFormulaInfo& formulas) {
    data::Recordset rs;
    return library.funcs().GetFormulaByPID(folderID, rs, library.connection()) && attempt([&] {
               const FormulaColumns row(rs, texts);
               for (; !rs.atEnd(); rs.moveNext()) {
                   const qint32 id = row.id();
                   if (formulas.contains(formulaKey(id))) {
                       continue;
                   }
                   const qint32 pictureType = row.pictureType();
                   formulas.Add(id, row.name(), row.expression(), row.memo(),
                                pictureType == PictureStored ? pictureOf(id) : QString(),
                                pictureType, folderID, QString());
               }
           });
}

bool readWholeTexts(CurrentLibrary& library, clsFormulaInfo& formula) {
    const auto isCut = [](const QString& text) { return text.size() >= kShownTextLimit - 1; };
    if (!isCut(formula.FormulaName) && !isCut(formula.FormulaExpression) &&
        !isCut(formula.FormulaMemo)) {
        return true;
    }
    data::Recordset rs;
    bool found = false;
    return library.funcs().GetFormulaByID(formula.FormulaID, rs, library.connection()) &&
           attempt([&] {
               found = !rs.atEnd();
               if (found) {
                   const FormulaColumns row(rs, FormulaTexts::Whole);
                   formula.FormulaName = row.name();
                   formula.FormulaExpression = row.expression();
                   formula.FormulaMemo = row.memo();
               }
           }) &&
           found;
}

bool extractPicture(CurrentLibrary& library, qint32 formulaID, const QString& file,
                    HeldMessages& messages) {
    if (!clsDBFuncs(messages).ExtractPicture(formulaID, file, library.connection())) {
        return false;
    }
    const bool isEmpty = QFileInfo(file).size() == 0;
    if (isEmpty) {
        QFile::remove(file);
    }
    return !isEmpty;
}

}  // namespace varo
