#include "library/condition_text.h"
#include "library/filter_reader.h"
#include "library/library_text.h"
#include "library/limits.h"
#include "library/rings.h"
#include "platform/data/connection.h"
#include "platform/pictures/picture_format.h"
#include "store/library_structure.h"
#include "store/template.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace varo {

namespace {

struct TableShape {
    const char* table;
    const char* columns;
};

constexpr std::array kTableShapes = {
    TableShape{"Tree", "ID,Name,PID,OrderID"},
    TableShape{"Formula", "ID,Name,Formula,Memo,Pic,PicType,PID,OrderID"},
    TableShape{"RecentVar", "VarName,FormulaID,Value,VarSourceType,VarMemo"},
    TableShape{"Property", "PropID,PropName,FilterID,NodeID,NodeType"},
    TableShape{"FilterCond", "ID,UserID,ParentID,Type"},
    TableShape{"FilterExpressions",
               "FilterID,ExpID,TableName,FieldName,FieldType,CompareType,TheConst"},
    TableShape{"TableInfo", "PrptyName,PrptyVal"},
};

/// Columns of whole numbers, of 32 bits. What is in them is left out or read as something else.
constexpr std::array kNumberColumns = {
    TableShape{"Tree", "ID,PID,OrderID"},
    TableShape{"Formula", "ID,PicType,PID,OrderID"},
    TableShape{"RecentVar", "FormulaID,VarSourceType"},
    TableShape{"Property", "PropID,FilterID,NodeID,NodeType"},
    TableShape{"FilterCond", "ID,UserID,ParentID,Type"},
    TableShape{"FilterExpressions", "FilterID,ExpID,FieldType,CompareType"},
};

/// Each query gives the faults of one kind, a line of text per row, in a time linear in the rows
/// whatever indexes the file has: what is missing is found by "except", not by a search per row.
constexpr std::array kFaultQueries = {
    R"(select printf('folder %d "%!.99s": its identifier stands for the top level', ID, Name)
       from Tree where ID = 0)",
    R"(select printf('%d folders have the identifier %d', count(*), ID)
       from Tree group by ID having count(*) > 1)",
    R"(select printf('%d formulas have the identifier %d', count(*), ID)
       from Formula group by ID having count(*) > 1)",
    R"(select printf('folder %d "%!.99s": its parent %d does not exist', ID, Name, PID)
       from Tree where PID <> 0 and PID in
       (select PID from Tree except select ID from Tree) order by ID)",
    R"(select printf('formula %d "%!.99s": its folder %d does not exist', ID, Name, PID)
       from Formula where PID <> 0 and PID in
       (select PID from Formula except select ID from Tree) order by ID)",
    R"(select printf('%d folders below folder %d have the order number %d', count(*), PID, OrderID)
       from Tree group by PID, OrderID having count(*) > 1)",
    R"(select printf('%d formulas of folder %d have the order number %d', count(*), PID, OrderID)
       from Formula group by PID, OrderID having count(*) > 1)",
    R"(select printf('formula %d "%!.99s": its picture type is %d', ID, Name, PicType)
       from Formula where PicType not in (0, 2) order by ID)",
    R"(select printf('formula %d "%!.99s": its picture type is 2 without a picture', ID, Name)
       from Formula where PicType = 2 and coalesce(length(Pic), 0) = 0 order by ID)",
    R"(select printf('formula %d "%!.99s": it has a picture with picture type 0', ID, Name)
       from Formula where coalesce(PicType, 0) = 0 and length(Pic) > 0 order by ID)",
    R"(select printf('variable "%!.99s" of formula %d has %d values', VarName, FormulaID, count(*))
       from RecentVar group by VarName collate nocase, FormulaID having count(*) > 1)",
    R"(select printf('%d properties of %s %d have the identifier %d', count(*),
       iif(NodeType = 1, 'folder', 'formula'), NodeID, PropID)
       from Property where NodeType in (1, 2) group by NodeType, NodeID, PropID
       having count(*) > 1)",
    R"(select printf('property %d "%!.99s": its folder %d does not exist', PropID, PropName, NodeID)
       from Property where NodeType = 1 and NodeID <> 0 and NodeID in
       (select NodeID from Property except select ID from Tree) order by rowid)",
    R"(select printf('property %d "%!.99s": its formula %d does not exist', PropID, PropName, NodeID)
       from Property where NodeType = 2 and NodeID in
       (select NodeID from Property except select ID from Formula) order by rowid)",
    R"(select printf('property %d "%!.99s": its node type is %d', PropID, PropName, NodeType)
       from Property where coalesce(NodeType, 0) not in (1, 2) order by rowid)",
    R"(select printf('property %d "%!.99s": its filter %d has no conditions', PropID, PropName, FilterID)
       from Property where FilterID <> 0 and FilterID in
       (select FilterID from Property except select UserID from FilterCond) order by rowid)",
    R"(select printf('condition %d of filter %d: its parent %d does not exist', ID, UserID, ParentID)
       from FilterCond where ParentID <> 0 and (UserID, ParentID) in
       (select UserID, ParentID from FilterCond except select UserID, ID from FilterCond)
       order by rowid)",
    R"(select printf('condition %d of filter %d: its parent %d is a comparison', ID, UserID, ParentID)
       from FilterCond where (UserID, ParentID) in (select UserID, ID from FilterCond where Type = 4)
       order by rowid)",
    R"(select printf('condition %d of filter %d: it has no comparison', ID, UserID)
       from FilterCond where Type = 4 and (UserID, ID) in
       (select UserID, ID from FilterCond except select FilterID, ExpID from FilterExpressions)
       order by rowid)",
    R"(select printf('%d conditions of filter %d have the identifier %d', count(*), UserID, ID)
       from FilterCond group by UserID, ID having count(*) > 1)",
    R"(select printf('condition %d of filter %d: its type is %d', ID, UserID, Type)
       from FilterCond where coalesce(Type, 0) not in (1, 2, 3, 4) order by rowid)",
};

