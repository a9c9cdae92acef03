#pragma once

#include <QString>
#include <QStringView>

#include <span>

namespace varo {

/// How a condition compares the host's value with its constant; the numbers are those stored.
enum CompareType {
    CompareEqual = 0,
    CompareNotEqual = 1,
    CompareLess = 2,
    CompareLessOrEqual = 3,
    CompareGreater = 4,
    CompareGreaterOrEqual = 5,
    CompareContains = 6,
    CompareSameText = 7,
};

/// How a comparison is shown and written.
struct CompareTypeNames {
    CompareType type;
    QString words;   ///< for the user: "大于等于"
    QString symbol;  ///< in a library's text: ">="
    bool isNumeric;  ///< compares numbers, else texts
};

/// All eight in the order of their numbers.
std::span<const CompareTypeNames> compareTypes();

/// The names of one; null for a number that is none of the eight.
const CompareTypeNames* compareTypeNames(qint32 type);

/// What a comparison says of the host's value, blanks around it removed, and the constant.
/// `otherwise` for a number that is none of the eight.
bool compareValues(qint32 type, const QString& value, const QString& constant, bool otherwise);

/// What there is of a number in a constant, blanks around it removed.
enum class NumberText {
    Whole,  ///< it is a number
    Start,  ///< it begins with a number, which is what a comparison of numbers reads
    None,   ///< a comparison of numbers reads 0
};
NumberText numberIn(const QString& constant);

/// The number that a comparison of numbers reads from `constant`.
QString numberReadFrom(const QString& constant);

}  // namespace varo
