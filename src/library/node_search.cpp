#include "library/node_search.h"

#include "platform/data/storable_text.h"
#include "store/attempt.h"
#include "store/keys.h"
#include "store/library_connection.h"

#include <algorithm>
#include <utility>

namespace varo {

namespace {

/// `text` as a pattern whose wildcards are not the text's own.
QString pattern(QString text, TextPlace place) {
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'%', QStringLiteral("\\%"));
    text.replace(u'_', QStringLiteral("\\_"));
    return (place == TextPlace::Start ? QString() : QStringLiteral("%")) + text +
           (place == TextPlace::End ? QString() : QStringLiteral("%"));
}

QString tableOf(NodeType kind) {
    return kind == NodeTypeFormula ? QStringLiteral("Formula") : QStringLiteral("Tree");
}

/// Identifiers of the first part of a table that is searched in parts.
constexpr qint64 kFirstPart = 1024;

/// Identifiers of the smallest part, which is searched however long it takes. A join may go through
/// all properties for each part.
qint64 leastPart(const FindCriteria& criteria) {
    return criteria.property.isEmpty() ? 1 : kFirstPart;
}

/// Tells expressions apart, but for one in billions; 0 for "", which many formulas have.
quint32 contentNumber(const QString& expression) {
    return expression.isEmpty() ? 0 : static_cast<quint32>(qHash(expression)) | 1;
}

/// Identifiers have 32 bits; a row with another one cannot be located.
qint32 identifierOf(qint64 number) {
    return static_cast<qint32>(std::clamp<qint64>(number, std::numeric_limits<qint32>::min(),
                                                  std::numeric_limits<qint32>::max()));
}

}  // namespace

bool FindCriteria::canBeSearched() const {
    const bool forBoth = !name.isEmpty() || !property.isEmpty();
    return (inFolders && forBoth) || (inFormulas && (forBoth || !memo.isEmpty()));
}

Statement findStatement(const FindCriteria& criteria, NodeType kind) {
    const bool isFormula = kind == NodeTypeFormula;
    const QString table = tableOf(kind);
    QStringList conditions;
    QStringList values;
    const auto require = [&](const QString& condition, const QString& value) {
        conditions.append(condition);
        values.append(value);
    };
    if (!criteria.name.isEmpty()) {
        require(table + QStringLiteral(".Name Like ? Escape '\\'"),
                pattern(criteria.name, criteria.namePlace));
    }
    if (isFormula && !criteria.memo.isEmpty()) {
        require(QStringLiteral("Formula.Memo Like ? Escape '\\'"),
                pattern(criteria.memo, criteria.memoPlace));
    }
    const bool joins = !criteria.property.isEmpty();
    if (joins) {
        require(QStringLiteral("Property.PropName = ? And Property.NodeType = %1").arg(kind),
                criteria.property);
    }
    if (conditions.isEmpty()) {
        return {};
    }
    QString text = QStringLiteral("Select %1.ID,%1.Name,%1.PID").arg(table);
    text +=
        isFormula ? QStringLiteral(",Formula.Formula From Formula") : QStringLiteral(" From Tree");
    text += (joins ? QStringLiteral(",Property Where ") : QStringLiteral(" Where ")) +
            conditions.join(QStringLiteral(" And "));
    if (joins) {
        text += QStringLiteral(" And %1.ID = Property.NodeID").arg(table);
    }
    return {text, values};
}

QString FindHit::key() const {
    return findKey(id, libraryKey(library), kind);
}

QString FindHit::tag() const {
    return findTag(kind, parentId);
}

bool isStillThere(const FindHit& hit, const QString& shownName) {
    const bool isSameFile = hit.file.isStillThere();
    const bool isFormula = hit.kind == NodeTypeFormula;
    data::Connection connection;
    QString folder;
    QString fileName;
    SplitFilePath(hit.file.path, folder, fileName);
    if (!ConnectLibrary(folder, fileName, connection, QString())) {
        return true;
    }
    bool isThere = true;
    attempt([&] {
        const data::Recordset rows = connection.query(
            isFormula ? QStringLiteral("Select Name,Formula From Formula Where ID = ?")
                      : QStringLiteral("Select Name From Tree Where ID = ?"),
            {hit.id});
        if (rows.atEnd()) {
            isThere = isSameFile && isFormula;
        } else {
            isThere = rows.text(0) == hit.name || rows.text(0) == shownName ||
                      (isSameFile && isFormula && hit.content != 0 &&
                       contentNumber(rows.text(1)) == hit.content);
        }
    });
    return isThere;
}

