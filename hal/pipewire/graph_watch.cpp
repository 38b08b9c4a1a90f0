#include "hal/pipewire/graph_watch.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "hal/pipewire/properties.h"

namespace tolvane::hal::pipewire {

namespace {

bool isAudioDeviceClass(std::string_view mediaClass) {
  return mediaClass.starts_with("Audio/Sink") || mediaClass.starts_with("Audio/Source") ||
         mediaClass.starts_with("Audio/Duplex");
}

/// The name in the value of a default node, {"name":"..."}; empty if the value is anything else.
std::string defaultNodeName(const char* value) {
  if (value == nullptr) return {};
  spa_json document{};
  spa_json object{};
  spa_json_init(&document, value, std::strlen(value));
  if (spa_json_enter_object(&document, &object) <= 0) return {};
  std::array<char, 1024> text{};
  while (spa_json_get_string(&object, text.data(), static_cast<int>(text.size())) > 0) {
    const bool isName = std::string_view(text.data()) == "name";
    if (isName && spa_json_get_string(&object, text.data(), static_cast<int>(text.size())) > 0) {
      return text.data();
    }
    const char* skipped = nullptr;
    if (isName || spa_json_next(&object, &skipped) <= 0) break;
  }
  return {};
}

/// ALSA's number of the sound card behind a node. Session managers use different properties for it. A node
/// made by hand has only the PCM's name, as in "hw:1,0".
std::optional<int> alsaCardOf(const spa_dict& properties) {
  for (const char* key : {"api.alsa.card", "api.alsa.pcm.card", "alsa.card"}) {
    if (const auto card = numberOf<int>(properties, key)) return card;
  }
  constexpr std::string_view kHardware = "hw:";
  const std::string_view path = textOf(properties, "api.alsa.path");
  const std::size_t at = path.find(kHardware);
  if (at == std::string_view::npos) return std::nullopt;
  const std::string_view rest = path.substr(at + kHardware.size());
  return numberIn<int>(rest.substr(0, rest.find(',')));
}

/// The name that the owner of a port gave its channel. If the owner gave the port no alias, the server makes
/// one, of the node's name and the port's. That alias says no more than the port's name.
std::string_view channelNameOf(const spa_dict& properties) {
  const std::string_view name = textOf(properties, PW_KEY_PORT_NAME);
  const std::string_view alias = textOf(properties, PW_KEY_PORT_ALIAS);
  const bool isServers = alias.ends_with(name) && alias.substr(0, alias.size() - name.size()).ends_with(':');
  if (!alias.empty() && !isServers) return alias;
  if (!name.empty()) return name;
  const std::string_view channel = textOf(properties, PW_KEY_AUDIO_CHANNEL);
  return channel == "UNK" ? std::string_view() : channel;
}

}  // namespace

/// An object whose events we receive.
class GraphWatch::Bound {
 public:
  Bound(GraphWatch& watch, std::uint32_t id, pw_proxy* proxy) : watch_(watch), id_(id), proxy_(proxy) {
    static const pw_proxy_events kEvents = [] {
      pw_proxy_events events{};
      events.version = PW_VERSION_PROXY_EVENTS;
      events.destroy = [](void* data) { static_cast<Bound*>(data)->onDestroy(); };
      return events;
    }();
    if (proxy_ != nullptr) watch_.library_.pw_proxy_add_listener(proxy_, &proxyHook_, &kEvents, this);
  }

  ~Bound() {
    if (proxy_ != nullptr) watch_.library_.pw_proxy_destroy(proxy_);
  }
  Bound(const Bound&) = delete;
  Bound& operator=(const Bound&) = delete;

  void listenAsNode() {
    static const pw_node_events kEvents = [] {
      pw_node_events events{};
      events.version = PW_VERSION_NODE_EVENTS;
      events.info = [](void* data, const pw_node_info* info) {
        auto& self = *static_cast<Bound*>(data);
        self.watch_.onNodeInfo(self.id_, *info);
      };
      return events;
    }();
    if (proxy_ == nullptr) return;
    addListener(reinterpret_cast<pw_node*>(proxy_), &hook_, &kEvents, this);
    listens_ = true;
  }

  void listenAsCard() {
    static const pw_device_events kEvents = [] {
      pw_device_events events{};
      events.version = PW_VERSION_DEVICE_EVENTS;
      events.info = [](void* data, const pw_device_info* info) {
        auto& self = *static_cast<Bound*>(data);
        // The profile in use may be another one.
        if (std::exchange(self.hasAnswered_, true)) self.askForProfiles();
        self.watch_.onCardInfo(self.id_, *info);
      };
      events.param = [](void* data, int /*sequence*/, std::uint32_t kind, std::uint32_t /*index*/,
                        std::uint32_t /*next*/, const spa_pod* param) {
        auto& self = *static_cast<Bound*>(data);
        if (const auto profile = profileIn(param)) self.watch_.onCardProfile(self.id_, kind, *profile);
      };
      return events;
    }();
    if (proxy_ == nullptr) return;
    addListener(reinterpret_cast<pw_device*>(proxy_), &hook_, &kEvents, this);
    listens_ = true;
    askForProfiles();
  }

