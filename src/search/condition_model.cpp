#include "search/condition_model.h"

#include "library/condition_words.h"
#include "library/limits.h"
#include "platform/ui/colors.h"
#include "platform/ui/icons.h"
#include "platform/ui/shown_text.h"
#include "search/condition_commands.h"

#include <QFont>
#include <QGuiApplication>
#include <QIcon>
#include <QMimeData>
#include <QStringList>

#include <algorithm>
#include <array>

namespace varo {

namespace {

constexpr QColor kFaultColor(0xC0, 0x00, 0x00);
constexpr QColor kHoldsColor(0x00, 0x7A, 0x33);

QString pathType() {
    return QStringLiteral("application/x-varo-condition-path");
}

ConditionPath pathIn(const QMimeData& data) {
    ConditionPath path;
    for (const QByteArray& row : data.data(pathType()).split(' ')) {
        path.push_back(row.toInt());
    }
    return path;
}

bool haveSameShape(const std::vector<ConditionNode>& some,
                   const std::vector<ConditionNode>& others) {
    return std::ranges::equal(some, others, [](const ConditionNode& one, const ConditionNode& two) {
        return one.isGroup() == two.isGroup() && haveSameShape(one.children, two.children);
    });
}

/// A kind of group with what it means for those in it.
QString groupText(ConditionType type) {
    const QString words = conditionTypeWords(type);
    switch (type) {
        case ConditionType::And:
            return words + QStringLiteral("（全部成立）");
        case ConditionType::Or:
            return words + QStringLiteral("（至少一个成立）");
        case ConditionType::Not:
            return words + QStringLiteral("（其下不成立）");
        case ConditionType::Comparison:
            break;
    }
    return QStringLiteral("%1类型 %2").arg(words).arg(static_cast<qint32>(type));
}

/// Whether the constant of a comparison is not there though numbers are compared.
bool lacksNumber(const ComparisonTerm& term) {
    const CompareTypeNames* names = compareTypeNames(term.type);
    return (names == nullptr || names->isNumeric) && term.constant.trimmed().isEmpty();
}

QString nameText(const ConditionNode& node) {
    if (!node.hasTerm) {
        return QStringLiteral("（没有内容的比较）");
    }
    return node.term.name.trimmed().isEmpty() ? QStringLiteral("（未填名称）") : node.term.name;
}

QString constantText(const ComparisonTerm& term) {
    if (lacksNumber(term)) {
        return QStringLiteral("（未填数值）");
    }
    return term.constant.isEmpty() ? QStringLiteral("（空文本）") : term.constant;
}

bool isPlaceholder(const ConditionNode& node, int column) {
    return node.type == ConditionType::Comparison &&
           ((column == ConditionModel::SubjectColumn && node.term.name.trimmed().isEmpty()) ||
            (column == ConditionModel::ConstantColumn && node.hasTerm &&
             constantText(node.term) != node.term.constant));
}

QColor readableColor(const QColor& color) {
    return ui::readable(color, QGuiApplication::palette());
}

}  // namespace

void ConditionModel::show(const ConditionTree& tree) {
    if (tree == tree_ && !entries_.empty()) {
        return;
    }
    const bool reshapes = !haveSameShape(tree.roots, tree_.roots);
    if (reshapes) {
        beginResetModel();
    }
    tree_ = tree;
    faults_.clear();
    marks_.clear();
    entries_.clear();
    roots_.clear();
    addEntries(tree_.roots, -1);
    if (reshapes) {
        endResetModel();
    } else {
        marksChanged();
    }
}

void ConditionModel::addEntries(const std::vector<ConditionNode>& nodes, int parent) {
    int row = 0;
    for (const ConditionNode& node : nodes) {
        const auto number = static_cast<int>(entries_.size());
        entries_.push_back({&node, parent, row++});
        (parent < 0 ? roots_ : entries_[static_cast<std::size_t>(parent)].children)
            .push_back(number);
        addEntries(node.children, number);
    }
}

/// Every node is drawn anew.
void ConditionModel::marksChanged() {
    for (std::size_t number = 0; number < entries_.size(); ++number) {
        const int row = entries_[number].row;
        emit dataChanged(createIndex(row, 0, number), createIndex(row, ColumnCount - 1, number));
    }
}

void ConditionModel::showFaults(const std::vector<ConditionFault>& faults) {
    faults_.clear();
    for (const ConditionFault& fault : faults) {
        faults_[fault.place].append(fault.text);
    }
    marksChanged();
}

void ConditionModel::showTrial(const ConditionTrial& trial) {
    marks_ = trial.marks;
    marksChanged();
}

const ConditionNode& ConditionModel::nodeAt(const QModelIndex& index) const {
    return *entries_[index.internalId()].node;
}

ConditionPath ConditionModel::pathOf(const QModelIndex& index) const {
    ConditionPath path;
    for (QModelIndex node = index; node.isValid(); node = node.parent()) {
        path.insert(path.begin(), node.row());
    }
    return path;
}

QModelIndex ConditionModel::indexOf(const ConditionPath& path) const {
    QModelIndex node;
    for (const int row : path) {
        node = index(row, 0, node);
        if (!node.isValid()) {
            return {};
        }
    }
    return node;
}

const std::vector<int>& ConditionModel::childrenOf(const QModelIndex& parent) const {
    return parent.isValid() ? entries_[parent.internalId()].children : roots_;
}

QModelIndex ConditionModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) {
        return {};
    }
    return createIndex(row, column,
                       static_cast<quintptr>(childrenOf(parent)[static_cast<std::size_t>(row)]));
}

