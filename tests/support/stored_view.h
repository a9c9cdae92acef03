#pragma once

#include "support/desk.h"

#include <gtest/gtest.h>

namespace varo::test {

/// Whether tree, list and formula box show what a control that has just been started shows when the
/// same node and formula are selected in it: texts, keys, order and pictures.
testing::AssertionResult showsWhatIsStored(Desk& desk);

}  // namespace varo::test
