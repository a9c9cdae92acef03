#pragma once

#include "library/file_identity.h"
#include "platform/data/blob_field.h"
#include "platform/data/connection.h"
#include "platform/questions/held_messages.h"
#include "store/collections.h"
#include "store/db_funcs.h"

#include <optional>
#include <vector>

namespace varo {

/// The formulas of all libraries that have a picture: library by library, in ascending order of
/// their identifiers. It is read in parts, on a connection of its own to each library that holds no
/// lock between two entries.
class PictureCatalog {
  public:
    struct Entry {
        int library;  ///< number of the library
        qint32 formulaID;
        QString name;  ///< of the formula
    };

    /// `libraries` is read here only.
    explicit PictureCatalog(const colFormulaDB& libraries);

    /// Appends at most `most` entries of one library. Returns whether there can be more.
    bool readEntries(int most);

    const std::vector<Entry>& entries() const { return entries_; }

    /// Numbers of the libraries whose entries could not all be read.
    const std::vector<int>& unreadable() const { return unreadable_; }

    enum class Bytes { Part, All, Locked, None };

    /// Appends the next bytes of an entry's picture to `bytes`, which are those read before, at
    /// first none. Returns whether they are all; Locked when another program has locked the
    /// library, which is not waited for once its entries have been listed; None when they cannot be
    /// read or are too many for a picture. Between two parts another program can read the library,
    /// but not write.
    Bytes readBytes(std::size_t entry, QByteArray& bytes);
    /// Lets go of a picture of which not all bytes have been read.
    void endReading() { field_.reset(); }

    /// The folder that an entry's formula is in, at a library that was listed; nothing when that is
    /// not known.
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
        FileIdentity file = {};  ///< when it was opened
    };

    Library& libraryOf(const Entry& entry);
    bool openListed();
    void endListing();

    std::vector<Library> libraries_;
    std::vector<Entry> entries_;
    std::vector<int> unreadable_;
    std::size_t listed_ = 0;      ///< libraries whose entries have been read
    std::optional<qint32> last_;  ///< identifier read last in the library that is being listed
    HeldMessages none_;           // reading shows nothing
    clsDBFuncs funcs_{none_};
    std::optional<data::BlobField> field_;  ///< of which not all bytes have been read
    std::size_t fieldOf_ = 0;               ///< the entry that it belongs to
};

}  // namespace varo
