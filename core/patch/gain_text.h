// The text of a gain in a patch file.
#pragma once

#include <string>

namespace tolvane {

/// The shortest decimal form of a finite gain that reads back as the same float, whether read directly as a
/// float or read as a double and narrowed: "1.0", "0.1", "-0.0", "1e-45". [not-io]
[[nodiscard]] std::string gainText(float gain);

}  // namespace tolvane
