// A client's node in a PipeWire graph whose ports have properties of the test's choice.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/pipewire_client.h"

namespace tolvane::test {

/// A device's node with ports of one direction, from construction to destruction. It plays nothing.
class PipeWireNamedNode {
 public:
  /// Its media class decides what it is: "Audio/Source" has output ports, "Audio/Sink" input ports. Each port
  /// has these properties and is a channel.
  PipeWireNamedNode(PipeWireClient& client, const std::string& name, const std::string& mediaClass,
                    const std::vector<PipeWireProperties>& ports);
  ~PipeWireNamedNode();
  PipeWireNamedNode(const PipeWireNamedNode&) = delete;
  PipeWireNamedNode& operator=(const PipeWireNamedNode&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
