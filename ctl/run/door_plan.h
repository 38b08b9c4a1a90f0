#pragma once

#include <optional>

#include "base/result.h"
#include "ctl/doors/listen_address.h"
#include "ctl/doors/token.h"
#include "ctl/run/options.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// The doors that a run is to open.
struct DoorPlan {
  std::optional<ListenAddress> osc;
  std::optional<Token> token;

  [[nodiscard]] bool isEmpty() const noexcept { return !osc; }
};

/// Checks the options of the doors. Failure (usage): an address is none, one that other machines reach has no
/// token, the token file is not as Token::read() wants it, or the program was built without a door. [not-io]
[[nodiscard]] Result<DoorPlan, Failure> planDoors(const RunOptions& options);

}  // namespace tolvane::ctl
