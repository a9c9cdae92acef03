#pragma once

namespace varo::data {

/// What a file is opened for.
enum class Access { Write, Read };

}  // namespace varo::data