QModelIndex ConditionModel::parent(const QModelIndex& index) const {
    const int above = index.isValid() ? entries_[index.internalId()].parent : -1;
    return above < 0 ? QModelIndex()
                     : createIndex(entries_[static_cast<std::size_t>(above)].row, 0,
                                   static_cast<quintptr>(above));
}

int ConditionModel::rowCount(const QModelIndex& parent) const {
    return parent.column() > 0 ? 0 : static_cast<int>(childrenOf(parent).size());
}

int ConditionModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

QVariant ConditionModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return ui::lineOf(textOf(index));
        case Qt::EditRole:
            return index.column() == SubjectColumn ? nodeAt(index).term.name : textOf(index);
        case Qt::ForegroundRole:
            return foreground(index);
        case Qt::FontRole:
            if (index.column() == SubjectColumn && nodeAt(index).isGroup()) {
                QFont bold;
                bold.setBold(true);
                return bold;
            }
            return {};
        case Qt::DecorationRole:
            return index.column() == SubjectColumn && faults_.contains(pathOf(index))
                       ? QVariant(ui::themeIcon(QStringLiteral("dialog-warning")))
                       : QVariant();
        case Qt::ToolTipRole:
        case Qt::AccessibleDescriptionRole: {
            const auto faults = faults_.find(pathOf(index));
            const QString text =
                faults == faults_.end() ? textOf(index) : faults->second.join(u'\n');
            return role == Qt::ToolTipRole ? ui::plainToolTip(text)
                                           : ui::shortened(text, kShownTextLimit);
        }
        default:
            return {};
    }
}

QString ConditionModel::textOf(const QModelIndex& index) const {
    const ConditionNode& node = nodeAt(index);
    if (index.column() == OutcomeColumn) {
        return outcome(index);
    }
    if (node.type != ConditionType::Comparison) {
        return index.column() == SubjectColumn ? groupText(node.type) : QString();
    }
    if (index.column() == SubjectColumn) {
        return nameText(node);
    }
    if (!node.hasTerm) {
        return QString();
    }
    if (index.column() == ConstantColumn) {
        return constantText(node.term);
    }
    const CompareTypeNames* names = compareTypeNames(node.term.type);
    return names == nullptr ? QStringLiteral("未知比较 %1").arg(node.term.type) : names->words;
}

