// A client of a private PipeWire daemon, with which a test does what users, hardware and session managers do.
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

/// One port, as a test names it.
struct PipeWirePort {
  std::string node;
  bool isInput = false;
  unsigned index = 0;
};

/// Connected from its construction to its destruction. Waits where a result is promised; every failure, and
/// every wait beyond ten seconds, throws std::runtime_error. One thread at a time.
class PipeWireClient {
 public:
  PipeWireClient();
  ~PipeWireClient();
  PipeWireClient(const PipeWireClient&) = delete;
  PipeWireClient& operator=(const PipeWireClient&) = delete;

  /// Makes a node by the adapter factory and waits until it and its ports are there.
  void addNode(const PipeWireProperties& properties);
  void addCard(const PipeWireCard& card);

  /// Has the server destroy the node, and waits until it has gone.
  void removeNode(const std::string& name);
  void removeCard(const PipeWireCard& card);

  /// Links the ports, as soon as both are there, for as long as this client lives.
  void link(const PipeWirePort& from, const PipeWirePort& to);

  /// Sets a value in the server's "settings" or "default" metadata; an empty value removes it.
  void setSetting(const std::string& key, const std::string& value);
  void setDefaultSink(const std::string& nodeName);

  /// The names of our kind of objects that are there now.
  [[nodiscard]] std::vector<std::string> nodeNames();
  /// The names of all nodes that have been there since this client was made.
  [[nodiscard]] std::set<std::string> nodeNamesSoFar();
  [[nodiscard]] unsigned linkCount();

  /// The server's identifier of the node of this name.
  [[nodiscard]] std::uint32_t nodeId(const std::string& name);

  /// Has the server destroy every link, whoever made it.
  void removeLinks();

  /// Waits until the server has handled everything so far.
  void roundTrip();

  /// For what else runs on this connection. Its functions are called with the loop locked.
  [[nodiscard]] pw_core* core() const noexcept;
  [[nodiscard]] pw_thread_loop* loop() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
