#include "library/property_session.h"

#include "library/limits.h"
#include "store/attempt.h"
#include "store/library_connection.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace varo {

namespace {

bool contains(const std::vector<qint32>& ids, qint32 id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

void note(std::vector<qint32>& ids, qint32 id) {
    if (!contains(ids, id)) {
        ids.push_back(id);
    }
}

/// Takes the ids out one by one while `write` succeeds for them; false when it failed for one.
template <class Item, class Write>
bool writeEach(std::vector<Item>& items, Write write) {
    while (!items.empty()) {
        if (!write(items.front())) {
            return false;
        }
        items.erase(items.begin());
    }
    return true;
}

const QString& deletionMessage() {
    static const QString text = QStringLiteral("编辑数据库出错，无法删除用户指定的属性！");
    return text;
}

const QString& additionMessage() {
    static const QString text = QStringLiteral("编辑数据库出错，无法添加用户指定的属性！");
    return text;
}

const QString& renameMessage() {
    static const QString text = QStringLiteral("编辑数据库出错，无法修改用户指定的属性的名称！");
    return text;
}

const QString& relationMessage() {
    static const QString text =
        QStringLiteral("编辑数据库出错，无法修改属性与过滤条件的对应关系！");
    return text;
}

}  // namespace

bool PropertySession::Pending::isEmpty() const {
    return deletions.empty() && droppedFilters.empty() && additions.empty() && renames.empty() &&
           relations.empty();
}

PropertySession::PropertySession(const QString& folder, clsDBFuncs& funcs)
    : funcs_(funcs), backup_(folder) {}

PropertySession::~PropertySession() {
    if (connection_.isOpen()) {
        cancel();
    }
}

QString PropertySession::SetConnection(const QString& folder, const QString& fileName,
                                       const QString& password) {
    if (ConnectLibrary(folder, fileName, connection_, password) &&
        attempt([&] { backup_.make(connection_); })) {
        return {};
    }
    connection_.close();
    return QStringLiteral("无法打开数据库文件：\n%1\n其他程序正在使用这个数据库文件！")
        .arg(normalisedFolder(folder) + fileName);
}

QString PropertySession::InitForm(qint32 nodeID, NodeType nodeType) {
    nodeID_ = nodeID;
    nodeType_ = nodeType;
    std::vector<ListedProperty> read;
    data::Recordset rs;
    const bool done =
        funcs_.GetProperty(nodeID, nodeType, rs, connection_) && attempt([&] {
            for (; !rs.atEnd(); rs.moveNext()) {
                const qint32 id = rs.integer(u"PropID");
                if (read.empty() || read.back().id != id) {
                    read.push_back({id, rs.text(u"PropName"), rs.integer(u"FilterID")});
                }
            }
        });
    if (!done) {
        return QStringLiteral("无法读取“属性”信息，初始化“属性”列表失败！");
    }
    listed_ = std::move(read);
    stored_ = listed_;
    nextId_ = listed_.empty() ? 0 : qint64{listed_.back().id} + 1;
    return {};
}

const ListedProperty* PropertySession::find(qint32 id) const {
    const auto found = std::find_if(listed_.begin(), listed_.end(),
                                    [&](const ListedProperty& each) { return each.id == id; });
    return found == listed_.end() ? nullptr : &*found;
}

ListedProperty* PropertySession::listed(qint32 id) {
    return const_cast<ListedProperty*>(std::as_const(*this).find(id));
}

std::optional<qint32> PropertySession::add() {
    if (nextId_ > std::numeric_limits<qint32>::max()) {
        return std::nullopt;
    }
    const auto id = static_cast<qint32>(nextId_++);
    listed_.push_back({id, QStringLiteral("新属性"), 0});
    pending_.additions.push_back(id);
    return id;
}

PropertySession::Renaming PropertySession::rename(qint32 id, const QString& typed) {
    const QString name = typed.trimmed();
    ListedProperty* property = listed(id);
    if (property == nullptr || name.isEmpty()) {
        return {};
    }
    if (name.size() > kPropertyNameLimit) {
        return {.message = QStringLiteral("用户输入的属性名称的长度超过50个字符！")};
    }
    property->name = name;
    if (!contains(pending_.additions, id)) {
        const auto stored = std::find_if(stored_.begin(), stored_.end(),
                                         [&](const ListedProperty& each) { return each.id == id; });
        std::erase(pending_.renames, id);
        if (stored == stored_.end() || stored->name != name) {
            pending_.renames.push_back(id);
        }
    }
    return {.accepted = true, .message = {}};
}

void PropertySession::remove(qint32 id) {
    const ListedProperty* property = find(id);
    if (property == nullptr) {
        return;
    }
    if (std::erase(pending_.additions, id) == 0) {
        pending_.deletions.push_back({id, property->filter});
    } else if (property->filter != 0) {
        note(pending_.droppedFilters, property->filter);
    }
    std::erase(pending_.renames, id);
    std::erase(pending_.relations, id);
    std::erase_if(listed_, [&](const ListedProperty& each) { return each.id == id; });
}

QStringList PropertySession::namesInUse() {
    QStringList names;
    attempt([&] {
        // Variables too can take their value from a property of the host.
        const QString query = QStringLiteral(
            "Select FieldName As Name From FilterExpressions Union "
            "Select VarMemo From RecentVar Where VarSourceType = 1 Order By Name");
        for (auto rs = connection_.query(query); !rs.atEnd(); rs.moveNext()) {
            if (const QString name = rs.text(0); !name.trimmed().isEmpty()) {
                names.append(name);
            }
        }
    });
    return names;
}

std::optional<StoredCondition> PropertySession::readFilter(qint32 id) {
    const ListedProperty* property = find(id);
    if (property == nullptr || property->filter == 0) {
        return property == nullptr ? std::nullopt : std::optional(StoredCondition());
    }
    return filters_.read(property->filter);
}

/// True when a property of another node is stored with the filter, or another one of the listed
/// ones has it. Throws data::Error.
bool PropertySession::isUsedByAnother(qint32 filter, qint32 id) {
    const auto users = connection_.query(
        QStringLiteral("Select Count(*) From Property Where FilterID = ? And "
                       "Not (Coalesce(NodeID,0) = ? And Coalesce(NodeType,0) = ?)"),
        {filter, nodeID_, static_cast<qint32>(nodeType_)});
    return users.integer(0) > 0 ||
           std::any_of(listed_.begin(), listed_.end(), [&](const ListedProperty& each) {
               return each.id != id && each.filter == filter;
           });
}

bool PropertySession::saveFilter(qint32 id, const ConditionTree& tree) {
    ListedProperty* property = listed(id);
    if (property == nullptr) {
        return false;
    }
    const auto stored = readFilter(id);
    if (stored && stored->isWhole && property->filter != 0 && stored->tree == tree) {
        return true;
    }
    std::optional<qint32> saved;
    const bool done = attempt([&] {
        if (property->filter == 0 || isUsedByAnother(property->filter, id)) {
            saved = filters_.saveNew(tree, lastFilter_);
        } else if (filters_.saveOver(property->filter, tree)) {
            saved = property->filter;
        }
    });
    if (!done || !saved) {
        return false;
    }
    property->filter = *saved;
    lastFilter_ = std::max(lastFilter_, *saved);
    filtersWritten_ = true;
    noteRelation(id);
    backup_.noteLibrary(connection_);
    return true;
}

bool PropertySession::deleteFilter(qint32 id) {
    ListedProperty* property = listed(id);
    if (property == nullptr) {
        return false;
    }
    if (property->filter == 0) {
        return true;
    }
    bool done = false;
    attempt([&] {
        const bool isShared = isUsedByAnother(property->filter, id);
        done = isShared || filters_.remove(property->filter);
        filtersWritten_ = filtersWritten_ || (done && !isShared);
    });
    if (done) {
        property->filter = 0;
        noteRelation(id);
        backup_.noteLibrary(connection_);
    }
    return done;
}

/// The filter of an addition is written with it.
void PropertySession::noteRelation(qint32 id) {
    if (!contains(pending_.additions, id)) {
        note(pending_.relations, id);
    }
}

bool PropertySession::hasChanges() const {
    return !pending_.isEmpty() || filtersWritten_ || commitFailed_;
}

QString PropertySession::commit() {
    Pending left = pending_;
    QString failure;
    const bool committed = attempt([&] {
        data::Transaction transaction(connection_);
        failure = write(left);
        transaction.commit();
    });
    if (committed) {
        pending_ = std::move(left);
    } else if (failure.isEmpty()) {
        failure = firstMessage();
    }
    commitFailed_ = !failure.isEmpty();
    if (commitFailed_ && committed) {
        backup_.noteLibrary(connection_);
    } else if (!commitFailed_) {
        filtersWritten_ = false;
        backup_.discard();
        connection_.close();
    }
    return failure;
}

/// What the user is told when nothing of what is pending could be written.
QString PropertySession::firstMessage() const {
    if (!pending_.deletions.empty() || !pending_.droppedFilters.empty()) {
        return deletionMessage();
    }
    if (!pending_.additions.empty()) {
        return additionMessage();
    }
    return pending_.renames.empty() ? relationMessage() : renameMessage();
}

bool PropertySession::removeUnused(qint32 filter, qint32 id) {
    bool removed = true;
    return filter == 0 ||
           (attempt([&] { removed = isUsedByAnother(filter, id) || filters_.remove(filter); }) &&
            removed);
}

/// Takes out of `pending` what has been written; "" when that is everything.
QString PropertySession::write(Pending& pending) {
    const bool deleted =
        writeEach(pending.deletions,
                  [&](const Deletion& each) {
                      return funcs_.DelProperty(each.id, nodeID_, nodeType_, connection_) &&
                             removeUnused(each.filter, each.id);
                  }) &&
        writeEach(pending.droppedFilters, [&](qint32 filter) { return removeUnused(filter, -1); });
    if (!deleted) {
        return deletionMessage();
    }
    if (!writeEach(pending.additions, [&](qint32 id) {
            const ListedProperty& property = *find(id);
            return funcs_.AddProperty(id, property.name, property.filter, nodeID_, nodeType_,
                                      connection_);
        })) {
        return additionMessage();
    }
    if (!writeEach(pending.renames, [&](qint32 id) {
            return funcs_.RenProperty(id, find(id)->name, nodeID_, nodeType_, connection_);
        })) {
        return renameMessage();
    }
    if (!writeEach(pending.relations, [&](qint32 id) {
            return funcs_.EditRelation(id, find(id)->filter, nodeID_, nodeType_, connection_);
        })) {
        return relationMessage();
    }
    return {};
}

QString PropertySession::cancel() {
    const bool isRestoreWanted = connection_.isOpen() && needsRestore();
    if (!isRestoreWanted) {
        connection_.close();
        return {};
    }
    if (backup_.restore(connection_)) {
        return {};
    }
    return QStringLiteral("回滚数据库失败，无法恢复原有的数据！\n请关闭数据库文件再试！");
}

}  // namespace varo
