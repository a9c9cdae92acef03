#include "store/db_funcs.h"
#include "store/picture_transfer.h"
#include "store/statements.h"

#include <QFileInfo>

namespace varo {

namespace {

data::BlobField pictureOf(qint32 formulaID, data::Connection& conn) {
    return conn.field(QStringLiteral("Formula"), QStringLiteral("Pic"), formulaID);
}

enum class Stored { Done, NoBytes, Failed };

// Runs `prepare` on the row and stores the file's bytes as its picture, all or nothing. When the
// bytes cannot be moved, the message waits until the row is as it was and no lock is held.
template <class Prepare>
Stored storePicture(const QString& fileName, qint32 formulaID, data::Connection& conn,
                    Questions& questions, Prepare prepare) {
    bool moved = true;
    QString failure;
    const bool ran = attempt([&] {
        data::Transaction transaction(conn);
        prepare();
        data::BlobField field = pictureOf(formulaID, conn);
        moved = ReadFileToField(field, fileName, failure);
        if (moved) {
            transaction.commit();
        }
    });
    if (!moved) {
        questions.inform(failure);
        return Stored::NoBytes;
    }
    return ran ? Stored::Done : Stored::Failed;
}

}  // namespace

bool clsDBFuncs::AddNewPicture(qint32 formulaID, const QString& fileName, data::Connection& conn) {
    // The type is set while no picture is in the row, which is stored whole. An empty file leaves
    // the picture as it is.
    const auto markStored = [&] {
        const QString emptied =
            QFileInfo(fileName).size() > 0 ? QStringLiteral(", Pic = ''") : QString();
        conn.execute(QStringLiteral("Update Formula Set PicType = 2%1 Where ID = ?").arg(emptied),
                     {formulaID});
    };
    return storePicture(fileName, formulaID, conn, *questions_, markStored) == Stored::Done;
}

bool clsDBFuncs::InserFieldFromFile(const QString& fileName, qint32 formulaID,
                                    data::Connection& conn) {
    return storePicture(fileName, formulaID, conn, *questions_, [] {}) != Stored::Failed;
}

bool clsDBFuncs::DelPicture(qint32 formulaID, data::Connection& conn) {
    return change(conn, QStringLiteral("Update Formula Set Pic = '', PicType = 0 Where ID = ?"),
                  {formulaID});
}

bool clsDBFuncs::ExtractPicture(qint32 formulaID, const QString& fileName, data::Connection& conn) {
    bool moved = true;
    QString failure;
    const bool ran = attempt([&] {
        data::BlobField field = pictureOf(formulaID, conn);
        moved = WriteFieldToFile(field, fileName, failure);
    });
    if (!moved) {
        questions_->inform(failure);
    }
    return ran && moved;
}

}  // namespace varo
