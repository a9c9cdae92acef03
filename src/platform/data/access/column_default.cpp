#include "platform/data/access/column_default.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>

namespace varo::access {

namespace {

using namespace Qt::Literals::StringLiterals;

bool isText(const Column& column) {
    return column.type == FieldType::Text || column.type == FieldType::Memo;
}

bool isNumber(const Column& column) {
    switch (column.type) {
        case FieldType::YesNo:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
        case FieldType::BigInteger:
        case FieldType::Money:
        case FieldType::Single:
        case FieldType::Double:
        case FieldType::Decimal:
            return true;
        default:
            return false;
    }
}

bool isOneOf(const QString& word, std::initializer_list<QLatin1StringView> words) {
    return std::any_of(words.begin(), words.end(), [&](QLatin1StringView each) {
        return word.compare(each, Qt::CaseInsensitive) == 0;
    });
}

/// The text that a literal in quotes stands for: a quote within it is doubled.
std::optional<QString> quotedText(const QString& literal) {
    const QChar quote = literal.front();
    if ((quote != u'"' && quote != u'\'') || literal.size() < 2 || !literal.endsWith(quote)) {
        return std::nullopt;
    }
    QString text;
    for (qsizetype i = 1; i < literal.size() - 1; ++i) {
        if (literal[i] == quote && (++i == literal.size() - 1 || literal[i] != quote)) {
            return std::nullopt;
        }
        text += literal[i];
    }
    return text;
}

/// The present date or time as fieldValue() writes it; a time alone is one of the first day.
std::optional<QString> presentTime(QString function) {
    function.remove(u' ');
    const QDateTime now = QDateTime::currentDateTime();
    if (isOneOf(function, {"Now()"_L1})) {
        return now.toString(u"yyyy-MM-dd HH:mm:ss"_s);
    }
    if (isOneOf(function, {"Date()"_L1})) {
        return now.toString(u"yyyy-MM-dd"_s);
    }
    if (isOneOf(function, {"Time()"_L1})) {
        return u"1899-12-30 "_s + now.toString(u"HH:mm:ss"_s);
    }
    return std::nullopt;
}

}  // namespace

std::optional<Value> defaultValue(const QString& expression, const Column& column) {
    static const QRegularExpression number(u"^[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?$"_s);
    const auto textValue = [](const QString& text) { return Value(Text{text.toUtf8()}); };
    QString literal = expression.trimmed();
    if (literal.startsWith(u'=')) {
        literal = literal.mid(1).trimmed();
    }
    if (literal.isEmpty()) {
        return std::nullopt;
    }
    if (isOneOf(literal, {"Null"_L1})) {
        return Value();
    }
    if (const auto text = quotedText(literal)) {
        return isText(column) || isNumber(column) ? std::optional(textValue(*text)) : std::nullopt;
    }
    if (number.match(literal).hasMatch()) {
        return isText(column) || isNumber(column) ? std::optional(textValue(literal))
                                                  : std::nullopt;
    }
    const bool isYes = isOneOf(literal, {"Yes"_L1, "True"_L1, "On"_L1});
    if (isYes || isOneOf(literal, {"No"_L1, "False"_L1, "Off"_L1})) {
        return isNumber(column) ? std::optional(Value(qint64{isYes ? -1 : 0})) : std::nullopt;
    }
    const auto time = presentTime(literal);
    return time && column.type == FieldType::Date ? std::optional(textValue(*time)) : std::nullopt;
}

}  // namespace varo::access
