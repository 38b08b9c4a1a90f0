#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "support/pipewire_client.h"

namespace tolvane::bench {

/// The busy time of nodes, as the server's profiler reports it: from the moment a node wakes in a cycle until
/// it has finished.
class NodeProfile {
 public:
  /// `client` must outlive the profile.
  explicit NodeProfile(test::PipeWireClient& client);
  ~NodeProfile();
  NodeProfile(const NodeProfile&) = delete;
  NodeProfile& operator=(const NodeProfile&) = delete;

  /// Nanoseconds per cycle in which at least one of the nodes is busy, for the next `cycles` cycles that all
  /// of them have finished. Throws std::runtime_error if there are not that many within a minute.
  [[nodiscard]] std::vector<std::int64_t> busyNs(const std::vector<std::uint32_t>& nodeIds,
                                                 std::size_t cycles);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::bench
