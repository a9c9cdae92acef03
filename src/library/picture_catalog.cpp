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
    const int number = libraries_[listed_].number;
    const std::size_t before = entries_.size();
    data::Recordset rows;
    const bool read =
        open(number) &&
        funcs_.FindShowFormula({entriesStatement(last_, most), {}}, rows, connection_) &&
        attempt([&] {
            for (; !rows.atEnd(); rows.moveNext()) {
                entries_.push_back({number, rows.integer(0), rows.text(1)});
            }
        });
    if (!read) {
        unreadable_.push_back(number);
    }
    if (read && entries_.size() - before == static_cast<std::size_t>(most)) {
        last_ = entries_.back().formulaID;
    } else {
        last_.reset();
        ++listed_;
    }
    return listed_ < libraries_.size();
}

PictureCatalog::Bytes PictureCatalog::readBytes(std::size_t entry, QByteArray& bytes) {
    bool isComplete = false;
    const bool read = attempt([&] {
        if (bytes.isEmpty() || !field_ || fieldOf_ != entry) {
            const Entry& wanted = entries_[entry];
            bytes.clear();
            if (!open(wanted.library)) {
                throw data::Error(QStringLiteral("the library cannot be opened"));
            }
            field_ = connection_.field(QStringLiteral("Formula"), QStringLiteral("Pic"),
                                       wanted.formulaID);
            fieldOf_ = entry;
        }
        const qint64 total = field_->size();
        if (total > kMostBytes) {
            throw data::Error(QStringLiteral("too many bytes for a picture"));
        }
        const qint64 before = bytes.size();
        const qint64 part = std::min(kPart, total - before);
        bytes.reserve(total);
        bytes.resize(before + part);
        field_->getChunk({bytes.data() + before, static_cast<std::size_t>(part)});
        isComplete = before + part == total;
    });
    if (!read || isComplete) {
        endReading();
    }
    if (!read) {
        // A library that is locked is found out when it is opened, and then waited for no more.
        connection_.close();
    }
    return !read ? Bytes::None : isComplete ? Bytes::All : Bytes::Part;
}

PictureCatalog::Found PictureCatalog::findFolder(std::size_t entry, qint32& folderID) {
    const Entry& wanted = entries_[entry];
    endReading();
    if (!open(wanted.library)) {
        return Found::NotOpened;
    }
    data::Recordset rows;
    bool isThere = false;
    const bool read = funcs_.GetFormulaByID(wanted.formulaID, rows, connection_) && attempt([&] {
                          isThere = !rows.atEnd();
                          folderID = isThere ? rows.integer(u"PID") : 0;
                      });
    if (!read) {
        connection_.close();
        return Found::NotRead;
    }
    return isThere ? Found::Formula : Found::Gone;
}

void PictureCatalog::close() {
    endReading();
    connection_.close();
    refused_.clear();
}

bool PictureCatalog::open(int number) {
    if (open_ == number && connection_.isOpen()) {
        return true;
    }
    field_.reset();
    open_ = number;
    const auto library = std::ranges::find(libraries_, number, &Library::number);
    if (library == libraries_.end() || std::ranges::count(refused_, number) > 0) {
        return false;
    }
    const bool opened = ConnectLibrary(library->folder, library->fileName, connection_, QString());
    if (!opened) {
        refused_.push_back(number);
    }
    return opened;
}

}  // namespace varo
