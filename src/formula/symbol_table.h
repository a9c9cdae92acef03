#pragma once

#include "form/form.h"

#include <QStringView>

#include <array>
#include <span>

namespace varo {

/// A button of the symbol palette.
struct SymbolButton {
    QStringView key;  ///< unique on its tool bar
    QStringView toolTip;
    QStringView keystrokes;  ///< what a click types, as ui::typeKeys reads it
    QStringView label;       ///< what the button shows
};

/// A tab of the symbol palette with the buttons of its tool bar, from left to right.
struct SymbolTab {
    QStringView caption;
    QStringView key;
    std::span<const SymbolButton> buttons;
};

/// The tabs in their order; tab i belongs to tool bar i.
const std::array<SymbolTab, kSymbolTabs>& symbolTabs();

}  // namespace varo
