#pragma once

namespace varo::host {

/// Makes the running application Chinese: its name in the titles of windows, the texts of Qt's own
/// dialogs, and a font that has the characters.
void makeApplicationChinese();

}  // namespace varo::host
