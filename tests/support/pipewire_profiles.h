// A sound card with profiles on a private server, as a session manager offers it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/pipewire_client.h"

namespace tolvane::test {

/// Present from construction to destruction. Every failure throws std::runtime_error.
class PipeWireProfiles {
 public:
  /// Offers the card `name` with these profiles, the first of them in use, and waits until it is there.
  PipeWireProfiles(PipeWireClient& client, const std::string& name, std::vector<std::string> profiles);
  ~PipeWireProfiles();
  PipeWireProfiles(const PipeWireProfiles&) = delete;
  PipeWireProfiles& operator=(const PipeWireProfiles&) = delete;

  /// The server's identifier of the card.
  [[nodiscard]] std::uint32_t id() const;

  /// The index of the profile in use, which any client may change.
  [[nodiscard]] int current() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
