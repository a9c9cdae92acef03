#include "library/picture_catalog.h"

#include "platform/data/lock_check.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <algorithm>
#include <iterator>

namespace varo {

namespace {

/// Bytes of a picture that are read at a time; a fraction of a display frame.
constexpr qint64 kPart = 512 * 1024;

/// Libraries that are open at a time; a program may have some thousand files open.
constexpr std::size_t kMostOpen = 16;

/// Bytes that each of them keeps.
constexpr qint64 kCachedBytes = 256 * 1024;

/// Most bytes of a picture that is shown small.
constexpr qint64 kMostBytes = 256 * 1024 * 1024;

/// The picture itself is not read: it is left out, and so is every column that may stand behind it.
QString entriesStatement(const data::Connection& connection, const std::optional<qint32>& behind,
                         int most) {
    return QStringLiteral(
               "Select Formula.ID,Formula.Name From Formula "
               "Where %1 > 0%2 Order By Formula.ID Limit %3")
        .arg(connection.lengthOf(QStringLiteral("Formula"), QStringLiteral("Pic")),
             behind ? QStringLiteral(" And Formula.ID > %1").arg(*behind) : QString())
        .arg(most);
}

}  // namespace

PictureCatalog::PictureCatalog(const colFormulaDB& libraries) {
    for (const clsFormulaDB& library : libraries) {
        libraries_.push_back(
            {libraryNumberOf(library.NodeKey), library.FormulaDBPath, library.FormulaDBName});
    }
    for (Library& library : libraries_) {
        unlisted_.push_back(&library);
    }
}

PictureCatalog::Listing PictureCatalog::readEntries(int most) {
    if (unlisted_.empty()) {
        return Listing::Complete;
    }
    Library& library = *unlisted_.front();
    const std::size_t before = entries_.size();
    const OpenFailure failure = readPart(library, most);
    const bool isComplete = entries_.size() - before < static_cast<std::size_t>(most);
    library.isLocked = failure == OpenFailure::Locked;
    if (library.isLocked) {
        std::ranges::rotate(unlisted_, std::next(unlisted_.begin()));
        ++lockedInTurn_;
    } else {
        lockedInTurn_ = 0;
        if (failure != OpenFailure::None) {
            unreadable_.push_back(library.number);
        }
        if (failure != OpenFailure::None || isComplete) {
            unlisted_.pop_front();
        }
    }
    if (unlisted_.empty()) {
        return Listing::Complete;
    }
    return lockedInTurn_ < unlisted_.size() ? Listing::Part : Listing::AllLocked;
}

OpenFailure PictureCatalog::readPart(Library& library, int most) {
    if (const OpenFailure failure = open(library); failure != OpenFailure::None) {
        return failure;
    }
    data::Recordset rows;
    const bool read =
        funcs_.FindShowFormula({entriesStatement(library.connection, library.last, most), {}}, rows,
                               library.connection) &&
        attempt([&] {
            for (; !rows.atEnd(); rows.moveNext()) {
                entries_.push_back({library.number, rows.integer(0), rows.text(1)});
                library.last = entries_.back().formulaID;
            }
        });
    if (read) {
        return OpenFailure::None;
    }
    return data::isLocked(library.connection.path()) ? OpenFailure::Locked : OpenFailure::NoLibrary;
}

std::vector<int> PictureCatalog::locked() const {
    std::vector<int> numbers;
    for (const Library* library : unlisted_) {
        if (library->isLocked) {
            numbers.push_back(library->number);
        }
    }
    return numbers;
}

/// Opens a library that is not open, unless another file has taken its place since it was opened
/// first, and closes the one that was not used for longest.
OpenFailure PictureCatalog::open(Library& library) {
    if (!library.connection.isOpen()) {
        const QString path = normalisedFolder(library.folder) + library.fileName;
        if (data::isLocked(path)) {
            return OpenFailure::Locked;
        }
        if (!library.file.path.isEmpty() && !library.file.isStillThere()) {
            return OpenFailure::Missing;
        }
        if (open_.size() == kMostOpen) {
            close(*open_.front());
        }
        if (const OpenFailure failure =
                openLibrary(library.folder, library.fileName, library.connection).failure;
            failure != OpenFailure::None) {
            return failure;
        }
        attempt([&] {
            library.connection.setLockWait(0);
            library.connection.setCacheLimit(kCachedBytes);
        });
        if (library.file.path.isEmpty()) {
            library.file = FileIdentity::of(path);
        }
    }
    std::erase(open_, &library);
    open_.push_back(&library);
    return OpenFailure::None;
}

void PictureCatalog::close(Library& library) {
    if (field_ && &libraryOf(entries_[fieldOf_]) == &library) {
        field_.reset();
    }
    library.connection.close();
    std::erase(open_, &library);
}

PictureCatalog::Library& PictureCatalog::libraryOf(const Entry& entry) {
    return *std::ranges::find(libraries_, entry.library, &Library::number);
}

/// Opens the field of an entry's picture. Throws data::Error.
void PictureCatalog::startReading(std::size_t entry) {
    const Entry& wanted = entries_[entry];
    Library& library = libraryOf(wanted);
    if (const OpenFailure failure = open(library); failure != OpenFailure::None) {
        throw data::Error(QStringLiteral("the library of the picture does not open"),
                          failure == OpenFailure::Locked ? data::Error::Cause::Locked
                                                         : data::Error::Cause::Other);
    }
    field_ = library.connection.field(QStringLiteral("Formula"), QStringLiteral("Pic"),
                                      wanted.formulaID);
    fieldOf_ = entry;
}

PictureCatalog::Bytes PictureCatalog::readBytes(std::size_t entry, QByteArray& bytes) {
    Bytes result = Bytes::None;
    try {
        if (bytes.isEmpty() || !field_ || fieldOf_ != entry) {
            bytes.clear();
            startReading(entry);
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
    Library& library = libraryOf(wanted);
    data::Recordset rows;
    std::optional<qint32> folder;
    if (open(library) == OpenFailure::None &&
        funcs_.GetFormulaByID(wanted.formulaID, rows, library.connection)) {
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
