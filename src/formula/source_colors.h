#pragma once

#include "store/records.h"

#include <QtGlobal>

namespace varo {

/// Colour of a variable's name by the source of its value, 0x00BBGGRR.
constexpr quint32 nameColorOf(qint32 source) {
    constexpr quint32 kBlack = 0x000000;
    constexpr quint32 kBlue = 0xFF0000;
    constexpr quint32 kRed = 0x0000FF;
    return source == VarSourceProperty ? kBlue : source == VarSourceTable ? kRed : kBlack;
}

}  // namespace varo
