#pragma once

#include <QIcon>

namespace tolvane {

/// The program's icon, the same as packaging/icons/tolvane.svg. Drawn in code, so the window has it even if
/// the program is not installed. A QGuiApplication must exist. [main-thread]
[[nodiscard]] QIcon windowIcon();

}  // namespace tolvane
