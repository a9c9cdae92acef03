#include "library/condition_text.h"

#include "library/limits.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace varo {

namespace {

/// Deepest nesting of parentheses and words that is read; deeper conditions are too deep anyway.
constexpr int kMaxNesting = 500;

bool isWordStart(QChar c) {
    return c.isLetter() || c == u'_';
}

bool isWordPart(QChar c) {
    return c.isLetterOrNumber() || c == u'_';
}

/// The words that are no names.
bool isReserved(const QString& word) {
    static const QStringList words{QStringLiteral("and"), QStringLiteral("or"),
                                   QStringLiteral("not"), QStringLiteral("contains"),
                                   QStringLiteral("equal")};
    return words.contains(word, Qt::CaseInsensitive);
}

/// The length of the number that stands at `at`, 0 when there is none.
qsizetype numberLength(const QString& text, qsizetype at) {
    static const QRegularExpression number(
        QStringLiteral(R"([+-]?(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?)"));
    // The text is well-formed; looking through all of it for every number would take too long.
    const auto match = number.match(text, at, QRegularExpression::NormalMatch,
                                    QRegularExpression::AnchorAtOffsetMatchOption |
                                        QRegularExpression::DontCheckSubjectStringMatchOption);
    return match.hasMatch() ? match.capturedLength() : 0;
}

struct Escape {
    char16_t character;
    char16_t letter;
};
constexpr std::array kEscapes{Escape{u'"', u'"'}, Escape{u'\\', u'\\'}, Escape{u'\n', u'n'},
                              Escape{u'\r', u'r'}, Escape{u'\t', u't'}};

QString quoted(const QString& text) {
    QString result = QStringLiteral("\"");
    for (const QChar c : text) {
        const auto* escape = std::find_if(kEscapes.begin(), kEscapes.end(),
                                          [&](const Escape& each) { return c == each.character; });
        if (escape != kEscapes.end()) {
            result += u'\\';
            result += QChar(escape->letter);
        } else {
            result += c;
        }
    }
    return result + u'"';
}

// Writing

QString nameText(const QString& name) {
    const bool isWord = !name.isEmpty() && isWordStart(name.front()) &&
                        std::all_of(name.begin(), name.end(), isWordPart);
    return isWord && !isReserved(name) ? name : quoted(name);
}

QString termText(const ComparisonTerm& term) {
    const CompareTypeNames& names = *compareTypeNames(term.type);
    const bool isNumber = names.isNumeric && !term.constant.isEmpty() &&
                          numberLength(term.constant, 0) == term.constant.size();
    return QStringLiteral("%1 %2 ").arg(nameText(term.name), names.symbol) +
           (isNumber ? term.constant : quoted(term.constant));
}

QString nodeText(const ConditionNode& node);

QString inParentheses(const QString& text) {
    return u'(' + text + u')';
}

/// A group of two children or more.
bool isChain(const ConditionNode& node) {
    return node.isGroup() && node.children.size() > 1;
}

QString groupText(const ConditionNode& group) {
    if (group.type == ConditionType::Not) {
        const ConditionNode& child = group.children.front();
        return QStringLiteral("not ") +
               (isChain(child) ? inParentheses(nodeText(child)) : nodeText(child));
    }
    const bool isAnd = group.type == ConditionType::And;
    const QString word = isAnd ? QStringLiteral("and") : QStringLiteral("or");
    if (group.children.size() == 1) {
        return word + u' ' + inParentheses(nodeText(group.children.front()));
    }
    QStringList parts;
    for (const ConditionNode& child : group.children) {
        const bool bindsCloser = !isAnd && child.type == ConditionType::And;
        parts.append(isChain(child) && !bindsCloser ? inParentheses(nodeText(child))
                                                    : nodeText(child));
    }
    return parts.join(u' ' + word + u' ');
}

QString nodeText(const ConditionNode& node) {
    return node.isGroup() ? groupText(node) : termText(node.term);
}

// Reading

struct SyntaxError {
    qsizetype at;
    QString message;
};

/// A node with the places in the text where it and those below it begin.
struct PlacedNode {
    ConditionNode node;
    qsizetype at = 0;
    std::vector<PlacedNode> children;
};

class Parser {
  public:
    explicit Parser(const QString& text) : text_(text) { skipBlanks(); }

    PlacedNode run() {
        PlacedNode whole = chain(ConditionType::Or);
        if (at_ < text_.size()) {
            fail(QStringLiteral("expected \"and\", \"or\" or the end of the condition"));
        }
        return whole;
    }

