// Takes a sound card over from the sound server that uses it.
#pragma once

#include <string>

#include "base/result.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// Asks for the card of this uid: false if no sound server has such a card. After true the card is listed as
/// a device of its own, until the program ends. Takes up to five seconds. Failure: the server keeps the card,
/// or cannot be asked. [main-thread]
[[nodiscard]] Result<bool, Failure> claimCard(const std::string& uid);

}  // namespace tolvane::ctl
