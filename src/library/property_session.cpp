#include "library/property_session.h"

#include "library/limits.h"
#include "library/property_names.h"
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

QStringList PropertySession::namesInUse(const colFormulaDB& libraries) {
    return askedNames(libraries, connection_);
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

/// Takes note of what has been written; returns what the user is to be told when that fails.
QString PropertySession::noteLibrary() {
    return backup_.noteLibrary(connection_)
               ? QString()
               : QStringLiteral(
                     "修改已经写入数据库文件，但无法更新备份的记录，取消时可能无法恢复"
                     "原有的数据！\n原有数据的备份：\n%1")
                     .arg(backup_.path());
}

PropertySession::Outcome PropertySession::saveFilter(qint32 id, const ConditionTree& tree) {
    const Outcome failed{.message = QStringLiteral("保存过滤条件失败！")};
    ListedProperty* property = listed(id);
    if (property == nullptr) {
        return failed;
    }
    const auto stored = readFilter(id);
    if (stored && stored->isWhole && property->filter != 0 && stored->tree == tree) {
        return {.isDone = true, .message = {}};
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
        return failed;
    }
    property->filter = *saved;
    lastFilter_ = std::max(lastFilter_, *saved);
    filtersWritten_ = true;
    noteRelation(id);
    return {.isDone = true, .message = noteLibrary()};
}

PropertySession::Outcome PropertySession::deleteFilter(qint32 id) {
    ListedProperty* property = listed(id);
    const bool hasFilter = property != nullptr && property->filter != 0;
    bool isShared = false;
    const bool done =
        property != nullptr &&
        (!hasFilter || (attempt([&] { isShared = isUsedByAnother(property->filter, id); }) &&
                        (isShared || filters_.remove(property->filter))));
    if (!done) {
        return {.message = QStringLiteral("删除过滤条件失败！")};
    }
    if (!hasFilter) {
        return {.isDone = true, .message = {}};
    }
    property->filter = 0;
    noteRelation(id);
    if (isShared) {
        return {.isDone = true, .message = {}};
    }
    filtersWritten_ = true;
    return {.isDone = true, .message = noteLibrary()};
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
        backup_.noteLibrary(connection_);  // the user is told of the commit that failed
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
