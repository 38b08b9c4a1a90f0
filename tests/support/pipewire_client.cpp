#include "support/pipewire_client.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "hal/pipewire/library.h"

namespace tolvane::test {

namespace pipewire = hal::pipewire;

namespace {

constexpr int kPatienceSeconds = 60;

class LoopLock {
 public:
  explicit LoopLock(pw_thread_loop* loop) : loop_(loop) { pw_thread_loop_lock(loop_); }
  ~LoopLock() { pw_thread_loop_unlock(loop_); }
  LoopLock(const LoopLock&) = delete;
  LoopLock& operator=(const LoopLock&) = delete;

 private:
  pw_thread_loop* loop_;
};

std::string textOf(const spa_dict* properties, const char* key) {
  const char* text = properties != nullptr ? spa_dict_lookup(properties, key) : nullptr;
  return text != nullptr ? text : "";
}

std::uint32_t numberOf(const spa_dict* properties, const char* key) {
  const std::string text = textOf(properties, key);
  return text.empty() ? SPA_ID_INVALID : static_cast<std::uint32_t>(std::stoul(text));
}

pw_proxy* create(pw_core* core, const char* factory, const char* type, std::uint32_t version,
                 const PipeWireProperties& properties) {
  std::vector<spa_dict_item> items;
  for (const auto& [key, value] : properties) items.push_back({key.c_str(), value.c_str()});
  const spa_dict dictionary{0, static_cast<std::uint32_t>(items.size()), items.data()};
  return pipewire::createObject(core, factory, type, version, &dictionary);
}

}  // namespace

/// A link that this client has made.
class PipeWireClient::OwnLink {
 public:
  OwnLink(pw_core* core, PipeWireProperties properties) : properties_(std::move(properties)) { make(core); }
  ~OwnLink() { destroy(); }
  OwnLink(const OwnLink&) = delete;
  OwnLink& operator=(const OwnLink&) = delete;

  [[nodiscard]] bool isPaused() const {
    return state_ == PW_LINK_STATE_PAUSED && std::chrono::steady_clock::now() - since_ >= kLongestPause;
  }

  void renew(pw_core* core) {
    destroy();
    make(core);
  }

 private:
  static constexpr std::chrono::seconds kLongestPause{1};

  void make(pw_core* core) {
    static const pw_proxy_events kProxyEvents = [] {
      pw_proxy_events events{};
      events.version = PW_VERSION_PROXY_EVENTS;
      events.removed = [](void* data) { static_cast<OwnLink*>(data)->become(PW_LINK_STATE_UNLINKED); };
      return events;
    }();
    static const pw_link_events kLinkEvents = [] {
      pw_link_events events{};
      events.version = PW_VERSION_LINK_EVENTS;
      events.info = [](void* data, const pw_link_info* info) {
        static_cast<OwnLink*>(data)->become(info->state);
      };
      return events;
    }();
    state_ = PW_LINK_STATE_INIT;
    proxy_ = create(core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, properties_);
    if (proxy_ == nullptr) return;
    pw_proxy_add_listener(proxy_, &proxyHook_, &kProxyEvents, this);
    pipewire::addListener(reinterpret_cast<pw_link*>(proxy_), &linkHook_, &kLinkEvents, this);
  }

  void destroy() {
    if (proxy_ == nullptr) return;
    spa_hook_remove(&proxyHook_);
    spa_hook_remove(&linkHook_);
    pw_proxy_destroy(std::exchange(proxy_, nullptr));
  }

  void become(pw_link_state state) {
    if (state != state_) since_ = std::chrono::steady_clock::now();
    state_ = state;
  }

  PipeWireProperties properties_;
  pw_proxy* proxy_ = nullptr;
  spa_hook proxyHook_{};
  spa_hook linkHook_{};
  pw_link_state state_ = PW_LINK_STATE_INIT;
  std::chrono::steady_clock::time_point since_;
};

struct PipeWireClient::State {
  struct Port {
    std::uint32_t nodeId;
    bool isInput;
    unsigned index;
  };

