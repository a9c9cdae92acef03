#include "control/formula_reader.h"

#include "store/attempt.h"
#include "store/keys.h"

namespace varo {

FormulaReader::FormulaReader(ControlState& state, PictureFile pictureFile, HeldMessages& messages)
    : state_(state), pictureFile_(pictureFile), dbFuncs_(messages) {}

bool FormulaReader::read(qint32 folderID, colFormulaInfo& formulas) {
    data::Recordset rs;
    return dbFuncs_.GetFormulaByPID(folderID, rs, state_.connection) && attempt([&] {
               const int id = rs.column(u"ID");
               const int name = rs.column(u"Name");
               const int expression = rs.column(u"Formula");
               const int memo = rs.column(u"Memo");
               const int picType = rs.column(u"PicType");
               for (; !rs.atEnd(); rs.moveNext()) {
                   const qint32 formulaID = rs.integer(id);
                   if (formulas.contains(formulaKey(formulaID))) {
                       continue;
                   }
                   const qint32 pictureType = rs.integer(picType);
                   formulas.Add(formulaID, rs.text(name), rs.text(expression), rs.text(memo),
                                extractPicture(formulaID, pictureType), pictureType, folderID,
                                QString());
               }
           });
}

QString FormulaReader::extractPicture(qint32 formulaID, qint32 pictureType) {
    if (pictureType != PictureStored || filesRefused_) {
        return {};
    }
    const QString file = pictureFile_(state_, formulaID);
    const bool extracted =
        dbFuncs_.ExtractPicture(formulaID, file, state_.connection, &filesRefused_);
    return extracted ? file : QString();
}

}  // namespace varo
