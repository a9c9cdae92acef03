#pragma once

#include "engine/instruction.h"

#include <cstddef>

namespace varo::engine {

/// The fast machine evaluates one row without looking at anything but what would stay hidden: a
/// value that is not finite makes the result not finite, too. Each instruction calls the next as
/// its last act, with the accumulator in a register. A compiler turns such a call into a jump;
/// since no compiler has to, only programs run this way whose calls fit on any stack.
inline constexpr std::size_t kMostFastInstructions = 1000;
inline constexpr std::size_t kMostFastTemporaries = 64;

/// The step of an operation; null for those on texts. The step of a program's first instruction,
/// called with finite variables and 0 and 0, gives the value of the program, which is not finite
/// when the evaluation fails.
Instruction::Step fastStep(Opcode opcode);

/// The step of an operation after which only Return follows: it returns at once. For operations
/// that give a number.
Instruction::Step lastFastStep(Opcode opcode);

}  // namespace varo::engine
