#pragma once

#include "engine/machine/instruction.h"

#include <cstddef>
#include <span>

namespace varo::engine {

/// The fast machine evaluates one row without looking at anything but what would stay hidden: a
/// value that is not finite makes the result not finite, too. Each instruction calls the next as
/// its last act, with the accumulator and the first temporary in registers. Optimising compilers
/// turn such a call into a jump; since others need not, programs that run this way are short enough
/// for any stack.
inline constexpr std::size_t kMostFastInstructions = 200;
inline constexpr std::size_t kMostFastTemporaries = 64;
inline constexpr std::size_t kTemporariesInRegisters = 1;

/// Gives every instruction of a program its step; null to those on texts. The step of the first
/// instruction, called with finite variables, room for the temporaries (unless all are in
/// registers) and three times 0, gives the value of the program, which is not finite when the
/// evaluation fails.
void linkFastSteps(std::span<Instruction> program);

}  // namespace varo::engine
