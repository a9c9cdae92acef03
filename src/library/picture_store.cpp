#include "library/picture_store.h"

#include "store/attempt.h"

#include <QFile>
#include <QFileInfo>

namespace varo {

bool PictureStore::store(qint32 formulaID, PictureCopy& copy, HeldMessages& messages) {
    clsDBFuncs funcs(messages);
    bool moved = false;
    const bool committed = attempt([&] {
        FileAside old(copy.target());
        data::Transaction transaction(library_.connection());
        moved = old.isClear() &&
                funcs.AddNewPicture(formulaID, copy.path(), library_.connection()) &&
                copy.replaceTarget();
        if (moved) {
            transaction.commit();
            old.discard();
        }
    });
    return moved && committed;
}

bool PictureStore::remove(const clsFormulaInfo& formula) {
    if (!library_.funcs().DelPicture(formula.FormulaID, library_.connection())) {
        return false;
    }
    QFile::remove(formula.FormulaPicPath);
    return true;
}

bool PictureStore::copyOut(const clsFormulaInfo& formula) {
    PictureCopy copy(copiedFile());
    const bool taken = QFileInfo(formula.FormulaPicPath).isFile()
                           ? copy.take(formula.FormulaPicPath)
                           : library_.funcs().ExtractPicture(formula.FormulaID, copy.path(),
                                                             library_.connection());
    return taken && copy.replaceTarget();
}

bool PictureStore::holdsCopy() const {
    return QFileInfo(copiedFile()).isFile();
}

}  // namespace varo
