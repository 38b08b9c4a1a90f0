// The window's colours and fonts. Everything is drawn in greys of a given white level, with one green.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace tolvane {

/// The dot beside the status line.
[[nodiscard]] QColor runningColor();
[[nodiscard]] QColor stoppedColor();

/// The ring of the control with the keyboard focus. The matrix has the same ring around its focus cell.
[[nodiscard]] QColor focusColor();

/// The dark palette of the whole program, the disabled state included.
[[nodiscard]] QPalette applicationPalette();

/// Font size of controls without a font of their own.
inline constexpr int kDefaultFontPixels = 13;

/// The desktop's interface font and its fixed-pitch font, in pixels. A QGuiApplication must exist.
[[nodiscard]] QFont systemFont(int pixels, bool bold = false);
[[nodiscard]] QFont monospacedFont(int pixels);

/// Sets style, palette, default font, tool tips and icon of the application object. [main-thread]
void applyLook();

}  // namespace tolvane
