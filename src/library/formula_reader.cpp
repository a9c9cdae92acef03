#include "library/formula_reader.h"

#include "store/attempt.h"
#include "store/keys.h"

#include <QFile>
#include <QFileInfo>

namespace varo {

FormulaReader::FormulaReader(CurrentLibrary& library, const WorkingFiles& files,
                             PictureFile pictureFile, HeldMessages& messages)
    : library_(library), files_(files), pictureFile_(pictureFile), messages_(messages) {}

bool FormulaReader::read(qint32 folderID, colFormulaInfo& formulas) {
    data::Recordset rs;
    return library_.funcs().GetFormulaByPID(folderID, rs, library_.connection()) && attempt([&] {
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
                                pictureOf(formulaID, pictureType), pictureType, folderID,
                                QString());
               }
           });
}

QString FormulaReader::pictureOf(qint32 formulaID, qint32 pictureType) {
    if (pictureType != PictureStored) {
        return {};
    }
    const QString file = (files_.*pictureFile_)(formulaID);
    HeldMessages messages;
    const bool extracted = extractPicture(library_, formulaID, file, messages);
    // What keeps one picture from its file often keeps all the others too: one message says so.
    if (!reported_ && !messages.isEmpty()) {
        reported_ = true;
        messages.show(messages_);
    }
    return extracted ? file : QString();
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
