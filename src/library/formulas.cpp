#include "library/formulas.h"

#include <QFileInfo>

namespace varo {

InsertedFormula insertFormula(CurrentLibrary& library, clsDBFuncs& funcs,
                              const clsFormulaInfo& formula, qint32& id) {
    if (!funcs.AddNewFormula(formula.FormulaPID, formula.FormulaName, formula.FormulaExpression,
                             formula.FormulaMemo, formula.FormulaPicType, id,
                             library.connection())) {
        return InsertedFormula::None;
    }
    const bool hasFile = QFileInfo(formula.FormulaPicPath).isFile();
    return !hasFile || funcs.InserFieldFromFile(formula.FormulaPicPath, id, library.connection())
               ? InsertedFormula::Whole
               : InsertedFormula::WithoutPicture;
}

DeletedFormula deleteFormula(CurrentLibrary& library, qint32 id) {
    if (!library.funcs().DelFormula(id, library.connection())) {
        return DeletedFormula::None;
    }
    return library.funcs().DelPropertyByNodeID(id, NodeTypeFormula, library.connection())
               ? DeletedFormula::Whole
               : DeletedFormula::WithoutProperties;
}

}  // namespace varo
