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

bool addFormula(CurrentLibrary& library, qint32 folder, const QString& name, qint32& id) {
    clsFormulaInfo formula;
    formula.FormulaName = name;
    formula.FormulaPID = folder;
    return insertFormula(library, library.funcs(), formula, id) != InsertedFormula::None;
}

bool renameFormula(CurrentLibrary& library, qint32 id, const QString& name) {
    return library.funcs().RenameFormula(id, name, library.connection());
}

bool storeExpression(CurrentLibrary& library, qint32 id, const QString& expression) {
    return library.funcs().EditFormulaExpression(id, expression, library.connection());
}

bool storeMemo(CurrentLibrary& library, qint32 id, const QString& memo) {
    return library.funcs().EditFormulaMemo(id, memo, library.connection());
}

bool exchangeFormulas(CurrentLibrary& library, qint32 id, qint32 neighbour) {
    return library.funcs().ExchangeOrderID(id, neighbour, QStringLiteral("Formula"),
                                           library.connection());
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