/// Texts that are longer than the system lets a user type. The query gives what the text belongs to
/// and the text, of those rows that can be over the limit: SQL counts a character beyond the basic
/// plane once, the system twice.
struct TextLimit {
    const char* query;
    const char* what;
    int limit;
};

constexpr std::array kTextLimits = {
    TextLimit{R"(select printf('folder %d "%!.99s"', ID, Name), Name from Tree
                 where 2 * length(Name) > ? order by ID)",
              "name", kFolderNameLimit},
    TextLimit{R"(select printf('formula %d "%!.99s"', ID, Name), Name from Formula
                 where 2 * length(Name) > ? order by ID)",
              "name", kFormulaNameLimit},
    TextLimit{R"(select printf('formula %d "%!.99s"', ID, Name), Formula from Formula
                 where 2 * length(Formula) > ? order by ID)",
              "expression", kTextLimit},
    TextLimit{R"(select printf('formula %d "%!.99s"', ID, Name), Memo from Formula
                 where 2 * length(Memo) > ? order by ID)",
              "memo", kTextLimit},
    TextLimit{R"(select printf('variable "%!.99s" of formula %d', VarName, FormulaID), [Value]
                 from RecentVar where 2 * length([Value]) > ? order by rowid)",
              "value", kTextLimit},
    TextLimit{R"(select printf('property %d "%!.99s"', PropID, PropName), PropName from Property
                 where 2 * length(PropName) > ? order by rowid)",
              "name", kPropertyNameLimit},
};

/// Faults of one kind that are told one by one.
constexpr std::size_t kMostOfAKind = 1000;

/// The ring from its first member on, what is inside behind what it is in.
template <class Name>
QString ringText(const Ring& ring, Name name) {
    QStringList names;
    for (const qint32 id : ring.members) {
        names.append(name(id));
    }
    if (ring.members.size() < ring.size) {
        names.append(QStringLiteral("... (%1 in all)").arg(ring.size));
    }
    names.append(name(ring.members.front()));
    return names.join(QStringLiteral(" > "));
}

/// `text` on one line.
QString onOneLine(QString text) {
    std::replace_if(
        text.begin(), text.end(),
        [](QChar c) { return c.category() == QChar::Other_Control || c == QChar::LineSeparator; },
        QChar(u' '));
    return text;
}

class Check {
  public:
    explicit Check(data::Connection& connection) : connection_(connection) {}