QString ConditionModel::outcome(const QModelIndex& index) const {
    const auto mark = marks_.find(pathOf(index));
    if (mark == marks_.end()) {
        return {};
    }
    const QString holds =
        mark->second.holds ? QStringLiteral("✔ 成立") : QStringLiteral("✘ 不成立");
    const ConditionNode& node = nodeAt(index);
    if (node.type != ConditionType::Comparison || !node.hasTerm) {
        return holds;
    }
    return holds + (mark->second.value.isEmpty()
                        ? QStringLiteral("（没有值）")
                        : QStringLiteral("（值为 %1）")
                              .arg(ui::shortened(mark->second.value, kShownTextLimit)));
}

QVariant ConditionModel::foreground(const QModelIndex& index) const {
    if (index.column() == OutcomeColumn) {
        const auto mark = marks_.find(pathOf(index));
        const bool holds = mark != marks_.end() && mark->second.holds;
        return readableColor(holds ? kHoldsColor : kFaultColor);
    }
    if (faults_.contains(pathOf(index))) {
        return readableColor(kFaultColor);
    }
    if (isPlaceholder(nodeAt(index), index.column())) {
        return QGuiApplication::palette().color(QPalette::PlaceholderText);
    }
    return {};
}

QVariant ConditionModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const std::array<QString, ColumnCount> titles{
        QStringLiteral("属性名称"), QStringLiteral("比较"), QStringLiteral("比较值"),
        QStringLiteral("试算结果")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    return titles.at(static_cast<std::size_t>(section));
}

Qt::ItemFlags ConditionModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return editable_ ? Qt::ItemIsDropEnabled : Qt::NoItemFlags;
    }
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (!editable_) {
        return flags;
    }
    const ConditionNode& node = nodeAt(index);
    flags |= Qt::ItemIsDragEnabled;
    if (node.isGroup()) {
        flags |= Qt::ItemIsDropEnabled;
    }
    const bool isComparison = node.type == ConditionType::Comparison;
    if ((isComparison && index.column() != OutcomeColumn) ||
        (node.isGroup() && index.column() == SubjectColumn)) {
        flags |= Qt::ItemIsEditable;
    }
    return flags;
}

bool ConditionModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) {
        return false;
    }
    const ConditionNode& node = nodeAt(index);
    if (node.isGroup()) {
        emit groupTypeEdited(pathOf(index), static_cast<ConditionType>(value.toInt()));
        return true;
    }
    ComparisonTerm term = node.term;
    if (index.column() == SubjectColumn) {
        // A name with blanks around it would name another property, and cannot be told from it.
        const QString name = value.toString();
        term.name = name == term.name ? name : name.trimmed();
    } else if (index.column() == ComparisonColumn) {
        term.type = value.toInt();
    } else {
        term.constant = value.toString();
    }
    if (term != node.term || !node.hasTerm) {
        emit termEdited(pathOf(index), term);
    }
    return true;
}

QStringList ConditionModel::mimeTypes() const {
    return {pathType()};
}

QMimeData* ConditionModel::mimeData(const QModelIndexList& indexes) const {
    if (indexes.isEmpty()) {
        return nullptr;
    }
    QStringList rows;
    for (const int row : pathOf(indexes.first())) {
        rows.append(QString::number(row));
    }
    auto* data = new QMimeData;
    data->setData(pathType(), rows.join(u' ').toLatin1());
    return data;
}

bool ConditionModel::canDropMimeData(const QMimeData* data, Qt::DropAction action, int, int,
                                     const QModelIndex& parent) const {
    if (!editable_ || action != Qt::MoveAction || !data->hasFormat(pathType())) {
        return false;
    }
    return canDrop(tree_, pathIn(*data), pathOf(parent));
}

bool ConditionModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                  const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent)) {
        return false;
    }
    emit dropped(pathIn(*data), pathOf(parent), row);
    return true;
}

}  // namespace varo
