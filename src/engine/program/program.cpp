#include "engine/program/program.h"

#include <cstring>
#include <new>
#include <type_traits>

namespace varo::engine {
namespace {

static_assert(std::is_trivially_destructible_v<Program>, "a block is released as bytes");
static_assert(sizeof(Program) % alignof(Instruction) == 0, "instructions follow at once");
static_assert(alignof(Program) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

/// Copies arrays one behind the other. They must come in order of falling alignment.
class Writer {
  public:
    explicit Writer(std::byte* at) : at_(at) {}

    template <class T>
    std::span<const T> copy(std::span<const T> from) {
        static_assert(std::is_trivially_copyable_v<T>);
        if (from.empty()) {
            return {};
        }
        std::memcpy(at_, from.data(), from.size_bytes());
        const std::span<const T> copied(std::launder(reinterpret_cast<const T*>(at_)), from.size());
        at_ += from.size_bytes();
        return copied;
    }

    std::string_view copy(std::string_view from) {
        const std::span<const char> copied = copy(std::span<const char>(from));
        return {copied.data(), copied.size()};
    }

  private:
    std::byte* at_;
};

std::size_t bytesOf(const Program& parts) {
    return sizeof(Program) + parts.code.instructions.size_bytes() +
           parts.code.literalSpans.size_bytes() + parts.names.entries.size_bytes() +
           parts.names.slots.size_bytes() + parts.types.size_bytes() + parts.code.literals.size() +
           parts.names.characters.size() + parts.error.subject.size();
}

}  // namespace

ProgramBlock assemble(const Program& parts) {
    ProgramBlock block(new std::byte[bytesOf(parts)]);
    auto* const program = new (block.get()) Program(parts);
    Writer writer(block.get() + sizeof(Program));
    program->code.instructions = writer.copy(parts.code.instructions);
    program->code.literalSpans = writer.copy(parts.code.literalSpans);
    program->names.entries = writer.copy(parts.names.entries);
    program->names.slots = writer.copy(parts.names.slots);
    program->types = writer.copy(parts.types);
    program->code.literals = writer.copy(parts.code.literals);
    program->names.characters = writer.copy(parts.names.characters);
    program->error.subject = writer.copy(parts.error.subject);
    return block;
}

}  // namespace varo::engine
