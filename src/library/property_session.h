#pragma once

#include "library/filter_store.h"
#include "library/library_backup.h"
#include "store/collections.h"
#include "store/db_funcs.h"

#include <optional>
#include <vector>

namespace varo {

/// A property in the list of the property-conditions dialog, with what is pending.
struct ListedProperty {
    qint32 id = 0;
    QString name;
    qint32 filter = 0;  ///< 0: none

    bool operator==(const ListedProperty&) const = default;
};

/// What the property-conditions dialog does with a library: the properties of one node, their
/// changes until they are written, their filters, and the backup by which everything can be taken
/// back. Shows nothing; a QString that is returned is what the user is to be told, "" nothing.
///
/// The order of calls: settleLeftBackup(), SetConnection(), InitForm(), edits, then commit() or
/// cancel(), and destruction, which cancels if neither has been done, and deletes the backup. Edits
/// name a property by its id and do nothing for one that is not listed.
class PropertySession {
  public:
    /// The backup is made in `folder`, which ends with a separator. `funcs` must outlive this.
    PropertySession(const QString& folder, clsDBFuncs& funcs);
    ~PropertySession();
    Q_DISABLE_COPY_MOVE(PropertySession)

    /// Backs the library up and opens it. All or nothing. Fails while another session uses the
    /// folder of the backup.
    QString SetConnection(const QString& folder, const QString& fileName, const QString& password);

    /// Reads the properties of the node (0 and NodeTypeFolder: the library itself). When that
    /// fails, none is listed.
    QString InitForm(qint32 nodeID, NodeType nodeType);

    /// The listed properties by id, then new ones as added. Of stored rows with the same id, which
    /// nothing can tell apart, the first is listed.
    const std::vector<ListedProperty>& properties() const { return listed_; }
    /// Null when it is not listed.
    const ListedProperty* find(qint32 id) const;

    /// Adds 新属性 without a filter, with the next id, and returns the id; nothing when the numbers
    /// are used up.
    std::optional<qint32> add();

    /// What became of a name that the user typed.
    struct Renaming {
        bool accepted = false;
        QString message;  ///< why not; a name of blanks is refused without one
    };
    /// Gives the property the typed name, without blanks around it.
    Renaming rename(qint32 id, const QString& typed);

    void remove(qint32 id);

    /// As askedNames(), the open library being the one that the session has.
    QStringList namesInUse(const colFormulaDB& libraries);

    /// The filter of a property as it is stored: an empty tree when it has none. Nothing when it
    /// cannot be read.
    std::optional<StoredCondition> readFilter(qint32 id);

    /// What became of an edit that writes.
    struct Outcome {
        bool isDone = false;
        QString message;  ///< what the user is to be told; "" when all is well

        explicit operator bool() const { return isDone; }
    };

    /// Stores `tree` as the filter of the property, over the one that it has unless another
    /// property uses that, and notes the relation. A tree equal to the stored one changes nothing
    /// of it, whatever shape it is stored in. Not done, with nothing changed, as in FilterStore.
    /// What has been written without the backup's note (see LibraryBackup::noteLibrary()) is told.
    Outcome saveFilter(qint32 id, const ConditionTree& tree);

    /// Takes the filter from the property, and deletes it unless another property uses it. Not
    /// done, with nothing changed, when that fails; done for a property without one. The note as
    /// above.
    Outcome deleteFilter(qint32 id);

    /// True when anything would be lost by closing: pending changes, or filters written.
    bool hasChanges() const;

    /// Writes the pending changes: deletions with the filters that no other property uses, then
    /// additions, renames, relations; then closes the library and deletes the backup. Stops at the
    /// first failure, which is told; what was done before it stays done and is no longer pending,
    /// and the library stays open.
    QString commit();

    /// True when cancel() puts the backup back: filters were written, or a commit failed.
    bool needsRestore() const { return filtersWritten_ || commitFailed_; }

    /// Closes the library, and puts the backup back if need be. When that fails, the backup stays
    /// and is settled the next time.
    QString cancel();

  private:
    struct Deletion {
        qint32 id;
        qint32 filter;
    };
    struct Pending {
        std::vector<Deletion> deletions;
        std::vector<qint32> additions;
        std::vector<qint32> renames;
        std::vector<qint32> relations;
        std::vector<qint32> droppedFilters;  ///< of additions that were removed

        bool isEmpty() const;
    };

    ListedProperty* listed(qint32 id);
    bool isUsedByAnother(qint32 filter, qint32 id);
    void noteRelation(qint32 id);
    bool removeUnused(qint32 filter, qint32 id);
    QString write(Pending& pending);
    QString firstMessage() const;
    QString noteLibrary();

    clsDBFuncs& funcs_;
    data::Connection connection_;
    FilterStore filters_{connection_};
    LibraryBackup backup_;
    qint32 nodeID_ = 0;
    NodeType nodeType_ = NodeTypeFolder;
    std::vector<ListedProperty> listed_;
    std::vector<ListedProperty> stored_;
    Pending pending_;
    qint64 nextId_ = 0;
    qint32 lastFilter_ = 0;
    bool filtersWritten_ = false;
    bool commitFailed_ = false;
};

}  // namespace varo
