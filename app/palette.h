// The window's colours and fonts. Everything is drawn in greys of a given white level, with one green.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace tolvane {

/// The dot beside the status line.
[[nodiscard]] QColor runningColor();
[[nodiscard]] QColor stoppedColor();

/// The ring of the control that gets the keys; the matrix has the same around its cell.
[[nodiscard]] QColor focusColor();

/// The dark palette of the whole program, the disabled state included.
[[nodiscard]] QPalette applicationPalette();

/// The size of controls without a font of their own.
inline constexpr int kDefaultFontPixels = 13;

/// The desktop's interface font and its fixed-pitch font, in pixels. A QGuiApplication must exist.
[[nodiscard]] QFont systemFont(int pixels, bool bold = false);
[[nodiscard]] QFont monospacedFont(int pixels);

/// The Fusion style, the palette, the default font and the icon, for the one application object.
/// [main-thread]
void applyLook();

}  // namespace tolvane
