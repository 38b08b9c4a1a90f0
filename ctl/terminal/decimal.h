// Numbers as text. The decimal mark is always a point: the program never sets the process's numeric locale.
#pragma once

#include <string>

namespace tolvane::ctl {

/// The shortest decimal form that reads back as the same float: "0.1", "1.0", "1e-07", "inf". [not-io]
[[nodiscard]] std::string shortestDecimal(float value);

/// The level of a linear factor or peak in decibels, one digit after the point: "-18.0", "0.0", "-inf" for
/// zero, "inf", "nan". The sign of `linear` does not matter. [not-io]
[[nodiscard]] std::string decibels(float linear);

/// `value` with up to 12 significant digits and no trailing zeros: "48000", "44100.5". [not-io]
[[nodiscard]] std::string plainDecimal(double value);

}  // namespace tolvane::ctl
