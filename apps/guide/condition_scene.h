#pragma once

#include "guide_desk.h"

namespace varo::guide {

/// The property-conditions dialog on a formula, with a condition that has just been tried.
QImage locateConditions(GuideDesk& desk);

}  // namespace varo::guide
