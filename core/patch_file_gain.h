// A gain as a patch file has it.
#pragma once

#include <string>

namespace tolvane {

/// The shortest decimal form of a finite gain that reads back as the same float, be it read as a float at
/// once or as a double and narrowed: "1.0", "0.1", "-0.0", "1e-45". [not-io]
[[nodiscard]] std::string gainText(float gain);

}  // namespace tolvane