  pw_thread_loop* loop = nullptr;
  pw_context* context = nullptr;
  pw_core* core = nullptr;
  pw_registry* registry = nullptr;
  spa_hook coreHook{};
  spa_hook registryHook{};
  std::map<std::uint32_t, std::string> nodes;
  std::set<std::string> nodesSoFar;  // names
  std::map<std::uint32_t, Port> ports;
  struct Link {
    std::uint32_t fromPort;
    std::uint32_t toPort;
  };
  std::map<std::uint32_t, Link> links;
  unsigned linksSoFar = 0;
  std::vector<std::unique_ptr<OwnLink>> ownLinks;
  std::map<std::string, pw_proxy*> metadata;
  std::uint32_t defaultMetadata = SPA_ID_INVALID;
  spa_hook metadataHook{};  // of "default"
  std::string defaultSink;
  std::vector<pw_proxy*> made;  // of objects that the server created for us; a proxy may outlive its object
  int answered = -1;

  void onGlobal(std::uint32_t id, const char* type, const spa_dict* properties) {
    const std::string kind = type;
    if (kind == PW_TYPE_INTERFACE_Node) {
      nodes[id] = textOf(properties, PW_KEY_NODE_NAME);
      nodesSoFar.insert(nodes[id]);
    }
    if (kind == PW_TYPE_INTERFACE_Link) {
      links[id] = {numberOf(properties, PW_KEY_LINK_OUTPUT_PORT),
                   numberOf(properties, PW_KEY_LINK_INPUT_PORT)};
      ++linksSoFar;
    }
    if (kind == PW_TYPE_INTERFACE_Port) {
      ports[id] = {numberOf(properties, PW_KEY_NODE_ID), textOf(properties, PW_KEY_PORT_DIRECTION) == "in",
                   numberOf(properties, PW_KEY_PORT_ID)};
    }
    if (kind == PW_TYPE_INTERFACE_Metadata) {
      bindMetadata(id, textOf(properties, PW_KEY_METADATA_NAME));
    }
    pw_thread_loop_signal(loop, false);
  }

  void onGlobalRemove(std::uint32_t id) {
    nodes.erase(id);
    ports.erase(id);
    links.erase(id);
    pw_thread_loop_signal(loop, false);
  }

  /// True if the condition holds within that time. Call with the loop locked.
  [[nodiscard]] bool isWithin(int seconds, const std::function<bool()>& condition) const {
    timespec deadline{};
    pw_thread_loop_get_time(loop, &deadline, std::int64_t{seconds} * SPA_NSEC_PER_SEC);
    while (!condition()) {
      if (pw_thread_loop_timed_wait_full(loop, &deadline) != 0) return false;
    }
    return true;
  }

  /// Call with the loop locked.
  void waitUntil(const std::function<bool()>& condition, const std::string& what) const {
    if (!isWithin(kPatienceSeconds, condition)) throw std::runtime_error("the server has not " + what);
  }

  void roundTripLocked() {
    const int asked = pipewire::sync(core);
    waitUntil([&] { return answered == asked; }, "answered");
  }

  [[nodiscard]] std::optional<std::uint32_t> nodeId(const std::string& name) const {
    for (const auto& [id, nodeName] : nodes) {
      if (nodeName == name) return id;
    }
    return std::nullopt;
  }

  void awaitPorts(const PipeWireProperties& node) const {
    const std::string& name = node.at("node.name");
    const auto channels = std::stoul(node.at("audio.channels"));
    const auto isThere = [&] {
      const auto id = nodeId(name);
      const auto count = std::count_if(ports.begin(), ports.end(),
                                       [&](const auto& entry) { return entry.second.nodeId == id; });
      return id && count == static_cast<std::ptrdiff_t>(2 * channels);
    };
    waitUntil(isThere, "made " + name);
  }

  void bindMetadata(std::uint32_t id, const std::string& name) {
    static const pw_metadata_events kEvents = [] {
      pw_metadata_events events{};
      events.version = PW_VERSION_METADATA_EVENTS;
      events.property = [](void* data, std::uint32_t /*subject*/, const char* key, const char* /*type*/,
                           const char* value) {
        static_cast<State*>(data)->onDefault(key, value);
        return 0;
      };
      return events;
    }();
    pw_proxy* const proxy = pipewire::bind(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA);
    if (const auto old = metadata.find(name); old != metadata.end()) {
      if (name == "default") spa_hook_remove(&metadataHook);
      made.push_back(old->second);
    }
    metadata[name] = proxy;
    if (name == "default") {
      defaultMetadata = id;
      pipewire::addListener(reinterpret_cast<pw_metadata*>(proxy), &metadataHook, &kEvents, this);
    }
  }

