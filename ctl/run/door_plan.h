#pragma once

#include <optional>

#include "base/result.h"
#include "ctl/doors/listen_address.h"
#include "ctl/doors/token.h"
#include "ctl/http/door.h"
#include "ctl/run/options.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// The doors that a run is to open.
struct DoorPlan {
  std::optional<ListenAddress> osc;
  std::optional<ListenAddress> http;
  std::optional<http::TlsFiles> tls;  // for HTTP
  std::optional<Token> token;         // for all

  [[nodiscard]] bool isEmpty() const noexcept { return !osc && !http; }
};

/// Checks the options of the doors. Failure (usage): an address is none, one that other machines reach has no
/// token, the token file is not as Token::read() wants it, the certificate comes without the key or the key
/// without the certificate, or the program was built without a door. [not-io]
[[nodiscard]] Result<DoorPlan, Failure> planDoors(const RunOptions& options);

}  // namespace tolvane::ctl
