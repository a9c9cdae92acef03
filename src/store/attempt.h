#pragma once

#include "platform/data/error.h"

namespace varo {

/// True when `operation` ran to its end, false when the database failed.
template <class Operation>
bool attempt(Operation operation) {
    try {
        operation();
    } catch (const data::Error&) {
        return false;
    }
    return true;
}

}  // namespace varo