  void onDefault(const char* key, const char* value) {
    if (key != nullptr && std::string_view(key) != "default.audio.sink") return;
    // {"name":"..."}: the name stands between the last two quotation marks.
    const std::string text = key != nullptr && value != nullptr ? value : "";
    const std::size_t end = text.rfind('"');
    const std::size_t begin = end == std::string::npos ? end : text.rfind('"', end - 1);
    defaultSink = begin == std::string::npos ? "" : text.substr(begin + 1, end - begin - 1);
    pw_thread_loop_signal(loop, false);
  }

  [[nodiscard]] std::optional<std::uint32_t> portId(const PipeWirePort& wanted) const {
    const auto node = nodeId(wanted.node);
    for (const auto& [id, port] : ports) {
      if (port.nodeId == node && port.isInput == wanted.isInput && port.index == wanted.index) return id;
    }
    return std::nullopt;
  }
};

PipeWireClient::PipeWireClient() : state_(std::make_unique<State>()) {
  static const pw_core_events kCoreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = [](void* data, std::uint32_t /*id*/, int sequence) {
      auto& state = *static_cast<State*>(data);
      state.answered = sequence;
      pw_thread_loop_signal(state.loop, false);
    };
    return events;
  }();
  static const pw_registry_events kRegistryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                       std::uint32_t /*version*/, const spa_dict* properties) {
      static_cast<State*>(data)->onGlobal(id, type, properties);
    };
    events.global_remove = [](void* data, std::uint32_t id) {
      static_cast<State*>(data)->onGlobalRemove(id);
    };
    return events;
  }();
  pw_init(nullptr, nullptr);
  State& state = *state_;
  state.loop = pw_thread_loop_new("test-client", nullptr);
  const spa_dict_item item{PW_KEY_CONFIG_NAME, pipewire::realTimeConfigName(pw_get_library_version())};
  const spa_dict properties{0, 1, &item};
  state.context = pw_context_new(pw_thread_loop_get_loop(state.loop), pw_properties_new_dict(&properties), 0);
  pw_thread_loop_start(state.loop);
  const LoopLock lock(state.loop);
  state.core = pw_context_connect(state.context, nullptr, 0);
  if (state.core == nullptr) throw std::runtime_error("the test's client cannot connect");
  pipewire::addListener(state.core, &state.coreHook, &kCoreEvents, &state);
  state.registry = pipewire::getRegistry(state.core);
  if (state.registry == nullptr) throw std::runtime_error("the test's client has no registry");
  pipewire::addListener(state.registry, &state.registryHook, &kRegistryEvents, &state);
  state.roundTripLocked();
}

PipeWireClient::~PipeWireClient() {
  pw_thread_loop_stop(state_->loop);
  state_->ownLinks.clear();
  if (state_->metadata.contains("default")) spa_hook_remove(&state_->metadataHook);
  for (const auto& [name, proxy] : state_->metadata) state_->made.push_back(proxy);
  state_->made.push_back(reinterpret_cast<pw_proxy*>(state_->registry));
  for (pw_proxy* const proxy : state_->made) {
    if (proxy != nullptr) pw_proxy_destroy(proxy);
  }
  if (state_->core != nullptr) pw_core_disconnect(state_->core);
  pw_context_destroy(state_->context);
  pw_thread_loop_destroy(state_->loop);
}

void PipeWireClient::addNode(const PipeWireProperties& properties) {
  const LoopLock lock(state_->loop);
  state_->made.push_back(
      create(state_->core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, properties));
  state_->awaitPorts(properties);
}

void PipeWireClient::addNodeWithoutPorts(const PipeWireProperties& properties) {
  const LoopLock lock(state_->loop);
  state_->made.push_back(
      create(state_->core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, properties));
  const std::string& name = properties.at("node.name");
  state_->waitUntil([&] { return state_->nodeId(name).has_value(); }, "made " + name);
}

void PipeWireClient::awaitPorts(const PipeWireProperties& node) {
  const LoopLock lock(state_->loop);
  state_->awaitPorts(node);
}

void PipeWireClient::awaitDefaultSink() {
  const LoopLock lock(state_->loop);
  const auto isChosen = [&] { return !state_->defaultSink.empty(); };
  // While one client asks for all values, the server tells nobody else of a new value. So this asks again.
  for (int second = 0; second < kPatienceSeconds && !state_->isWithin(1, isChosen); ++second) {
    if (state_->defaultMetadata != SPA_ID_INVALID) state_->bindMetadata(state_->defaultMetadata, "default");
  }
  if (!isChosen()) throw std::runtime_error("the server has not chosen a default sink");
}

