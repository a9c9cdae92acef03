#pragma once

#include "library/file_identity.h"
#include "platform/data/blob_field.h"
#include "platform/data/connection.h"
#include "platform/questions/held_messages.h"
#include "store/collections.h"
#include "store/db_funcs.h"
#include "store/library_connection.h"

#include <deque>
#include <optional>
#include <vector>

namespace varo {

/// The formulas of all libraries that have a picture: library by library, in ascending order of
/// their identifiers; those of a library that is locked come later. It is read in parts, on
/// connections of its own that hold no lock between two entries. A few are open at a time, and but
/// for findFolder() nothing waits for a lock.
class PictureCatalog {
  public:
    struct Entry {
        int library;  ///< number of the library
        qint32 formulaID;
        QString name;  ///< of the formula
    };

    /// `libraries` is read here only.
    explicit PictureCatalog(const colFormulaDB& libraries);

    enum class Listing { Part, AllLocked, Complete };

    /// Appends at most `most` entries of one library, or turns to the next one when it is locked.
    /// Returns AllLocked when all that have more entries were found locked in turn.
    Listing readEntries(int most);

    const std::vector<Entry>& entries() const { return entries_; }

    /// Numbers of the libraries whose entries could not all be read.
    const std::vector<int>& unreadable() const { return unreadable_; }
    /// Numbers of the libraries that were locked and are tried again.
    std::vector<int> locked() const;

    enum class Bytes { Part, All, Locked, None };

    /// Appends the next bytes of an entry's picture to `bytes`, which are those read before, at
    /// first none. Returns whether they are all; Locked when another program has locked the
    /// library; None when they cannot be read or are too many for a picture. Between two parts
    /// another program can read the library, but not write. A picture of which a part has been read
    /// may be read from its beginning again.
    Bytes readBytes(std::size_t entry, QByteArray& bytes);
    /// Lets go of a picture of which not all bytes have been read.
    void endReading() { field_.reset(); }

    /// The folder that an entry's formula is in; nothing when that is not known.
    std::optional<qint32> folderOf(std::size_t entry);

    enum class Found { Formula, NotOpened, NotRead, Gone };

    /// Opens an entry's library anew and reads in which folder its formula is. It is gone also when
    /// another file has taken the library's place in which the identifier has another name.
    Found findFolder(std::size_t entry, qint32& folderID);

  private:
    struct Library {
        int number;
        QString folder;
        QString fileName;
        data::Connection connection = {};
        FileIdentity file = {};           ///< when it was opened for the first time
        std::optional<qint32> last = {};  ///< identifier of its last entry
        bool isLocked = false;            ///< when its entries were to be read
    };

    Library& libraryOf(const Entry& entry);
    OpenFailure open(Library& library);
    void close(Library& library);
    OpenFailure readPart(Library& library, int most);
    void startReading(std::size_t entry);

    std::vector<Library> libraries_;
    std::deque<Library*> unlisted_;  ///< those with more entries, in the order of reading
    std::deque<Library*> open_;      ///< the one that was used last is the last one
    std::size_t lockedInTurn_ = 0;   ///< of unlisted_, from its end
    std::vector<Entry> entries_;
    std::vector<int> unreadable_;
    HeldMessages none_;  // reading shows nothing
    clsDBFuncs funcs_{none_};
    std::optional<data::BlobField> field_;  ///< of which not all bytes have been read
    std::size_t fieldOf_ = 0;               ///< the entry that it belongs to
};

}  // namespace varo
