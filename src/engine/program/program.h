#pragma once

#include "engine/error.h"
#include "engine/language/variable_table.h"
#include "engine/machine/instruction.h"
#include "engine/value_type.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string_view>

namespace varo::engine {

/// What is wrong with a formula.
struct Diagnosis {
    ErrorCode code = ErrorCode::None;
    std::uint32_t position = 0;
    std::uint32_t argument = 0;
    std::string_view subject;
};

/// Everything that a parsed formula consists of. Only views: of what belongs to the parser, or of
/// the copy that assemble() makes.
struct Program {
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

    Code code;  ///< empty when there is an error
    /// How many numbers the code needs to run on the fast machine; kNever when it works on texts,
    /// is too large, or there is an error.
    std::size_t numbersWanted;
    VariableNames names;
    std::size_t sourceSize;       ///< of the formula, if the code is for the fast machine
    std::span<const Type> types;  ///< of the variables; empty when all are numbers
    Type resultType;
    Diagnosis error;

    bool isFast() const { return numbersWanted != kNever; }

    /// The formula of a fast program.
    std::string_view source() const { return names.characters.substr(0, sourceSize); }
};

/// One piece of memory with a Program at its beginning and all that it views behind.
using ProgramBlock = std::unique_ptr<std::byte[]>;

/// Copies `parts` into one piece of memory of its own.
ProgramBlock assemble(const Program& parts);

/// The program in `block`, which is not empty.
inline const Program& programIn(const ProgramBlock& block) {
    return *std::launder(reinterpret_cast<const Program*>(block.get()));
}

}  // namespace varo::engine
