#pragma once

#include <QColor>

namespace tolvane {

/// A grey of this white level, 0 black to 1 white, rounded to the nearest 8-bit level. [any-thread]
[[nodiscard]] QColor calibratedWhite(double white, double alpha = 1.0) noexcept;

/// A colour of these levels, 0 to 1 each, rounded to the nearest 8-bit levels. [any-thread]
[[nodiscard]] QColor calibratedRgb(double red, double green, double blue, double alpha = 1.0) noexcept;

}  // namespace tolvane