void FindHits::add(NodeType kind, int library, qint32 id, qint32 parentId, QStringView name,
                   quint32 content) {
    text_ += name;
    rows_.push_back({kind, library, id, parentId, content, text_.size()});
}

void FindHits::append(const FindHits& others) {
    const qsizetype before = text_.size();
    text_ += others.text_;
    for (Row row : others.rows_) {
        row.textEnd += before;
        rows_.push_back(row);
    }
    for (const auto& [library, file] : others.files_) {
        files_[library] = file;
    }
}

void FindHits::clear() {
    rows_.clear();
    text_.truncate(0);  // keeps its memory, as the rows do
    files_.clear();
}

FindHit FindHits::at(std::size_t position) const {
    const Row& row = rows_[position];
    const qsizetype begin = position == 0 ? 0 : rows_[position - 1].textEnd;
    const auto file = files_.find(row.library);
    return {row.kind,
            row.library,
            row.id,
            row.parentId,
            text_.sliced(begin, row.textEnd - begin),
            file == files_.end() ? FileIdentity() : file->second,
            row.content};
}

NodeSearch::NodeSearch(const colFormulaDB& libraries, FindCriteria criteria)
    : criteria_(std::move(criteria)),
      canMatch_(data::isStorable(criteria_.name) && data::isStorable(criteria_.memo) &&
                data::isStorable(criteria_.property)) {
    for (const clsFormulaDB& library : libraries) {
        libraries_.push_back(
            {libraryNumberOf(library.NodeKey), library.FormulaDBPath, library.FormulaDBName});
    }
    if (criteria_.inFolders) {
        kinds_.push_back(NodeTypeFolder);
    }
    if (criteria_.inFormulas) {
        kinds_.push_back(NodeTypeFormula);
    }
    if (!criteria_.canBeSearched()) {
        libraries_.clear();
    }
}

bool NodeSearch::advance(int most, FindHits& hits) {
    if (failure_ != Failure::None || at_ == libraries_.size()) {
        return false;
    }
    if (!connection_.isOpen() && !openLibrary()) {
        return false;
    }
    hits.setFile(libraries_[at_].number, file_);
    patienceEnd_.setRemainingTime(patience_);
    wasInterrupted_ = false;
    if ((rows_.isOpen() || runStatement()) && readRows(most, hits)) {
        if (rows_.atEnd()) {
            endPart();
        }
    } else if (wasInterrupted_) {
        searchInParts();
    } else {
        return fail(Failure::NotRead);
    }
    return at_ < libraries_.size();
}

bool NodeSearch::readRows(int most, FindHits& hits) {
    return attempt([&] {
        for (; !rows_.atEnd() && most > 0; rows_.moveNext()) {
            lastId_ = rows_.integer64(0);
            const qint32 id = identifierOf(lastId_);
            // Without properties each node is one row.
            if (!criteria_.property.isEmpty()) {
                if (listed_.contains(id)) {
                    continue;
                }
                listed_.insert(id);
            }
            const bool isFormula = kinds_[kind_] == NodeTypeFormula;
            hits.add(kinds_[kind_], libraries_[at_].number, id, rows_.integer(2), rows_.text(1),
                     isFormula ? contentNumber(rows_.text(3)) : 0);
            --most;
        }
    });
}

void NodeSearch::pause() {
    if (rows_.isOpen() && !rows_.atEnd()) {
        searchInParts();
    }
}

void NodeSearch::stop() {
    rows_.close();
    connection_.close();
    at_ = libraries_.size();
}

