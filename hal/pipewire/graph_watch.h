// Keeps a record of the server's graph and updates it by the server's events.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "hal/pipewire/graph.h"
#include "hal/pipewire/loop_thread.h"

namespace tolvane::hal::pipewire {

/// Use only on the loop thread, or after that thread has ended. Must be destroyed before its connection.
class GraphWatch {
 public:
  /// Calls `changed` soon after changes; changes that come together cause one call.
  GraphWatch(const Library& library, LoopThread& thread, pw_core* core, Task changed);
  ~GraphWatch();
  GraphWatch(const GraphWatch&) = delete;
  GraphWatch& operator=(const GraphWatch&) = delete;

  [[nodiscard]] const Graph& graph() const noexcept { return graph_; }

 private:
  class Bound;

  void onGlobal(std::uint32_t id, const char* type, const spa_dict* properties);
  void onGlobalRemove(std::uint32_t id);
  void onNodeInfo(std::uint32_t id, const pw_node_info& info);
  void onCardInfo(std::uint32_t id, const pw_device_info& info);
  void onCardProfile(std::uint32_t id, std::uint32_t kind, const Profile& profile);
  void onDefault(std::uint32_t subject, const char* key, const char* value);
  void onSetting(std::uint32_t subject, const char* key, const char* value);
  void addNode(std::uint32_t id, const spa_dict& properties);
  void addCard(std::uint32_t id, const spa_dict& properties);
  void addPort(std::uint32_t id, const spa_dict& properties);
  void addMetadata(std::uint32_t id, const spa_dict& properties);
  void noteChange();

  static const pw_registry_events kRegistryEvents;

  const Library& library_;
  LoopThread& thread_;
  Task changed_;
  pw_registry* registry_;
  spa_hook registryHook_{};
  std::map<std::uint32_t, std::unique_ptr<Bound>> bound_;
  Graph graph_;
  bool changeNoted_ = false;
  std::shared_ptr<int> alive_ = std::make_shared<int>();
};

}  // namespace tolvane::hal::pipewire
