#include "store/attempt.h"
#include "store/db_funcs.h"
#include "store/picture_transfer.h"

namespace varo {

namespace {

data::BlobField pictureOf(qint32 formulaID, data::Connection& conn) {
    return conn.field(QStringLiteral("Formula"), QStringLiteral("Pic"), formulaID);
}

enum class Stored { Done, NoBytes, Failed };

// Stores the file's bytes as the formula's picture and runs `finish` on the row, all or nothing.
// When the bytes cannot be moved, the message waits until the row is as it was and no lock is held.
template <class Finish>
Stored storePicture(const QString& fileName, qint32 formulaID, data::Connection& conn,
                    Questions& questions, Finish finish) {
    bool moved = true;
    QString failure;
    const bool ran = attempt([&] {
        data::Transaction transaction(conn);
        data::BlobField field = pictureOf(formulaID, conn);
        moved = ReadFileToField(field, fileName, failure);
        if (moved) {
            finish();
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
    const auto markStored = [&] {
        conn.execute(QStringLiteral("Update Formula Set PicType = 2 Where ID = ?"), {formulaID});
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