  private:
    [[noreturn]] void fail(const QString& message) const { throw SyntaxError{at_, message}; }

    void skipBlanks() {
        while (at_ < text_.size() && text_[at_].isSpace()) {
            ++at_;
        }
    }

    QString peekWord() const {
        qsizetype end = at_;
        if (end < text_.size() && isWordStart(text_[end])) {
            while (end < text_.size() && isWordPart(text_[end])) {
                ++end;
            }
        }
        return text_.mid(at_, end - at_);
    }

    void skip(qsizetype length) {
        at_ += length;
        skipBlanks();
    }

    bool takeWord(const QString& word) {
        if (peekWord().compare(word, Qt::CaseInsensitive) != 0) {
            return false;
        }
        skip(word.size());
        return true;
    }

    /// Operands joined by `and` or by `or`; one alone stands for itself.
    PlacedNode chain(ConditionType type) {
        const bool isAnd = type == ConditionType::And;
        const QString word = isAnd ? QStringLiteral("and") : QStringLiteral("or");
        const qsizetype start = at_;
        std::vector<PlacedNode> operands;
        do {
            operands.push_back(isAnd ? operand() : chain(ConditionType::And));
        } while (takeWord(word));
        if (operands.size() == 1) {
            return std::move(operands.front());
        }
        return {groupNode(type), start, std::move(operands)};
    }

    PlacedNode operand() {
        if (++nesting_ > kMaxNesting) {
            fail(QStringLiteral("the condition is nested too deep"));
        }
        PlacedNode node = nested();
        --nesting_;
        return node;
    }

    PlacedNode nested() {
        const qsizetype start = at_;
        if (takeWord(QStringLiteral("not"))) {
            return single(ConditionType::Not, start, operand());
        }
        if (takeWord(QStringLiteral("and"))) {
            return single(ConditionType::And, start, parenthesised());
        }
        if (takeWord(QStringLiteral("or"))) {
            return single(ConditionType::Or, start, parenthesised());
        }
        return startsWith(u'(') ? parenthesised() : comparison();
    }

    static PlacedNode single(ConditionType type, qsizetype at, PlacedNode child) {
        PlacedNode group{groupNode(type), at, {}};
        group.children.push_back(std::move(child));
        return group;
    }

    bool startsWith(char16_t c) const { return at_ < text_.size() && text_[at_] == c; }

    PlacedNode parenthesised() {
        take(u'(');
        PlacedNode inner = chain(ConditionType::Or);
        take(u')');
        return inner;
    }

    void take(char16_t c) {
        if (!startsWith(c)) {
            fail(QStringLiteral("expected \"%1\"").arg(QChar(c)));
        }
        skip(1);
    }

    PlacedNode comparison() {
        const qsizetype start = at_;
        if (++comparisons_ > kMaxConditionNodes) {
            fail(conditionFaultText(ConditionFaultKind::TooLarge));
        }
        const QString name = takeName();
        const qint32 type = takeCompareType();
        return {comparisonNode(name, type, takeConstant()), start, {}};
    }

    QString takeName() {
        if (startsWith(u'"')) {
            return takeQuoted();
        }
        const QString word = peekWord();
        if (word.isEmpty() || isReserved(word)) {
            fail(QStringLiteral("expected the name of a property"));
        }
        skip(word.size());
        return word;
    }

    qint32 takeCompareType() {
        const CompareTypeNames* found = nullptr;
        for (const CompareTypeNames& each : compareTypes()) {
            const bool isHere = each.isNumeric
                                    ? QStringView(text_).sliced(at_).startsWith(each.symbol)
                                    : peekWord().compare(each.symbol, Qt::CaseInsensitive) == 0;
            if (isHere && (found == nullptr || each.symbol.size() > found->symbol.size())) {
                found = &each;
            }
        }
        if (found == nullptr) {
            fail(QStringLiteral("expected one of = <> < <= > >= contains equal"));
        }
        skip(found->symbol.size());
        return found->type;
    }

    QString takeConstant() {
        if (startsWith(u'"')) {
            return takeQuoted();
        }
        const qsizetype length = numberLength(text_, at_);
        const qsizetype end = at_ + length;
        if (length == 0 || (end < text_.size() && (isWordPart(text_[end]) || text_[end] == u'.'))) {
            fail(QStringLiteral("expected a number, or a text in double quotes"));
        }
        const QString number = text_.mid(at_, length);
        skip(length);
        return number;
    }

