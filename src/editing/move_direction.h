#pragma once

namespace varo {

enum class MoveDirection { Up = 1, Down = 2 };

/// What a move adds to the position.
inline constexpr int stepOf(MoveDirection direction) {
    return direction == MoveDirection::Up ? -1 : 1;
}

}  // namespace varo