  using Handler = void (GraphWatch::*)(std::uint32_t subject, const char* key, const char* value);

  void listenAsMetadata(Handler handler) {
    static const pw_metadata_events kEvents = [] {
      pw_metadata_events events{};
      events.version = PW_VERSION_METADATA_EVENTS;
      events.property = [](void* data, std::uint32_t subject, const char* key, const char* /*type*/,
                           const char* value) {
        auto& self = *static_cast<Bound*>(data);
        (self.watch_.*self.handler_)(subject, key, value);
        return 0;
      };
      return events;
    }();
    if (proxy_ == nullptr) return;
    handler_ = handler;
    addListener(reinterpret_cast<pw_metadata*>(proxy_), &hook_, &kEvents, this);
    listens_ = true;
  }

 private:
  /// Possible profiles first: the profile in use completes the answer.
  void askForProfiles() {
    auto* const card = reinterpret_cast<pw_device*>(proxy_);
    enumParams(card, SPA_PARAM_EnumProfile);
    enumParams(card, SPA_PARAM_Profile);
  }

  void onDestroy() {
    if (listens_) spa_hook_remove(&hook_);
    spa_hook_remove(&proxyHook_);
    proxy_ = nullptr;
  }

  GraphWatch& watch_;
  std::uint32_t id_;
  pw_proxy* proxy_;
  spa_hook proxyHook_{};
  spa_hook hook_{};
  bool listens_ = false;
  bool hasAnswered_ = false;
  Handler handler_ = nullptr;
};

const pw_registry_events GraphWatch::kRegistryEvents = [] {
  pw_registry_events events{};
  events.version = PW_VERSION_REGISTRY_EVENTS;
  events.global = [](void* data, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                     std::uint32_t /*version*/, const spa_dict* properties) {
    static_cast<GraphWatch*>(data)->onGlobal(id, type, properties);
  };
  events.global_remove = [](void* data, std::uint32_t id) {
    static_cast<GraphWatch*>(data)->onGlobalRemove(id);
  };
  return events;
}();

GraphWatch::GraphWatch(const Library& library, LoopThread& thread, pw_core* core, Task changed)
    : library_(library), thread_(thread), changed_(std::move(changed)), registry_(getRegistry(core)) {
  if (registry_ != nullptr) addListener(registry_, &registryHook_, &kRegistryEvents, this);
}

GraphWatch::~GraphWatch() {
  bound_.clear();
  if (registry_ == nullptr) return;
  spa_hook_remove(&registryHook_);
  library_.pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
}

void GraphWatch::noteChange() {
  if (std::exchange(changeNoted_, true)) return;
  thread_.post([this, alive = std::weak_ptr<int>(alive_)] {
    if (alive.expired()) return;
    changeNoted_ = false;
    changed_();
  });
}

void GraphWatch::onGlobal(std::uint32_t id, const char* type, const spa_dict* properties) {
  if (type == nullptr || properties == nullptr) return;
  const std::string_view kind = type;
  if (kind == PW_TYPE_INTERFACE_Node) {
    addNode(id, *properties);
  } else if (kind == PW_TYPE_INTERFACE_Port) {
    addPort(id, *properties);
  } else if (kind == PW_TYPE_INTERFACE_Device) {
    addCard(id, *properties);
  } else if (kind == PW_TYPE_INTERFACE_Metadata) {
    addMetadata(id, *properties);
  }
}

void GraphWatch::onGlobalRemove(std::uint32_t id) {
  bound_.erase(id);
  if (graph_.nodes.erase(id) + graph_.ports.erase(id) + graph_.cards.erase(id) != 0) noteChange();
}

void GraphWatch::addNode(std::uint32_t id, const spa_dict& properties) {
  const std::string_view mediaClass = textOf(properties, PW_KEY_MEDIA_CLASS);
  if (!isAudioDeviceClass(mediaClass)) return;
  GraphNode node;
  node.serial = numberOf<std::uint64_t>(properties, PW_KEY_OBJECT_SERIAL).value_or(id);
  node.name = textOf(properties, PW_KEY_NODE_NAME);
  node.description = textOf(properties, PW_KEY_NODE_DESCRIPTION);
  node.mediaClass = mediaClass;
  node.cardId = numberOf<std::uint32_t>(properties, PW_KEY_DEVICE_ID);
  node.seen = std::chrono::steady_clock::now();
  graph_.nodes[id] = std::move(node);
  auto bound =
      std::make_unique<Bound>(*this, id, bind(registry_, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE));
  bound->listenAsNode();
  bound_[id] = std::move(bound);
  noteChange();
}

void GraphWatch::onNodeInfo(std::uint32_t id, const pw_node_info& info) {
  const auto found = graph_.nodes.find(id);
  if (found == graph_.nodes.end()) return;
  GraphNode& node = found->second;
  const GraphNode before = node;
  node.hasAnswered = true;
  if (info.props != nullptr && (info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0) {
    const spa_dict& properties = *info.props;
    node.channels = numberOf<std::uint32_t>(properties, PW_KEY_AUDIO_CHANNELS);
    if (const auto description = textOf(properties, PW_KEY_NODE_DESCRIPTION); !description.empty()) {
      node.description = description;
    }
    node.cardName = textOf(properties, PW_KEY_DEVICE_NAME);
    node.alsaCard = alsaCardOf(properties);
  }
  node.inputPorts = info.n_input_ports;
  node.outputPorts = info.n_output_ports;
  if (node != before) noteChange();
}

void GraphWatch::addCard(std::uint32_t id, const spa_dict& properties) {
  if (textOf(properties, PW_KEY_MEDIA_CLASS) != "Audio/Device") return;
  GraphCard card;
  card.serial = numberOf<std::uint64_t>(properties, PW_KEY_OBJECT_SERIAL).value_or(id);
  card.name = textOf(properties, PW_KEY_DEVICE_NAME);
  card.description = textOf(properties, PW_KEY_DEVICE_DESCRIPTION);
  card.seen = std::chrono::steady_clock::now();
  graph_.cards[id] = std::move(card);
  auto bound =
      std::make_unique<Bound>(*this, id, bind(registry_, id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE));
  bound->listenAsCard();
  bound_[id] = std::move(bound);
  noteChange();
}

void GraphWatch::onCardInfo(std::uint32_t id, const pw_device_info& info) {
  const auto found = graph_.cards.find(id);
  if (found == graph_.cards.end() || (info.change_mask & PW_DEVICE_CHANGE_MASK_PARAMS) == 0) return;
  found->second.hasProfiles =
      std::any_of(info.params, info.params + info.n_params,
                  [](const spa_param_info& param) { return param.id == SPA_PARAM_Profile; });
  noteChange();
}

void GraphWatch::onCardProfile(std::uint32_t id, std::uint32_t kind, const Profile& profile) {
  const auto found = graph_.cards.find(id);
  if (found == graph_.cards.end()) return;
  GraphCard& card = found->second;
  if (kind == SPA_PARAM_Profile) card.profile = profile.index;
  if (kind == SPA_PARAM_EnumProfile && profile.name == "pro-audio") card.proAudioProfile = profile.index;
  noteChange();
}

void GraphWatch::addPort(std::uint32_t id, const spa_dict& properties) {
  const auto nodeId = numberOf<std::uint32_t>(properties, PW_KEY_NODE_ID);
  const auto index = numberOf<std::uint32_t>(properties, PW_KEY_PORT_ID);
  if (!nodeId || !index) return;
  const bool isAudio = textOf(properties, PW_KEY_FORMAT_DSP).find("audio") != std::string_view::npos;
  const auto serial = numberOf<std::uint64_t>(properties, PW_KEY_OBJECT_SERIAL).value_or(id);
  graph_.ports[id] = {serial,
                      *nodeId,
                      textOf(properties, PW_KEY_PORT_DIRECTION) == "in",
                      *index,
                      isAudio,
                      std::string(textOf(properties, PW_KEY_PORT_NAME)),
                      std::string(textOf(properties, PW_KEY_PORT_ALIAS)),
                      std::string(channelNameOf(properties))};
  noteChange();
}

void GraphWatch::addMetadata(std::uint32_t id, const spa_dict& properties) {
  const std::string_view name = textOf(properties, PW_KEY_METADATA_NAME);
  if (name != "default" && name != "settings") return;
  auto bound = std::make_unique<Bound>(*this, id,
                                       bind(registry_, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA));
  bound->listenAsMetadata(name == "default" ? &GraphWatch::onDefault : &GraphWatch::onSetting);
  bound_[id] = std::move(bound);
}

void GraphWatch::onDefault(std::uint32_t subject, const char* key, const char* value) {
  if (subject != PW_ID_CORE) return;
  if (key != nullptr && std::string_view(key) != "default.audio.sink") return;
  graph_.defaultSink = defaultNodeName(key != nullptr ? value : nullptr);
  noteChange();
}

void GraphWatch::onSetting(std::uint32_t subject, const char* key, const char* value) {
  if (subject != PW_ID_CORE || key == nullptr) return;
  const std::string_view setting = key;
  const auto number = numberIn<std::uint32_t>(value != nullptr ? value : "");
  if (!number) return;
  GraphClock& clock = graph_.clock;
  if (setting == "clock.rate") clock.rateHz = *number;
  if (setting == "clock.min-quantum") clock.minQuantum = *number;
  if (setting == "clock.max-quantum") clock.maxQuantum = *number;
  if (setting == "clock.force-rate") clock.forcedRateHz = *number;
  if (setting == "clock.force-quantum") clock.forcedQuantum = *number;
  noteChange();
}

}  // namespace tolvane::hal::pipewire
