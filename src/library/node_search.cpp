#include "library/node_search.h"

#include "store/attempt.h"
#include "store/keys.h"
#include "store/library_connection.h"

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

/// Whether a database can hold the text as it stands.
bool canBeStored(const QString& text) {
    return text.isValidUtf16() && !text.contains(QChar(0));
}

}  // namespace

bool FindCriteria::canBeSearched() const {
    const bool forBoth = !name.isEmpty() || !property.isEmpty();
    return (inFolders && forBoth) || (inFormulas && (forBoth || !memo.isEmpty()));
}

Statement findStatement(const FindCriteria& criteria, NodeType kind) {
    const bool isFormula = kind == NodeTypeFormula;
    const QString table = isFormula ? QStringLiteral("Formula") : QStringLiteral("Tree");
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
    QString text = QStringLiteral("Select %1.ID,%1.Name,%1.PID From %1").arg(table);
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

void FindHits::add(NodeType kind, int library, qint32 id, qint32 parentId, QStringView name) {
    text_ += name;
    rows_.push_back({kind, library, id, parentId, text_.size()});
}

void FindHits::append(const FindHits& others) {
    const qsizetype before = text_.size();
    text_ += others.text_;
    for (Row row : others.rows_) {
        row.textEnd += before;
        rows_.push_back(row);
    }
}

void FindHits::clear() {
    rows_.clear();
    text_.clear();
}

FindHit FindHits::at(std::size_t position) const {
    const Row& row = rows_[position];
    const qsizetype begin = position == 0 ? 0 : rows_[position - 1].textEnd;
    return {row.kind, row.library, row.id, row.parentId, text_.sliced(begin, row.textEnd - begin)};
}

NodeSearch::NodeSearch(const colFormulaDB& libraries, FindCriteria criteria)
    : criteria_(std::move(criteria)),
      canMatch_(canBeStored(criteria_.name) && canBeStored(criteria_.memo) &&
                canBeStored(criteria_.property)) {
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
    if (!rows_.isOpen() && !((kind_ > 0 || openLibrary()) && runStatement())) {
        return false;
    }
    const bool read = attempt([&] {
        for (; rows_.isOpen() && !rows_.atEnd() && most > 0; rows_.moveNext()) {
            const qint32 id = rows_.integer(0);
            // Without properties each node is one row.
            if (!criteria_.property.isEmpty()) {
                if (listed_.contains(id)) {
                    continue;
                }
                listed_.insert(id);
            }
            hits.add(kinds_[kind_], libraries_[at_].number, id, rows_.integer(2), rows_.text(1));
            --most;
        }
    });
    if (!read) {
        return fail(Failure::NotRead);
    }
    if (rows_.atEnd()) {
        nextStatement();
    }
    return at_ < libraries_.size();
}

void NodeSearch::stop() {
    rows_.close();
    connection_.close();
    at_ = libraries_.size();
}

bool NodeSearch::openLibrary() {
    const Library& library = libraries_[at_];
    return ConnectLibrary(library.folder, library.fileName, connection_, QString()) ||
           fail(Failure::NotOpened);
}

bool NodeSearch::runStatement() {
    const Statement statement = findStatement(criteria_, kinds_[kind_]);
    if (statement.text.isEmpty() || !canMatch_) {
        return true;
    }
    const auto find = kinds_[kind_] == NodeTypeFolder ? &clsDBFuncs::FindShowFolder
                                                      : &clsDBFuncs::FindShowFormula;
    return (funcs_.*find)(statement, rows_, connection_) || fail(Failure::NotRead);
}

void NodeSearch::nextStatement() {
    rows_.close();
    listed_.clear();
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