double NodeSearch::fraction() const {
    if (at_ == libraries_.size()) {
        return 1;
    }
    const double ofTable = !rest_ || rest_->last <= rest_->first
                               ? 0
                               : static_cast<double>(rest_->next - rest_->first) /
                                     static_cast<double>(rest_->last - rest_->first + 1);
    const double ofLibrary =
        (static_cast<double>(kind_) + ofTable) / static_cast<double>(kinds_.size());
    return (static_cast<double>(at_) + ofLibrary) / static_cast<double>(libraries_.size());
}

bool NodeSearch::openLibrary() {
    const Library& library = libraries_[at_];
    if (!ConnectLibrary(library.folder, library.fileName, connection_, QString())) {
        return fail(Failure::NotOpened);
    }
    file_ = FileIdentity::of(connection_.path());
    connection_.setInterrupt([this] {
        wasInterrupted_ = patienceEnd_.hasExpired();
        return !wasInterrupted_;
    });
    return true;
}

/// Runs the statement over what has not been searched yet of the table, or over a part of that.
bool NodeSearch::runStatement() {
    const NodeType kind = kinds_[kind_];
    Statement statement = findStatement(criteria_, kind);
    if (statement.text.isEmpty() || !canMatch_) {
        rest_.reset();
        return true;
    }
    if (rest_) {
        const qint64 end =
            rest_->last - rest_->next < rest_->count ? rest_->last : rest_->next + rest_->count - 1;
        statement.text += QStringLiteral(" And %1.ID Between %2 And %3")
                              .arg(tableOf(kind))
                              .arg(rest_->next)
                              .arg(end);
        if (rest_->count <= leastPart(criteria_)) {
            patienceEnd_ = QDeadlineTimer(QDeadlineTimer::Forever);
        }
    }
    statement.text += QStringLiteral(" Order By %1.ID").arg(tableOf(kind));
    const auto find =
        kind == NodeTypeFolder ? &clsDBFuncs::FindShowFolder : &clsDBFuncs::FindShowFormula;
    sinceRun_.start();
    return (funcs_.*find)(statement, rows_, connection_);
}

/// The statement under way is ended. What it has not searched yet is searched part by part.
void NodeSearch::searchInParts() {
    rows_.close();
    if (rest_) {
        rest_->next = std::max(rest_->next, lastId_ + 1);
        rest_->count = wasInterrupted_ ? std::max<qint64>(rest_->count / 4, 1) : rest_->count;
        return;
    }
    const bool read = attempt([&] {
        patienceEnd_ = QDeadlineTimer(QDeadlineTimer::Forever);
        const data::Recordset ends = connection_.query(
            QStringLiteral("Select (Select min(ID) From %1),(Select max(ID) From %1)")
                .arg(tableOf(kinds_[kind_])));
        const qint64 first = ends.integer(0);
        rest_ = {first, first, ends.integer(1), kFirstPart};
    });
    if (!read) {
        fail(Failure::NotRead);
    } else if (lastId_ != kNoId) {
        rest_->next = lastId_ + 1;
    }
}

/// The statement has searched its part of the table, at first all of it.
void NodeSearch::endPart() {
    rows_.close();
    if (!rest_ || rest_->last - rest_->next < rest_->count) {
        nextStatement();
        return;
    }
    rest_->next += rest_->count;
    if (sinceRun_.elapsed() <= patience_.count() / 4) {
        rest_->count *= 2;
    }
}

void NodeSearch::nextStatement() {
    listed_.clear();
    rest_.reset();
    lastId_ = kNoId;
    if (++kind_ == kinds_.size()) {
        kind_ = 0;
        connection_.close();
        ++at_;
    }
}

bool NodeSearch::fail(Failure failure) {
    rows_.close();
    connection_.close();
    failure_ = failure;
    return false;
}

QString messageOf(NodeSearch::Failure failure) {
    switch (failure) {
        case NodeSearch::Failure::None:
            break;
        case NodeSearch::Failure::NotOpened:
            return QStringLiteral("无法打开指定的数据库，不能进行查找操作！");
        case NodeSearch::Failure::NotRead:
            return QStringLiteral("读取数据库失败，无法进行查找操作！");
    }
    return {};
}

}  // namespace varo
