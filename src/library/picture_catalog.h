#pragma once

#include "platform/data/blob_field.h"
#include "platform/data/connection.h"
#include "platform/questions/held_messages.h"
#include "store/collections.h"
#include "store/db_funcs.h"

#include <optional>
#include <vector>

namespace varo {

/// The formulas of all libraries that have a picture: library by library, in ascending order of
/// their identifiers. It is read in parts, on a connection of its own that holds no lock between
/// two entries.
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

    enum class Bytes { Part, All, None };

    /// Appends the next bytes of an entry's picture to `bytes`, which are those read before, at
    /// first none. Returns whether they are all; None when they cannot be read or are too many for
    /// a picture. Between two parts another program can read the library, but not write.
    Bytes readBytes(std::size_t entry, QByteArray& bytes);
    /// Lets go of a picture of which not all bytes have been read.
    void endReading() { field_.reset(); }

    enum class Found { Formula, NotOpened, NotRead, Gone };

    /// Reads anew in which folder an entry's formula is.
    Found findFolder(std::size_t entry, qint32& folderID);

    /// Closes the library that is open: the next reading opens it anew, whether or not it could be
    /// opened before.
    void close();

  private:
    struct Library {
        int number;
        QString folder;
        QString fileName;
    };

    bool open(int number);

    std::vector<Library> libraries_;
    std::vector<Entry> entries_;
    std::vector<int> unreadable_;
    std::size_t listed_ = 0;      ///< libraries whose entries have been read
    std::optional<qint32> last_;  ///< identifier read last in the library that is being listed
    HeldMessages none_;           // reading shows nothing
    clsDBFuncs funcs_{none_};
    data::Connection connection_;
    std::vector<int> refused_;              ///< numbers of the libraries that could not be opened
    int open_ = 0;                          ///< number of the library that is open
    std::optional<data::BlobField> field_;  ///< of which not all bytes have been read
    std::size_t fieldOf_ = 0;               ///< the entry that it belongs to
};

}  // namespace varo
