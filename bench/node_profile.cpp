#include "bench/node_profile.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "bench/profiler_headers.h"
#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::bench {

namespace {

constexpr int kPatienceSeconds = 60;
constexpr int kFinished = 3;  // the status of a node that has finished its cycle

/// The time in which at least one of the nodes is busy.
std::int64_t unionNs(std::vector<FollowerBlock> blocks) {
  std::ranges::sort(blocks, {}, &FollowerBlock::awakeNs);
  std::int64_t sum = 0;
  std::int64_t until = 0;
  for (const FollowerBlock& block : blocks) {
    sum += std::max<std::int64_t>(0, block.finishNs - std::max(block.awakeNs, until));
    until = std::max(until, block.finishNs);
  }
  return sum;
}

}  // namespace

struct NodeProfile::State {
  pw_thread_loop* loop = nullptr;
  pw_registry* registry = nullptr;
  pw_profiler* profiler = nullptr;
  spa_hook registryHook{};
  spa_hook profilerHook{};

  std::vector<std::uint32_t> wantedNodes;
  std::size_t wantedCycles = 0;
  std::vector<std::int64_t> busyNs;
  std::vector<FollowerBlock> cycle;  // the nodes that have finished the current cycle

  void onGlobal(std::uint32_t id, std::string_view type);
  void onProfile(const spa_pod* profile);
  void onFollower(const FollowerBlock& block);
};

void NodeProfile::State::onGlobal(std::uint32_t id, std::string_view type) {
  static const pw_profiler_events kEvents = [] {
    pw_profiler_events events{};
    events.version = PW_VERSION_PROFILER_EVENTS;
    events.profile = [](void* data, const spa_pod* profile) {
      static_cast<State*>(data)->onProfile(profile);
    };
    return events;
  }();
  if (type != PW_TYPE_INTERFACE_Profiler) return;
  profiler = reinterpret_cast<pw_profiler*>(
      hal::pipewire::bind(registry, id, PW_TYPE_INTERFACE_Profiler, PW_VERSION_PROFILER));
  if (profiler != nullptr) addListener(profiler, &profilerHook, &kEvents, this);
}

void NodeProfile::State::onProfile(const spa_pod* profile) {
  readProfile(
      profile, [this] { cycle.clear(); }, [this](const FollowerBlock& block) { onFollower(block); });
  if (busyNs.size() >= wantedCycles) pw_thread_loop_signal(loop, false);
}

void NodeProfile::State::onFollower(const FollowerBlock& block) {
  const bool isWanted = std::ranges::count(wantedNodes, static_cast<std::uint32_t>(block.nodeId)) != 0;
  if (!isWanted || block.status != kFinished || block.finishNs < block.awakeNs) return;
  cycle.push_back(block);
  if (cycle.size() == wantedNodes.size() && busyNs.size() < wantedCycles) busyNs.push_back(unionNs(cycle));
}

NodeProfile::NodeProfile(test::PipeWireClient& client) : state_(std::make_unique<State>()) {
  static const pw_registry_events kEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                       std::uint32_t /*version*/,
                       const spa_dict* /*properties*/) { static_cast<State*>(data)->onGlobal(id, type); };
    return events;
  }();
  state_->loop = client.loop();
  pw_thread_loop_lock(state_->loop);
  // Without it the library does not know the profiler's messages.
  pw_context_load_module(pw_core_get_context(client.core()), PW_EXTENSION_MODULE_PROFILER, nullptr, nullptr);
  state_->registry = hal::pipewire::getRegistry(client.core());
  hal::pipewire::addListener(state_->registry, &state_->registryHook, &kEvents, state_.get());
  pw_thread_loop_unlock(state_->loop);
  client.roundTrip();
  if (state_->profiler == nullptr) throw std::runtime_error("the server has no profiler");
}

NodeProfile::~NodeProfile() {
  pw_thread_loop_lock(state_->loop);
  if (state_->profiler != nullptr) pw_proxy_destroy(reinterpret_cast<pw_proxy*>(state_->profiler));
  pw_proxy_destroy(reinterpret_cast<pw_proxy*>(state_->registry));
  pw_thread_loop_unlock(state_->loop);
}

std::vector<std::int64_t> NodeProfile::busyNs(const std::vector<std::uint32_t>& nodeIds, std::size_t cycles) {
  pw_thread_loop_lock(state_->loop);
  state_->wantedNodes = nodeIds;
  state_->wantedCycles = cycles;
  state_->busyNs.clear();
  timespec deadline{};
  pw_thread_loop_get_time(state_->loop, &deadline, std::int64_t{kPatienceSeconds} * SPA_NSEC_PER_SEC);
  bool isInTime = true;
  while (isInTime && state_->busyNs.size() < cycles) {
    isInTime = pw_thread_loop_timed_wait_full(state_->loop, &deadline) == 0;
  }
  state_->wantedNodes.clear();
  std::vector<std::int64_t> result = std::move(state_->busyNs);
  pw_thread_loop_unlock(state_->loop);
  if (!isInTime) throw std::runtime_error("the profiler does not report the nodes");
  return result;
}

}  // namespace tolvane::bench
