#pragma once

#include <memory>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// Asks the server for its devices, with a client that is there for the question alone and never activated,
/// so that it takes no part in the graph.
class JackProber {
 public:
  explicit JackProber(const JackLibrary& library);

  /// The devices; none when there is no server, or when it has not answered 140 ms after it was asked. A
  /// question that is still open is not asked again, and an answer serves for 100 ms. [not-io]
  [[nodiscard]] std::vector<DeviceInfo> devices();

 private:
  struct Question;

  const JackLibrary& library_;
  std::shared_ptr<Question> question_;  // shared with the asking thread, which a hung server keeps
};

}  // namespace tolvane::hal