    QString takeQuoted() {
        const qsizetype start = at_;
        QString result;
        for (++at_; at_ < text_.size() && text_[at_] != u'"' && text_[at_] != u'\n'; ++at_) {
            result += text_[at_] == u'\\' ? takeEscape() : text_[at_];
        }
        if (!startsWith(u'"')) {
            at_ = start;
            fail(QStringLiteral("this text has no closing quote"));
        }
        skip(1);
        return result;
    }

    /// The character that an escape stands for; leaves its last character to be passed.
    QChar takeEscape() {
        const QChar letter = at_ + 1 < text_.size() ? text_[at_ + 1] : QChar();
        for (const Escape& escape : kEscapes) {
            if (letter == escape.letter) {
                ++at_;
                return escape.character;
            }
        }
        fail(QStringLiteral(R"(a \ in a text must be followed by " \ n r or t)"));
    }

    const QString& text_;
    qsizetype at_ = 0;
    int nesting_ = 0;
    int comparisons_ = 0;
};

ConditionNode withChildren(const PlacedNode& placed) {
    ConditionNode node = placed.node;
    for (const PlacedNode& child : placed.children) {
        node.children.push_back(withChildren(child));
    }
    return node;
}

/// Where the node at `path` begins; `root` is the only root.
qsizetype placeOf(const PlacedNode& root, const ConditionPath& path) {
    const PlacedNode* node = &root;
    for (std::size_t level = 1; level < path.size(); ++level) {
        node = &node->children[static_cast<std::size_t>(path[level])];
    }
    return node->at;
}

ConditionRemark remarkAt(const QString& text, qsizetype at, const QString& message) {
    const QString before = text.left(at);
    return {message, static_cast<int>(before.count(u'\n')) + 1,
            static_cast<int>(at - before.lastIndexOf(u'\n'))};
}

bool isError(const ConditionFault& fault) {
    return !isWarning(fault.kind);
}

}  // namespace

QString conditionFaultText(ConditionFaultKind kind) {
    static const std::map<ConditionFaultKind, QString> texts{
        {ConditionFaultKind::Empty, QStringLiteral("the condition is empty")},
        {ConditionFaultKind::SeveralRoots,
         QStringLiteral("the condition has several roots, of which the last decides")},
        {ConditionFaultKind::TooLarge, QStringLiteral("the condition has too many parts")},
        {ConditionFaultKind::UnknownType, QStringLiteral("this is neither group nor comparison")},
        {ConditionFaultKind::EmptyGroup, QStringLiteral("this group is empty")},
        {ConditionFaultKind::NotWithoutOne,
         QStringLiteral("not has more than one part, of which the last decides")},
        {ConditionFaultKind::TooDeep, QStringLiteral("the condition is nested too deep")},
        {ConditionFaultKind::NoTerm, QStringLiteral("this comparison has no content")},
        {ConditionFaultKind::NoName, QStringLiteral("the name of a property is empty")},
        {ConditionFaultKind::NoNumber, QStringLiteral("this comparison needs a number")},
        {ConditionFaultKind::MoreThanNumber,
         QStringLiteral("only the number at the start of the constant counts")},
        {ConditionFaultKind::UnknownComparison, QStringLiteral("this comparison is unknown")},
        {ConditionFaultKind::NeverHolds,
         QStringLiteral("blanks around a text, which values are compared without")},
        {ConditionFaultKind::TooLong,
         QStringLiteral("a name or text is longer than %1 characters").arg(kTextLimit)},
        {ConditionFaultKind::NotStorable, QStringLiteral("a name or text cannot be stored")},
    };
    return texts.at(kind);
}

std::optional<QString> conditionText(const ConditionTree& tree) {
    if (std::ranges::any_of(conditionFaults(tree), isError)) {
        return std::nullopt;
    }
    const QString text = nodeText(tree.roots.front());
    const ParsedCondition parsed = parseCondition(text);
    return !parsed.error && parsed.tree == tree ? std::optional(text) : std::nullopt;
}

ParsedCondition parseCondition(const QString& text) {
    try {
        const PlacedNode root = Parser(text).run();
        ParsedCondition parsed{{{withChildren(root)}}, {}, {}};
        for (const ConditionFault& fault : conditionFaults(parsed.tree)) {
            const ConditionRemark remark =
                remarkAt(text, placeOf(root, fault.place), conditionFaultText(fault.kind));
            if (isError(fault)) {
                return {{}, remark, {}};
            }
            parsed.warnings.push_back(remark);
        }
        return parsed;
    } catch (const SyntaxError& error) {
        return {{}, remarkAt(text, error.at, error.message), {}};
    }
}

}  // namespace varo