    CheckReport run() {
        checkIntegrity();
        checkStructure();
        for (const char* query : kFaultQueries) {
            attempt([&] { addRows(QLatin1String(query)); });
        }
        for (const TableShape& shape : kNumberColumns) {
            attempt([&] { checkNumbers(shape); });
        }
        attempt([&] { checkAncestors(); });
        attempt([&] { checkConditionRings(); });
        attempt([&] { checkConditions(); });
        attempt([&] { checkPictures(); });
        for (const TextLimit& limit : kTextLimits) {
            attempt([&] { checkLength(limit); });
        }
        attempt([&] { checkVersion(); });
        attempt([&] {
            if (!keepsRows(connection_)) {
                add(
                    QStringLiteral("the tables can lose or invent rows: an identifier that the "
                                   "database does not give, a trigger or the like"));
            }
        });
        attempt([&] {
            report_.folders = count(QStringLiteral("select count(1) from Tree"));
            report_.formulas = count(QStringLiteral("select count(1) from Formula"));
            report_.pictures =
                count(QStringLiteral("select count(*) from Formula where length(Pic) > 0"));
        });
        return std::move(report_);
    }

  private:
    /// Beyond kMostOfAKind in one check the faults are counted only.
    void add(const QString& fault) {
        if (++found_ <= kMostOfAKind) {
            report_.faults.append(onOneLine(fault));
        }
    }

    /// Runs one check. A table that lacks something has been reported by then, and a check that
    /// fails on it adds nothing to that.
    template <class Function>
    void attempt(Function check) {
        found_ = 0;
        try {
            check();
        } catch (const data::Error& error) {
            if (soundStructure_) {
                add(QStringLiteral("the file cannot be read: ") + error.description());
            }
        }
        if (found_ > kMostOfAKind) {
            report_.faults.append(
                QStringLiteral("... and %1 more like that").arg(found_ - kMostOfAKind));
        }
    }

    void addRows(const QString& query) {
        for (auto rs = connection_.query(query); !rs.atEnd(); rs.moveNext()) {
            add(rs.text(0));
        }
    }

    void checkNumbers(const TableShape& shape) {
        for (const QString& column : QString::fromLatin1(shape.columns).split(u',')) {
            addRows(QStringLiteral("select printf('row %d of table %1: its %2 is no whole number "
                                   "of 32 bits', rowid) from %1 where %2 <> cast(%2 as integer) "
                                   "or %2 not between -2147483648 and 2147483647 order by rowid")
                        .arg(QLatin1String(shape.table), column));
        }
    }

    qint32 count(const QString& query) { return connection_.query(query).integer(0); }

    void checkIntegrity() {
        attempt([&] {
            for (const QString& damage : connection_.damages()) {
                add(QStringLiteral("the file is damaged: ") + damage);
            }
        });
    }

    void checkStructure() {
        for (const TableShape& shape : kTableShapes) {
            try {
                const auto rs = connection_.query(QStringLiteral("select * from ") +
                                                  QLatin1String(shape.table));
                for (const QString& column : QString::fromLatin1(shape.columns).split(u',')) {
                    if (rs.column(column) < 0) {
                        soundStructure_ = false;
                        add(QStringLiteral("table %1 has no column %2")
                                .arg(QLatin1String(shape.table), column));
                    }
                }
            } catch (const data::Error& error) {
                soundStructure_ = false;
                add(QStringLiteral("table %1 cannot be read: %2")
                        .arg(QLatin1String(shape.table), error.description()));
            }
        }
    }

    /// Folders that are their own ancestors, each ring once.
    void checkAncestors() {
        std::vector<Inside> pairs;
        for (auto rs = connection_.query(
                 QStringLiteral("select ID,PID from Tree where ID <> 0 and PID <> 0"));
             !rs.atEnd(); rs.moveNext()) {
            pairs.emplace_back(rs.integer(0), rs.integer(1));
        }
        for (const Ring& ring : ringsAmong(std::move(pairs), kMostOfAKind)) {
            add(QStringLiteral("folders are inside themselves: ") +
                ringText(ring, [&](qint32 id) { return folderText(id); }));
        }
    }

    QString folderText(qint32 id) {
        const auto rs = connection_.query(
            QStringLiteral("select printf('%d \"%!.99s\"', ID, Name) from Tree where ID = ?"),
            {id});
        return rs.atEnd() ? QString::number(id) : rs.text(0);
    }

