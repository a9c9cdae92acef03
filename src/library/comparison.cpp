#include "library/comparison.h"

#include "engine/numbers.h"

#include <array>
#include <string>

namespace varo {

std::span<const CompareTypeNames> compareTypes() {
    static const std::array<CompareTypeNames, 8> types{{
        {CompareEqual, QStringLiteral("等于"), QStringLiteral("="), true},
        {CompareNotEqual, QStringLiteral("不等于"), QStringLiteral("<>"), true},
        {CompareLess, QStringLiteral("小于"), QStringLiteral("<"), true},
        {CompareLessOrEqual, QStringLiteral("小于等于"), QStringLiteral("<="), true},
        {CompareGreater, QStringLiteral("大于"), QStringLiteral(">"), true},
        {CompareGreaterOrEqual, QStringLiteral("大于等于"), QStringLiteral(">="), true},
        {CompareContains, QStringLiteral("包含"), QStringLiteral("contains"), false},
        {CompareSameText, QStringLiteral("文本等于"), QStringLiteral("equal"), false},
    }};
    return types;
}

const CompareTypeNames* compareTypeNames(qint32 type) {
    const auto types = compareTypes();
    return type >= 0 && static_cast<std::size_t>(type) < types.size()
               ? &types[static_cast<std::size_t>(type)]
               : nullptr;
}

bool compareValues(qint32 type, const QString& value, const QString& constant, bool otherwise) {
    const double left = engine::leadingNumber(value.toStdString());
    const double right = engine::leadingNumber(constant.toStdString());
    switch (type) {
        case CompareEqual:
            return left == right;
        case CompareNotEqual:
            return left != right;
        case CompareLess:
            return left < right;
        case CompareLessOrEqual:
            return left <= right;
        case CompareGreater:
            return left > right;
        case CompareGreaterOrEqual:
            return left >= right;
        case CompareContains:
            return value.contains(constant);
        case CompareSameText:
            return value == constant;
        default:
            return otherwise;
    }
}

NumberText numberIn(const QString& constant) {
    const std::string text = constant.toStdString();
    if (engine::parseNumber(text)) {
        return NumberText::Whole;
    }
    return engine::startsWithNumber(text) ? NumberText::Start : NumberText::None;
}

QString numberReadFrom(const QString& constant) {
    return QString::fromStdString(engine::shortest(engine::leadingNumber(constant.toStdString())));
}

}  // namespace varo