std::string PipeWireClient::defaultSink() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  return state_->defaultSink;
}

void PipeWireClient::addCard(const PipeWireCard& card) {
  for (const PipeWireProperties& node : nodesOf(card)) addNode(node);
}

void PipeWireClient::removeNode(const std::string& name) {
  const LoopLock lock(state_->loop);
  const auto id = state_->nodeId(name);
  if (!id) throw std::runtime_error("there is no node " + name);
  pipewire::destroyGlobal(state_->registry, *id);
  state_->waitUntil([&] { return !state_->nodeId(name); }, "removed " + name);
}

void PipeWireClient::removeCard(const PipeWireCard& card) {
  for (const PipeWireProperties& node : nodesOf(card)) removeNode(node.at("node.name"));
}

void PipeWireClient::link(const PipeWirePort& from, const PipeWirePort& to) {
  const LoopLock lock(state_->loop);
  state_->waitUntil([&] { return state_->portId(from) && state_->portId(to); },
                    "made the ports of " + from.node + " and " + to.node);
  state_->ownLinks.push_back(std::make_unique<OwnLink>(
      state_->core, PipeWireProperties{{"link.output.node", std::to_string(*state_->nodeId(from.node))},
                                       {"link.output.port", std::to_string(*state_->portId(from))},
                                       {"link.input.node", std::to_string(*state_->nodeId(to.node))},
                                       {"link.input.port", std::to_string(*state_->portId(to))},
                                       {"object.linger", "false"}}));
  // One link at a time: libpipewire before 0.3.71 may fail on the server's messages about many links at once.
  state_->roundTripLocked();
}

void PipeWireClient::renewPausedLinks() {
  const LoopLock lock(state_->loop);
  for (const auto& link : state_->ownLinks) {
    if (!link->isPaused()) continue;
    link->renew(state_->core);
    state_->roundTripLocked();
  }
}

void PipeWireClient::setSetting(const std::string& key, const std::string& value) {
  const LoopLock lock(state_->loop);
  pipewire::setProperty(reinterpret_cast<pw_metadata*>(state_->metadata.at("settings")), PW_ID_CORE,
                        key.c_str(), nullptr, value.empty() ? nullptr : value.c_str());
  state_->roundTripLocked();
}

void PipeWireClient::setDefaultSink(const std::string& nodeName) {
  const std::string value = "{\"name\":\"" + nodeName + "\"}";
  const LoopLock lock(state_->loop);
  pipewire::setProperty(reinterpret_cast<pw_metadata*>(state_->metadata.at("default")), PW_ID_CORE,
                        "default.audio.sink", "Spa:String:JSON", value.c_str());
  state_->roundTripLocked();
}

std::vector<std::string> PipeWireClient::nodeNames() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  std::vector<std::string> names;
  for (const auto& [id, name] : state_->nodes) names.push_back(name);
  return names;
}

std::uint32_t PipeWireClient::nodeId(const std::string& name) {
  const LoopLock lock(state_->loop);
  return state_->nodeId(name).value();
}

std::set<std::string> PipeWireClient::nodeNamesSoFar() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  return state_->nodesSoFar;
}

unsigned PipeWireClient::linkCount() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  return static_cast<unsigned>(state_->links.size());
}

unsigned PipeWireClient::linksSoFar() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  return state_->linksSoFar;
}

void PipeWireClient::removeLinks() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  for (const auto& [id, link] : state_->links) pipewire::destroyGlobal(state_->registry, id);
}

void PipeWireClient::removeLinksOf(const PipeWirePort& port) {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
  const auto wanted = state_->portId(port);
  for (const auto& [id, link] : state_->links) {
    if (link.fromPort == wanted || link.toPort == wanted) pipewire::destroyGlobal(state_->registry, id);
  }
  state_->roundTripLocked();
}

void PipeWireClient::roundTrip() {
  const LoopLock lock(state_->loop);
  state_->roundTripLocked();
}

pw_core* PipeWireClient::core() const noexcept {
  return state_->core;
}

pw_thread_loop* PipeWireClient::loop() const noexcept {
  return state_->loop;
}

}  // namespace tolvane::test
