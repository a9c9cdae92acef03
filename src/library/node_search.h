#pragma once

#include "library/file_identity.h"
#include "library/node_id.h"
#include "platform/data/connection.h"
#include "platform/data/recordset.h"
#include "platform/questions/held_messages.h"
#include "store/collections.h"
#include "store/db_funcs.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QSet>

#include <chrono>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace varo {

/// Most characters of a text that is searched for: a database compares with patterns of 50,000
/// bytes at most.
inline constexpr int kFindTextLimit = 10'000;

/// Where a text is to stand in the one that is searched.
enum class TextPlace { Start = 0, End = 1, Anywhere = 2 };

/// What is searched for. A text that is "" does not count.
struct FindCriteria {
    bool inFolders = false;
    bool inFormulas = false;
    QString name = {};
    TextPlace namePlace = TextPlace::Start;
    QString memo = {};  ///< in the description, which formulas alone have
    TextPlace memoPlace = TextPlace::Start;
    QString property = {};  ///< the whole name of a property

    /// Whether one of the kinds that are searched has a criterion.
    bool canBeSearched() const;

    bool operator==(const FindCriteria&) const = default;
};

/// The statement that finds the nodes of one kind; its text is "" when that kind has no criterion.
/// The characters of the user's texts match themselves, without regard to the case of ASCII
/// letters.
Statement findStatement(const FindCriteria& criteria, NodeType kind);

/// A folder or formula that a search has found.
struct FindHit {
    NodeType kind = NodeTypeFolder;
    int library = 0;  ///< number of the library
    qint32 id = 0;
    qint32 parentId = 0;  ///< identifier of the folder that it is in; 0 is the library's top level
    QString name;
    FileIdentity file = {};  ///< the library's file when it was searched
    quint32 content = 0;     ///< a number of a formula's expression; 0 when there is none

    /// The hit's key and tag in the list of results.
    QString key() const;
    QString tag() const;

    /// The node that has been found, or that has the formula in it; and the one above it.
    NodeId node() const { return nodeOf(library, kind == NodeTypeFolder ? id : parentId); }
    NodeId parent() const { return nodeOf(library, parentId); }
};

/// Whether the library of `hit` has what was found still: under that identifier it has the name
/// that was found, or `shownName`, which the user sees for it; or, in the file that was searched, a
/// formula with the expression that was found, which has been given another name. True also when
/// the library cannot be read, and for a formula that is just missing in the file that was
/// searched, so that its folder can be shown.
bool isStillThere(const FindHit& hit, const QString& shownName);

/// Many hits, in few bytes over their names.
class FindHits {
  public:
    /// Says which file the hits of a library are from.
    void setFile(int library, const FileIdentity& file) { files_[library] = file; }
    void add(NodeType kind, int library, qint32 id, qint32 parentId, QStringView name,
             quint32 content);
    void append(const FindHits& others);
    void clear();

    std::size_t size() const { return rows_.size(); }
    /// The hit at a position below size().
    FindHit at(std::size_t position) const;

  private:
    struct Row {
        NodeType kind;
        int library;
        qint32 id;
        qint32 parentId;
        quint32 content;
        qsizetype textEnd;
    };

    std::vector<Row> rows_;
    QString text_;
    std::map<int, FileIdentity> files_;
};

/// Searches all libraries, one after the other, folders before formulas. It reads them on a
/// connection of its own and changes nothing. A statement that takes long is ended and run again
/// over a part of the table, so that it can be stopped although it finds nothing.
class NodeSearch {
  public:
    enum class Failure { None, NotOpened, NotRead };

    /// `libraries` is read here only.
    NodeSearch(const colFormulaDB& libraries, FindCriteria criteria);

    /// Time after which a statement that finds nothing is ended, and advance() returns.
    void setPatience(std::chrono::milliseconds patience) { patience_ = patience; }

    /// Goes on with the search: appends at most `most` hits of one library to `hits`, each node
    /// once for a library and kind, in ascending order of their identifiers. Returns false when the
    /// search has ended, at its end or with failure().
    bool advance(int most, FindHits& hits);

    /// Lets go of the lock on the library that is being searched, up to the next advance().
    void pause();

    /// Closes what is open: nothing is locked from then on, and the search does not go on.
    void stop();

    Failure failure() const { return failure_; }

    int libraries() const { return static_cast<int>(libraries_.size()); }
    const FindCriteria& criteria() const { return criteria_; }

    /// Position of the library that is searched, from 1.
    int position() const { return static_cast<int>(at_) + 1; }

    /// What has been searched of all libraries, from 0 to 1.
    double fraction() const;

  private:
    struct Library {
        int number;
        QString folder;
        QString fileName;
    };

    /// Identifiers of a table that have not been searched yet, in parts of `count` identifiers.
    struct Rest {
        qint64 first;
        qint64 next;
        qint64 last;
        qint64 count;
    };

    bool openLibrary();
    bool runStatement();
    bool readRows(int most, FindHits& hits);
    void searchInParts();
    void endPart();
    void nextStatement();
    bool fail(Failure failure);

    const FindCriteria criteria_;
    const bool canMatch_;  ///< whether there can be texts that hold those searched for
    std::vector<Library> libraries_;
    std::vector<NodeType> kinds_;
    HeldMessages none_;  // searching shows nothing
    clsDBFuncs funcs_{none_};
    data::Connection connection_;
    FileIdentity file_;  ///< of the library that is open
    data::Recordset rows_;
    QSet<qint32> listed_;       ///< found by the statement under way
    std::size_t at_ = 0;        ///< of the library that is searched
    std::size_t kind_ = 0;      ///< of kinds_, that is searched
    std::optional<Rest> rest_;  ///< while a table is searched in parts
    qint64 lastId_ = kNoId;     ///< of the hit that was read last from the table
    QElapsedTimer sinceRun_;    ///< the statement under way
    std::chrono::milliseconds patience_{50};
    QDeadlineTimer patienceEnd_;
    bool wasInterrupted_ = false;
    Failure failure_ = Failure::None;

    static constexpr qint64 kNoId = std::numeric_limits<qint64>::min();
};

/// What the user is told of a failure; "" for none.
QString messageOf(NodeSearch::Failure failure);

}  // namespace varo
