#include "library/picture_catalog.h"

#include "store/attempt.h"
#include "store/keys.h"
#include "store/library_connection.h"

#include <algorithm>

namespace varo {

namespace {

/// Bytes of a picture that are read at a time; a fraction of a display frame.
constexpr qint64 kPart = 512 * 1024;

/// Most bytes of a picture that is shown small.
constexpr qint64 kMostBytes = 256 * 1024 * 1024;

/// The picture itself is not read: it is left out, and so is every column that may stand behind it.
QString entriesStatement(const std::optional<qint32>& behind, int most) {
    return QStringLiteral(
               "Select Formula.ID,Formula.Name From Formula "
               "Where length(Formula.Pic) > 0%1 Order By Formula.ID Limit %2")
        .arg(behind ? QStringLiteral(" And Formula.ID > %1").arg(*behind) : QString())
        .arg(most);
}

}  // namespace

PictureCatalog::PictureCatalog(const colFormulaDB& libraries) {
    for (const clsFormulaDB& library : libraries) {
        libraries_.push_back(
            {libraryNumberOf(library.NodeKey), library.FormulaDBPath, library.FormulaDBName});
    }
}

bool PictureCatalog::readEntries(int most) {
    if (listed_ == libraries_.size()) {
        return false;
    }
    Library& library = libraries_[listed_];
    const std::size_t before = entries_.size();
    data::Recordset rows;
    const bool read =
        openListed() &&
        funcs_.FindShowFormula({entriesStatement(last_, most), {}}, rows, library.connection) &&
        attempt([&] {
            for (; !rows.atEnd(); rows.moveNext()) {
                entries_.push_back({library.number, rows.integer(0), rows.text(1)});
            }
        });
    if (!read) {
        unreadable_.push_back(library.number);
    }
    if (read && entries_.size() - before == static_cast<std::size_t>(most)) {
        last_ = entries_.back().formulaID;
    } else {
        endListing();
    }
    return listed_ < libraries_.size();
}

bool PictureCatalog::openListed() {
    Library& library = libraries_[listed_];
    if (!library.connection.isOpen() &&
        !ConnectLibrary(library.folder, library.fileName, library.connection, QString())) {
        return false;
    }
    if (library.file.path.isEmpty()) {
        library.file = FileIdentity::of(library.connection.path());
    }
    return true;
}

/// From here on nothing waits for the library, and it takes little memory while it is open.
void PictureCatalog::endListing() {
    data::Connection& connection = libraries_[listed_].connection;
    attempt([&] {
        if (connection.isOpen()) {
            connection.query(QStringLiteral("PRAGMA busy_timeout = 0"));
            connection.execute(QStringLiteral("PRAGMA cache_size = -256"));
        }
    });
    last_.reset();
    ++listed_;
}

PictureCatalog::Library& PictureCatalog::libraryOf(const Entry& entry) {
    return *std::ranges::find(libraries_, entry.library, &Library::number);
}

PictureCatalog::Bytes PictureCatalog::readBytes(std::size_t entry, QByteArray& bytes) {
    Bytes result = Bytes::None;
    try {
        if (bytes.isEmpty() || !field_ || fieldOf_ != entry) {
            const Entry& wanted = entries_[entry];
            bytes.clear();
            field_ = libraryOf(wanted).connection.field(QStringLiteral("Formula"),
                                                        QStringLiteral("Pic"), wanted.formulaID);
            fieldOf_ = entry;
        }
        const qint64 total = field_->size();
        if (total <= kMostBytes) {
            const qint64 before = bytes.size();
            const qint64 part = std::min(kPart, total - before);
            bytes.reserve(total);
            bytes.resize(before + part);
            field_->getChunk({bytes.data() + before, static_cast<std::size_t>(part)});
            result = before + part == total ? Bytes::All : Bytes::Part;
        }
    } catch (const data::Error& error) {
        result = error.isLocked() ? Bytes::Locked : Bytes::None;
    }
    if (result != Bytes::Part) {
        endReading();
    }
    return result;
}

std::optional<qint32> PictureCatalog::folderOf(std::size_t entry) {
    const Entry& wanted = entries_[entry];
    data::Recordset rows;
    std::optional<qint32> folder;
    if (funcs_.GetFormulaByID(wanted.formulaID, rows, libraryOf(wanted).connection)) {
        attempt([&] {
            if (!rows.atEnd()) {
                folder = rows.integer(u"PID");
            }
        });
    }
    return folder;
}

PictureCatalog::Found PictureCatalog::findFolder(std::size_t entry, qint32& folderID) {
    const Entry& wanted = entries_[entry];
    const Library& library = libraryOf(wanted);
    data::Connection connection;
    if (!ConnectLibrary(library.folder, library.fileName, connection, QString())) {
        return Found::NotOpened;
    }
    data::Recordset rows;
    bool isThere = false;
    const bool read = funcs_.GetFormulaByID(wanted.formulaID, rows, connection) && attempt([&] {
                          isThere = !rows.atEnd() && (rows.text(u"Name") == wanted.name ||
                                                      library.file.isStillThere());
                          folderID = isThere ? rows.integer(u"PID") : 0;
                      });
    if (!read) {
        return Found::NotRead;
    }
    return isThere ? Found::Formula : Found::Gone;
}

}  // namespace varo
