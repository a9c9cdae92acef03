#pragma once

#include "access_bases.h"
#include "chance.h"

namespace varo::fuzz {

/// Changes one thing in an input: what is done, or an edit, which mostly goes to a field of the
/// format and gives it a value of interest.
void changeAccess(AccessInput& input, Chance& chance, const std::vector<AccessBase>& bases);

}  // namespace varo::fuzz
