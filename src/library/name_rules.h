#pragma once

#include <QString>

namespace varo {

/// What a name that the user types must comply with, and what the user is told about it.
struct NameRules {
    int limit;  ///< most characters
    QString empty;
    QString tooLong;
    QString notStored;  ///< the library did not take it
};

const NameRules& folderNameRules();
const NameRules& formulaNameRules();
/// Of the text that a library is shown under.
const NameRules& libraryNameRules();

/// Why a name is refused; "" when it complies with the rules. A name of blanks counts as empty.
QString refusal(const NameRules& rules, const QString& name);

}  // namespace varo