    /// Conditions that a filter has below themselves, each ring once.
    void checkConditionRings() {
        std::vector<Inside> pairs;
        qint32 filter = 0;
        const auto addRings = [&] {
            for (const Ring& ring : ringsAmong(std::exchange(pairs, {}), kMostOfAKind)) {
                ringed_.insert(filter);
                add(QStringLiteral("filter %1: conditions are inside themselves: ").arg(filter) +
                    ringText(ring, [](qint32 id) { return QString::number(id); }));
            }
        };
        for (auto rs = connection_.query(
                 QStringLiteral("select UserID,ID,ParentID from FilterCond where Type in (1,2,3) "
                                "and ParentID is not null order by UserID"));
             !rs.atEnd(); rs.moveNext()) {
            if (rs.integer(0) != filter) {
                addRings();
                filter = rs.integer(0);
            }
            pairs.emplace_back(rs.integer(1), rs.integer(2));
        }
        addRings();
    }

    /// What the rows are, taken together; what is wrong with a single one has been reported.
    void checkConditions() {
        for (FilterReader filters(connection_); filters.next();) {
            const QString filter = QStringLiteral("filter %1: ").arg(filters.filter());
            const StoredCondition stored = conditionFromRows(filters.rows());
            if (!stored.isWhole && !ringed_.contains(filters.filter())) {
                add(filter + QStringLiteral("it is nested too deep or has too many conditions"));
            } else if (stored.isWhole && stored.remarks.isEmpty()) {
                addFaults(filter, stored.tree);
            }
        }
    }

    void addFaults(const QString& filter, const ConditionTree& tree) {
        for (const ConditionFault& fault : conditionFaults(tree)) {
            if (fault.kind != ConditionFaultKind::UnknownType &&
                fault.kind != ConditionFaultKind::NoTerm) {
                (isWarning(fault.kind) ? report_.warnings : report_.faults)
                    .append(onOneLine(filter + conditionFaultText(fault.kind)));
            }
        }
    }

    void checkPictures() {
        for (auto rs = connection_.query(
                 QStringLiteral("select printf('formula %d \"%s\"', ID, Name), ID from Formula "
                                "where length(Pic) > 0 order by ID"));
             !rs.atEnd(); rs.moveNext()) {
            try {
                if (pictureFormatOf(pictureHead(rs.integer(1))) == PictureFormat::None) {
                    add(rs.text(0) + QStringLiteral(": its picture is no bmp, jpg, png or wmf"));
                }
            } catch (const data::Error& error) {
                add(rs.text(0) + QStringLiteral(": its picture cannot be read: ") +
                    error.description());
            }
        }
    }

    QByteArray pictureHead(qint32 formula) {
        data::BlobField field =
            connection_.field(QStringLiteral("Formula"), QStringLiteral("Pic"), formula);
        QByteArray head(std::min(field.size(), qint64{kPictureHead}), Qt::Uninitialized);
        field.getChunk(std::span(head.data(), static_cast<size_t>(head.size())));
        return head;
    }

    void checkLength(const TextLimit& limit) {
        for (auto rs = connection_.query(QLatin1String(limit.query), {limit.limit}); !rs.atEnd();
             rs.moveNext()) {
            if (const qsizetype size = rs.text(1).size(); size > limit.limit) {
                add(rs.text(0) + QStringLiteral(": its %1 has %2 characters, over the limit of %3")
                                     .arg(QLatin1String(limit.what))
                                     .arg(size)
                                     .arg(limit.limit));
            }
        }
    }

    void checkVersion() {
        const auto rs = connection_.query(
            QStringLiteral("select PrptyVal from TableInfo where PrptyName = ? collate nocase"),
            {QStringLiteral("DBVersion")});
        if (rs.atEnd()) {
            add(QStringLiteral("the version record DBVersion is missing"));
        } else if (rs.text(0).trimmed() != QLatin1String(kTemplateVersion)) {
            add(QStringLiteral("the version record DBVersion is \"%1\", not \"%2\"")
                    .arg(rs.text(0), QLatin1String(kTemplateVersion)));
        }
    }

    data::Connection& connection_;
    CheckReport report_;
    std::size_t found_ = 0;  ///< by the check that is running
    QSet<qint32> ringed_;    ///< filters with conditions inside themselves
    bool soundStructure_ = true;
};

}  // namespace

CheckReport checkLibrary(const QString& libraryPath) {
    data::Connection connection;
    std::optional<data::ReadSnapshot> snapshot;
    try {
        connection.open(libraryPath, data::Access::Read);
        snapshot.emplace(connection);
    } catch (const data::Error& error) {
        return {.faults = {onOneLine(QStringLiteral("the file cannot be opened: ") +
                                     error.description())}};
    }
    return Check(connection).run();
}

}  // namespace varo
