#include "library/condition_text.h"
#include "library/filter_store.h"
#include "library/library_text.h"
#include "library/limits.h"
#include "platform/data/connection.h"
#include "platform/pictures/picture_format.h"
#include "store/library_structure.h"
#include "store/template.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

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

/// Each query gives the faults of one kind, a line of text per row.
constexpr std::array kFaultQueries = {
    R"(select printf('folder %d "%s": its identifier stands for the top level', ID, Name)
       from Tree where ID = 0)",
    R"(select printf('%d folders have the identifier %d', count(*), ID)
       from Tree group by ID having count(*) > 1)",
    R"(select printf('%d formulas have the identifier %d', count(*), ID)
       from Formula group by ID having count(*) > 1)",
    R"(select printf('folder %d "%s": its parent %d does not exist', ID, Name, PID)
       from Tree where PID <> 0 and PID not in (select ID from Tree) order by ID)",
    R"(select printf('formula %d "%s": its folder %d does not exist', ID, Name, PID)
       from Formula where PID <> 0 and PID not in (select ID from Tree) order by ID)",
    R"(select printf('%d folders below folder %d have the order number %d', count(*), PID, OrderID)
       from Tree group by PID, OrderID having count(*) > 1)",
    R"(select printf('%d formulas of folder %d have the order number %d', count(*), PID, OrderID)
       from Formula group by PID, OrderID having count(*) > 1)",
    R"(select printf('formula %d "%s": its picture type is %d', ID, Name, PicType)
       from Formula where PicType not in (0, 2) order by ID)",
    R"(select printf('formula %d "%s": its picture type is 2 without a picture', ID, Name)
       from Formula where PicType = 2 and coalesce(length(Pic), 0) = 0 order by ID)",
    R"(select printf('formula %d "%s": it has a picture with picture type 0', ID, Name)
       from Formula where coalesce(PicType, 0) = 0 and length(Pic) > 0 order by ID)",
    R"(select printf('variable "%s" of formula %d has %d values', VarName, FormulaID, count(*))
       from RecentVar group by VarName collate nocase, FormulaID having count(*) > 1)",
    R"(select printf('%d properties of %s %d have the identifier %d', count(*),
       iif(NodeType = 1, 'folder', 'formula'), NodeID, PropID)
       from Property where NodeType in (1, 2) group by NodeType, NodeID, PropID
       having count(*) > 1)",
    R"(select printf('property %d "%s": its folder %d does not exist', PropID, PropName, NodeID)
       from Property where NodeType = 1 and NodeID <> 0 and NodeID not in (select ID from Tree)
       order by rowid)",
    R"(select printf('property %d "%s": its formula %d does not exist', PropID, PropName, NodeID)
       from Property where NodeType = 2 and NodeID not in (select ID from Formula) order by rowid)",
    R"(select printf('property %d "%s": its node type is %d', PropID, PropName, NodeType)
       from Property where coalesce(NodeType, 0) not in (1, 2) order by rowid)",
    R"(select printf('property %d "%s": its filter %d has no conditions', PropID, PropName, FilterID)
       from Property where FilterID <> 0 and FilterID not in (select UserID from FilterCond)
       order by rowid)",
    R"(select printf('condition %d of filter %d: its parent %d does not exist', ID, UserID, ParentID)
       from FilterCond as Child where ParentID <> 0 and not exists (select 1 from FilterCond as Above
       where Above.UserID = Child.UserID and Above.ID = Child.ParentID) order by rowid)",
    R"(select printf('condition %d of filter %d: its parent %d is a comparison', Child.ID,
       Child.UserID, Child.ParentID) from FilterCond as Child join FilterCond as Above
       on Above.UserID = Child.UserID and Above.ID = Child.ParentID where Above.Type = 4
       order by Child.rowid)",
    R"(select printf('condition %d of filter %d: it has no comparison', ID, UserID)
       from FilterCond where Type = 4 and not exists (select 1 from FilterExpressions
       where FilterID = UserID and ExpID = FilterCond.ID) order by rowid)",
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
    TextLimit{R"(select printf('folder %d "%s"', ID, Name), Name from Tree
                 where 2 * length(Name) > ? order by ID)",
              "name", kFolderNameLimit},
    TextLimit{R"(select printf('formula %d "%s"', ID, Name), Name from Formula
                 where 2 * length(Name) > ? order by ID)",
              "name", kFormulaNameLimit},
    TextLimit{R"(select printf('formula %d "%s"', ID, Name), Formula from Formula
                 where 2 * length(Formula) > ? order by ID)",
              "expression", kTextLimit},
    TextLimit{R"(select printf('formula %d "%s"', ID, Name), Memo from Formula
                 where 2 * length(Memo) > ? order by ID)",
              "memo", kTextLimit},
    TextLimit{R"(select printf('variable "%s" of formula %d', VarName, FormulaID), [Value]
                 from RecentVar where 2 * length([Value]) > ? order by rowid)",
              "value", kTextLimit},
    TextLimit{R"(select printf('property %d "%s"', PropID, PropName), PropName from Property
                 where 2 * length(PropName) > ? order by rowid)",
              "name", kPropertyNameLimit},
};

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
        attempt([&] { checkAncestors(); });
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
    void add(const QString& fault) { report_.faults.append(onOneLine(fault)); }

    /// Runs one check. A table that lacks something has been reported by then, and a check that
    /// fails on it adds nothing to that.
    template <class Function>
    void attempt(Function check) {
        try {
            check();
        } catch (const data::Error& error) {
            if (soundStructure_) {
                add(QStringLiteral("the file cannot be read: ") + error.description());
            }
        }
    }

    void addRows(const QString& query) {
        for (auto rs = connection_.query(query); !rs.atEnd(); rs.moveNext()) {
            add(rs.text(0));
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

    struct Folder {
        QString name;
        qint32 parent = 0;
        int visit = 0;  ///< the walk that came by, 0: none yet
    };

    /// Folders that are their own ancestors, each ring once.
    void checkAncestors() {
        QHash<qint32, Folder> folders;
        QList<qint32> ids;
        for (auto rs =
                 connection_.query(QStringLiteral("select ID,Name,PID from Tree order by ID"));
             !rs.atEnd(); rs.moveNext()) {
            ids.append(rs.integer(0));
            folders.insert(rs.integer(0), {rs.text(1), rs.integer(2), 0});
        }
        int visit = 0;
        for (const qint32 start : ids) {
            ++visit;
            qint32 id = start;
            auto folder = folders.find(id);
            while (id != 0 && folder != folders.end() && folder->visit == 0) {
                folder->visit = visit;
                id = folder->parent;
                folder = folders.find(id);
            }
            if (id != 0 && folder != folders.end() && folder->visit == visit) {
                addRing(folders, id);
            }
        }
    }

    void addRing(const QHash<qint32, Folder>& folders, qint32 start) {
        const auto named = [&](qint32 id) {
            return QStringLiteral("%1 \"").arg(id) + folders[id].name + u'"';
        };
        QStringList path = {named(start)};
        qint32 id = start;
        do {
            id = folders[id].parent;
            path.prepend(named(id));
        } while (id != start);
        add(QStringLiteral("folders are inside themselves: ") + path.join(QStringLiteral(" > ")));
    }

    /// What the rows are, taken together; what is wrong with a single one has been reported.
    void checkConditions() {
        for (auto rs = connection_.query(
                 QStringLiteral("select distinct UserID from FilterCond order by UserID"));
             !rs.atEnd(); rs.moveNext()) {
            const QString filter = QStringLiteral("filter %1: ").arg(rs.integer(0));
            const StoredCondition stored =
                conditionFromRows(readFilterRows(connection_, rs.integer(0)));
            if (!stored.isWhole) {
                add(filter + QStringLiteral("it contains itself, is nested too deep or has too "
                                            "many conditions"));
            } else if (stored.remarks.isEmpty()) {
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
