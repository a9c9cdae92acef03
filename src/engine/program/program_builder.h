#pragma once

#include "engine/program/program.h"

#include <string_view>

namespace varo::engine {

/// Parses `formula`, well-formed UTF-8 below 4 GiB.
ProgramBlock buildProgram(std::string_view formula);

/// The code of a program without errors that does everything in reading order, so that the
/// interpreter finds what goes wrong first. Valid until this thread builds a program or asks again.
Code carefulCode(const Program& program);

}  // namespace varo::engine
