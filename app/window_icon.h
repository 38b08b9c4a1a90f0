#pragma once

#include <QIcon>

namespace tolvane {

/// The program's icon, as packaging/icons/tolvane.svg has it, drawn here: the window has it wherever the
/// program lies, installed or not. A QGuiApplication must exist. [main-thread]
[[nodiscard]] QIcon windowIcon();

}  // namespace tolvane
