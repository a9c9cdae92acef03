#pragma once

#include "engine/code.h"
#include "engine/error.h"
#include "engine/variable_table.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace varo::engine {

/// Everything that a parsed formula consists of. Only views: of what belongs to the parser, or of
/// the copy that assemble() makes.
struct Program {
    Code code;  ///< empty when there is an error
    VariableNames names;
    std::span<const Type> types;  ///< of the variables
    Type resultType = Type::Number;
    ErrorCode error = ErrorCode::None;
    std::uint32_t errorPosition = 0;
    std::uint32_t errorArgument = 0;
    std::string_view errorSubject;
};

/// One piece of memory with a Program at its beginning and all that it views behind.
using ProgramBlock = std::unique_ptr<std::byte[]>;

/// Copies `parts` into one piece of memory of its own.
ProgramBlock assemble(const Program& parts);

/// The program in `block`, which is not empty.
const Program& programIn(const ProgramBlock& block);

}  // namespace varo::engine
