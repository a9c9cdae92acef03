#pragma once

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

}  // namespace varo
