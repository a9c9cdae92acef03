#pragma once

#include "engine/error.h"
#include "engine/language/node.h"
#include "engine/language/vocabulary.h"
#include "engine/value_type.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace varo::engine {

/// What is wrong with the meaning of a formula: a code, the place in bytes, and the node's part in
/// it.
struct Misuse {
    ErrorCode code = ErrorCode::None;
    std::uint32_t offset = 0;
    std::uint32_t argument = 0;  ///< the number of a wrong or missing argument
    std::uint32_t size = 0;      ///< bytes of an unknown function's name
    Operator op{};               ///< of a wrong operand
    Function function{};         ///< of a wrong argument
};

/// Tells the types of a formula's variables and of its result, and whether everything is used as
/// what it is.
///
/// Variables that must be of one type because a relation or an If joins them form a class; the
/// first use of any of them decides for all. A class that no use decides is a number.
class TypeInference {
  public:
    /// Goes through `tree`, whose variables are numbered below `variableCount`. Returns the first
    /// misuse in reading order; later ones change nothing.
    Misuse run(const Tree& tree, std::uint32_t variableCount);

    /// After run(): the types found.
    Type variableType(std::uint32_t index);
    Type resultType();

  private:
    /// A class of things of one type. kNumber and kText are the decided ones; kAnything is the type
    /// of what is missing or unknown, which fits everywhere; variable i begins as class
    /// kFirstVariable + i.
    using Class = std::uint32_t;
    static constexpr Class kNumber = 0;
    static constexpr Class kText = 1;
    static constexpr Class kAnything = 2;
    static constexpr Class kFirstVariable = 3;

    Class find(Class member);
    bool join(Class left, Class right);
    void visit(const Node& node);
    void leftOperand(const Node& node);
    void apply(const Node& node);
    void relation(const Node& node);
    void textRelation(const Node& node);
    void numberOperand(const Node& node);
    void argument(const Node& node);
    void call(const Node& node);
    void report(ErrorCode code, const Node& node, std::uint32_t argument = 0);

    std::vector<Class> parents_;
    std::vector<Class> operands_;
    Misuse misuse_;
};

}  // namespace varo::engine
