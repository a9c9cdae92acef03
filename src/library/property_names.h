#pragma once

#include "platform/data/connection.h"
#include "store/collections.h"

#include <QStringList>

namespace varo {

/// The names of the properties of all libraries, each once, in the order in which they are met.
struct PropertyNames {
    QStringList ofFolders;
    QStringList ofFormulas;
    QString failure;  ///< what the user is to be told when not all could be read; "" otherwise
};

/// Reads them on a connection of its own, up to the first library that cannot be read.
PropertyNames readPropertyNames(const colFormulaDB& libraries);

/// The names under which conditions and variables of the libraries ask the host for values, each
/// once, sorted. The library that is open on `open` is read through it, also when it is none of
/// `libraries`; the others on a connection of their own. One that cannot be read is
/// left out, one that another program has locked without waiting for it.
QStringList askedNames(const colFormulaDB& libraries, data::Connection& open);

}  // namespace varo
