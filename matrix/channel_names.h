// The texts for channels in tool tips and for assistive technology. The strips show numbers only.
#pragma once

#include <QString>
#include <cstdint>
#include <functional>

#include "matrix/matrix_geometry.h"

namespace tolvane {

/// The name that the owner of a channel gave it, by zero-based index; empty if there is none. An empty
/// function: no channel has a name.
using ChannelNamer = std::function<QString(std::int64_t)>;

/// The text of a channel, counted from one: "In 3" and "Out 7", followed by a blank and its name if it has
/// one: "In 3 capture_AUX2". A name comes from outside: control characters in it become blanks, and a very
/// long one is cut. [main-thread]
[[nodiscard]] QString inputName(std::int64_t row, const ChannelNamer& namer = {});
[[nodiscard]] QString outputName(std::int64_t column, const ChannelNamer& namer = {});

/// The text of a cell: "In 3 → Out 7", or "In 3 capture_AUX2 → Out 7 playback_FL". [main-thread]
[[nodiscard]] QString cellName(const MatrixCell& cell, const ChannelNamer& inputs = {},
                               const ChannelNamer& outputs = {});

}  // namespace tolvane
