// A client of a private PipeWire daemon. With it a test acts as user, hardware and session manager.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/pipewire_server.h"

struct pw_core;
struct pw_thread_loop;

namespace tolvane::test {

/// Identifies one port.
struct PipeWirePort {
  std::string node;
  bool isInput = false;
  unsigned index = 0;
};

/// Connected from construction to destruction. A function that promises a result waits for it. Every failure,
/// and every wait of more than a minute, throws std::runtime_error. Use from one thread at a time.
class PipeWireClient {
 public:
  PipeWireClient();
  ~PipeWireClient();
  PipeWireClient(const PipeWireClient&) = delete;
  PipeWireClient& operator=(const PipeWireClient&) = delete;

  /// Creates a node with the adapter factory and waits until the node and its ports exist.
  void addNode(const PipeWireProperties& properties);
  void addCard(const PipeWireCard& card);
  /// Creates a node and waits until the node exists.
  void addNodeWithoutPorts(const PipeWireProperties& properties);

  /// Waits until the node with these properties has all its ports.
  void awaitPorts(const PipeWireProperties& node);

  /// Waits until the session manager has chosen a default sink.
  void awaitDefaultSink();
  /// The name of the default sink's node; empty without one.
  [[nodiscard]] std::string defaultSink();

  /// Has the server destroy the node and waits until the node is gone.
  void removeNode(const std::string& name);
  void removeCard(const PipeWireCard& card);

  /// Waits until both ports exist, then links them for the client's lifetime.
  void link(const PipeWirePort& from, const PipeWirePort& to);

  /// Makes those of this client's links anew that have not carried audio for a second although both ports are
  /// there. PipeWire before 1.0 may leave links so for ever when a session manager suspends a node.
  void renewPausedLinks();

  /// Sets a value in the server's "settings" or "default" metadata; an empty value removes it.
  void setSetting(const std::string& key, const std::string& value);
  void setDefaultSink(const std::string& nodeName);

  /// The names of the present nodes.
  [[nodiscard]] std::vector<std::string> nodeNames();
  /// The names of all nodes that have existed since this client connected.
  [[nodiscard]] std::set<std::string> nodeNamesSoFar();
  [[nodiscard]] unsigned linkCount();
  /// The number of all links that have existed since this client connected.
  [[nodiscard]] unsigned linksSoFar();

  /// The server's identifier for the node with this name.
  [[nodiscard]] std::uint32_t nodeId(const std::string& name);

  /// Has the server destroy every link, of all clients.
  void removeLinks();
  /// Has the server destroy the links of this port.
  void removeLinksOf(const PipeWirePort& port);

  /// Waits until the server has handled all requests so far.
  void roundTrip();

  /// For other objects on this connection. Lock the loop before calling the library's functions on them.
  [[nodiscard]] pw_core* core() const noexcept;
  [[nodiscard]] pw_thread_loop* loop() const noexcept;

 private:
  class OwnLink;
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
