#pragma once

#include "library/property_source.h"
#include "platform/data/connection.h"
#include "store/collections.h"
#include "store/db_funcs.h"

namespace varo {

/// Finds, in every configured library, what carries a property and suits the host's values. It
/// reads the libraries on a connection of its own.
class PropertySearch {
  public:
    /// Everything handed in must outlive this.
    PropertySearch(const colFormulaDB& libraries, PropertySource& properties)
        : libraries_(libraries), properties_(properties) {}

    /// Fills `located` with what carries a property called `property`, library by library, formulas
    /// before folders; what has a condition only if that holds. Returns what the user is to be told
    /// when a step fails, which ends the search with what was found before; "" otherwise.
    QString run(const QString& property, colLocateProp& located);

  private:
    QString search(const QString& property, const clsFormulaDB& library, colLocateProp& located);

    const colFormulaDB& libraries_;
    PropertySource& properties_;
};

}  // namespace varo
