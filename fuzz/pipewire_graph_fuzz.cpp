// A PipeWire server that may report anything: objects of any kind under any identifier, with any properties,
// as they come out of the client library's parser. The list of devices made of it must keep its promises. The
// library below is a stand-in: it has no thread and no socket, and calls the driver's listeners directly.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <spa/pod/builder.h>

#include "bytes.h"
#include "hal/pipewire/aggregate_list.h"
#include "hal/pipewire/device_list.h"
#include "hal/pipewire/graph_watch.h"
#include "hal/pipewire/link_end.h"
#include "hal/pipewire/pipewire_headers.h"
#include "hal/support/utf8.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

using namespace hal::pipewire;

/// A loop with one event.
struct FakeLoop {
  spa_loop_utils_methods methods{};
  spa_loop_utils utils{};
  pw_loop loop{};
  spa_source source{};
  spa_source_event_func_t handler = nullptr;
  void* data = nullptr;
  bool isSignalled = false;

  FakeLoop() {
    methods.version = SPA_VERSION_LOOP_UTILS_METHODS;
    methods.add_event = [](void* object, spa_source_event_func_t called, void* with) {
      auto* const self = static_cast<FakeLoop*>(object);
      self->handler = called;
      self->data = with;
      return &self->source;
    };
    methods.signal_event = [](void* object, spa_source*) {
      static_cast<FakeLoop*>(object)->isSignalled = true;
      return 0;
    };
    methods.destroy_source = [](void*, spa_source*) {};
    utils.iface = SPA_INTERFACE_INIT(SPA_TYPE_INTERFACE_LoopUtils, SPA_VERSION_LOOP_UTILS, &methods, this);
    loop.utils = &utils;
  }

  void run() {
    if (std::exchange(isSignalled, false)) handler(data, 1);
  }
};

/// The client's end of a remote object: the registry, a node or the metadata.
struct FakeProxy {
  spa_interface interface {};  // first: the library's macros take the object for one
  spa_hook_list hooks{};
  const pw_proxy_events* proxyEvents = nullptr;
  void* proxyData = nullptr;
  const void* events = nullptr;
  void* data = nullptr;

  FakeProxy(const char* type, const void* methods) {
    interface = SPA_INTERFACE_INIT(type, 0, methods, this);
    spa_hook_list_init(&hooks);
  }

  template <class Events>
  static int listen(void* object, spa_hook* hook, const Events* events, void* data) {
    auto* const self = static_cast<FakeProxy*>(object);
    spa_hook_list_append(&self->hooks, hook, events, data);
    self->events = events;
    self->data = data;
    return 0;
  }
};

/// The server, as the driver reaches it.
class FakeServer {
 public:
  FakeServer() {
    coreMethods_.version = PW_VERSION_CORE_METHODS;
    coreMethods_.get_registry = [](void* object, std::uint32_t, std::size_t) {
      return reinterpret_cast<pw_registry*>(static_cast<FakeServer*>(object)->newRegistry());
    };
    core_ = SPA_INTERFACE_INIT(PW_TYPE_INTERFACE_Core, PW_VERSION_CORE, &coreMethods_, this);
    registryMethods_.version = PW_VERSION_REGISTRY_METHODS;
    registryMethods_.add_listener = FakeProxy::listen<pw_registry_events>;
    registryMethods_.bind = [](void*, std::uint32_t id, const char* type, std::uint32_t,
                               std::size_t) -> void* { return server->bind(id, type); };
    nodeMethods_.version = PW_VERSION_NODE_METHODS;
    nodeMethods_.add_listener = FakeProxy::listen<pw_node_events>;
    cardMethods_.version = PW_VERSION_DEVICE_METHODS;
    cardMethods_.add_listener = FakeProxy::listen<pw_device_events>;
    cardMethods_.enum_params = [](void*, int, std::uint32_t, std::uint32_t, std::uint32_t, const spa_pod*) {
      return 0;
    };
    metadataMethods_.version = PW_VERSION_METADATA_METHODS;
    metadataMethods_.add_listener = FakeProxy::listen<pw_metadata_events>;
    server = this;
  }
  ~FakeServer() { server = nullptr; }
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  pw_core* core() { return reinterpret_cast<pw_core*>(&core_); }

  static void addProxyListener(pw_proxy* proxy, spa_hook* hook, const pw_proxy_events* events, void* data) {
    auto* const self = reinterpret_cast<FakeProxy*>(proxy);
    spa_hook_list_append(&self->hooks, hook, events, data);
    self->proxyEvents = events;
    self->proxyData = data;
  }

  static void destroy(pw_proxy* proxy) {
    auto* const gone = reinterpret_cast<FakeProxy*>(proxy);
    if (gone->proxyEvents != nullptr) gone->proxyEvents->destroy(gone->proxyData);
    std::erase_if(server->proxies_, [&](const auto& entry) { return entry.second.get() == gone; });
  }

  void global(std::uint32_t id, const char* type, const spa_dict* properties) {
    const auto* const events = static_cast<const pw_registry_events*>(proxies_.at(kRegistry)->events);
    events->global(proxies_.at(kRegistry)->data, id, 0, type, 3, properties);
  }

  void globalRemove(std::uint32_t id) {
    const auto* const events = static_cast<const pw_registry_events*>(proxies_.at(kRegistry)->events);
    events->global_remove(proxies_.at(kRegistry)->data, id);
  }

  void nodeInfo(const pw_node_info& info) {
    FakeProxy* const node = newest(info.id, PW_TYPE_INTERFACE_Node);
    if (node != nullptr) static_cast<const pw_node_events*>(node->events)->info(node->data, &info);
  }

  void cardInfo(const pw_device_info& info) {
    FakeProxy* const card = newest(info.id, PW_TYPE_INTERFACE_Device);
    if (card != nullptr) static_cast<const pw_device_events*>(card->events)->info(card->data, &info);
  }

  void cardParam(std::uint32_t id, std::uint32_t kind, const spa_pod* param) {
    FakeProxy* const card = newest(id, PW_TYPE_INTERFACE_Device);
    if (card == nullptr) return;
    static_cast<const pw_device_events*>(card->events)->param(card->data, 0, kind, 0, 0, param);
  }

  void property(std::uint32_t id, std::uint32_t subject, const char* key, const char* value) {
    FakeProxy* const metadata = newest(id, PW_TYPE_INTERFACE_Metadata);
    if (metadata == nullptr) return;
    static_cast<const pw_metadata_events*>(metadata->events)
        ->property(metadata->data, subject, key, "", value);
  }

 private:
  static constexpr std::uint64_t kRegistry = ~std::uint64_t{0};
  static FakeServer* server;

  FakeProxy* newRegistry() {
    auto& made = proxies_[kRegistry];
    made = std::make_unique<FakeProxy>(PW_TYPE_INTERFACE_Registry, &registryMethods_);
    return made.get();
  }

  FakeProxy* bind(std::uint32_t id, const char* type) {
    // Old proxies live until the client destroys them.
    auto& made = proxies_[std::uint64_t{++bound_} << 32U | id];
    made = std::make_unique<FakeProxy>(type, methodsOf(type));
    return made.get();
  }

  [[nodiscard]] const void* methodsOf(std::string_view type) const {
    if (type == PW_TYPE_INTERFACE_Node) return &nodeMethods_;
    if (type == PW_TYPE_INTERFACE_Device) return &cardMethods_;
    require(type == PW_TYPE_INTERFACE_Metadata);
    return &metadataMethods_;
  }

  FakeProxy* newest(std::uint32_t id, const char* type) {
    FakeProxy* found = nullptr;
    for (const auto& [key, proxy] : proxies_) {
      const bool isThis = key != kRegistry && (key & 0xFFFFFFFFU) == id && proxy->events != nullptr;
      if (isThis && std::string_view(proxy->interface.type) == type) found = proxy.get();
    }
    return found;
  }

  pw_core_methods coreMethods_{};
  pw_registry_methods registryMethods_{};
  pw_node_methods nodeMethods_{};
  pw_device_methods cardMethods_{};
  pw_metadata_methods metadataMethods_{};
  spa_interface core_{};
  std::map<std::uint64_t, std::unique_ptr<FakeProxy>> proxies_;
  std::uint32_t bound_ = 0;
};

FakeServer* FakeServer::server = nullptr;
FakeLoop* loopInUse = nullptr;

Library fakeLibrary() {
  Library library;
  library.pw_thread_loop_new = [](const char*, const spa_dict*) {
    return reinterpret_cast<pw_thread_loop*>(loopInUse);
  };
  library.pw_thread_loop_get_loop = [](pw_thread_loop* loop) {
    return &reinterpret_cast<FakeLoop*>(loop)->loop;
  };
  library.pw_thread_loop_stop = [](pw_thread_loop*) {};
  library.pw_thread_loop_destroy = [](pw_thread_loop*) {};
  library.pw_proxy_add_listener = FakeServer::addProxyListener;
  library.pw_proxy_destroy = FakeServer::destroy;
  return library;
}

constexpr std::array<const char*, 20> kKeys = {
    PW_KEY_MEDIA_CLASS, PW_KEY_OBJECT_SERIAL,  PW_KEY_NODE_NAME,    PW_KEY_NODE_DESCRIPTION,
    PW_KEY_DEVICE_ID,   PW_KEY_AUDIO_CHANNELS, PW_KEY_DEVICE_NAME,  PW_KEY_DEVICE_DESCRIPTION,
    PW_KEY_NODE_ID,     PW_KEY_PORT_ID,        PW_KEY_FORMAT_DSP,   PW_KEY_PORT_DIRECTION,
    PW_KEY_PORT_NAME,   PW_KEY_METADATA_NAME,  "api.alsa.card",     "api.alsa.path",
    "alsa.card",        "api.alsa.pcm.card",   "clock.min-quantum", "default.audio.sink"};
constexpr std::array<const char*, 16> kValues = {"Audio/Sink",
                                                 "Audio/Source",
                                                 "Audio/Duplex",
                                                 "Audio/Device",
                                                 "Audio/Sink/Internal",
                                                 "default",
                                                 "settings",
                                                 "in",
                                                 "out",
                                                 "32 bit float mono audio",
                                                 "1",
                                                 "2",
                                                 "4294967295",
                                                 "18446744073709551615",
                                                 "hw:1,0",
                                                 "-1"};
constexpr std::array<const char*, 4> kTypes = {PW_TYPE_INTERFACE_Node, PW_TYPE_INTERFACE_Port,
                                               PW_TYPE_INTERFACE_Device, PW_TYPE_INTERFACE_Metadata};
constexpr std::size_t kPodAlignment = 8;
constexpr std::array<const char*, 3> kProfiles = {"pro-audio", "off", "output:analog-stereo"};
constexpr std::array<const char*, 7> kSettings = {"clock.rate",
                                                  "clock.min-quantum",
                                                  "clock.max-quantum",
                                                  "clock.force-rate",
                                                  "clock.force-quantum",
                                                  "default.audio.sink",
                                                  "other"};

/// One run of the server.
class Run {
 public:
  explicit Run(Bytes bytes) : bytes_(bytes) {
    loopInUse = &loop_;
    thread_ = LoopThread::create(library());
    watch_.emplace(library(), *thread_, server_.core(), [this] { check(); });
  }

  void run() {
    while (!bytes_.isEmpty()) step();
    loop_.run();
    check();
  }

 private:
  static const Library& library() {
    static const Library made = fakeLibrary();
    return made;
  }

  /// A known text, any text, or none. Lives as long as this step.
  template <std::size_t kCount>
  const char* text(const std::array<const char*, kCount>& known) {
    const std::size_t choice = bytes_.below(kCount + 4);
    if (choice < kCount) return known[choice];
    if (choice == kCount) return nullptr;
    return texts_.emplace_back(bytes_.text()).c_str();
  }

  std::uint32_t id() { return bytes_.below(16) == 15 ? bytes_.number<std::uint32_t>() : bytes_.byte() % 16U; }

  std::vector<spa_dict_item> items() {
    std::vector<spa_dict_item> items(bytes_.below(12));
    for (spa_dict_item& item : items) {
      item.key = text(kKeys);
      item.value = text(kValues);
    }
    return items;
  }

  void step() {
    texts_.clear();
    switch (bytes_.below(10)) {
      case 0:
        return server_.globalRemove(id());
      case 1:
      case 2:
        return info();
      case 3:
        return property();
      case 4:
        return loop_.run();
      case 5:
        return cardInfo();
      case 6:
        return cardParam();
      default:
        return global();
    }
  }

  void global() {
    const std::uint32_t object = id();
    const char* const type = text(kTypes);
    const std::vector<spa_dict_item> list = items();
    const spa_dict properties{0, static_cast<std::uint32_t>(list.size()), list.data()};
    server_.global(object, type, bytes_.below(32) == 31 ? nullptr : &properties);
  }

  void info() {
    pw_node_info info{};
    info.id = id();
    const std::vector<spa_dict_item> list = items();
    spa_dict properties{0, static_cast<std::uint32_t>(list.size()), list.data()};
    info.props = bytes_.below(8) == 7 ? nullptr : &properties;
    info.change_mask = bytes_.coin() ? PW_NODE_CHANGE_MASK_ALL : bytes_.number<std::uint64_t>();
    info.n_input_ports = bytes_.coin() ? bytes_.byte() : bytes_.number<std::uint32_t>();
    info.n_output_ports = bytes_.coin() ? bytes_.byte() : bytes_.number<std::uint32_t>();
    server_.nodeInfo(info);
  }

  void cardInfo() {
    std::vector<spa_param_info> params(bytes_.below(4));
    for (spa_param_info& param : params) param.id = paramKind();
    pw_device_info info{};
    info.id = id();
    info.change_mask = bytes_.coin() ? PW_DEVICE_CHANGE_MASK_ALL : bytes_.number<std::uint64_t>();
    info.params = params.data();
    info.n_params = static_cast<std::uint32_t>(params.size());
    server_.cardInfo(info);
  }

  /// A profile as cards report it, or any bytes: the library checks a parameter's size and nothing in it.
  void cardParam() {
    const std::uint32_t object = id();
    const std::uint32_t kind = paramKind();
    if (bytes_.coin()) return server_.cardParam(object, kind, profile());
    alignas(kPodAlignment) std::array<std::uint8_t, 128> any{};
    for (std::uint8_t& byte : any) byte = bytes_.byte();
    const auto size = static_cast<std::uint32_t>(bytes_.below(any.size() - sizeof(spa_pod) + 1));
    std::memcpy(any.data(), &size, sizeof size);
    server_.cardParam(object, kind, reinterpret_cast<const spa_pod*>(any.data()));
  }

  const spa_pod* profile() {
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, pod_.data(), static_cast<std::uint32_t>(pod_.size()));
    spa_pod_frame object{};
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_ParamProfile, SPA_PARAM_Profile);
    spa_pod_builder_prop(&builder, SPA_PARAM_PROFILE_index, 0);
    spa_pod_builder_int(&builder, bytes_.number<std::int32_t>());
    if (const char* const name = text(kProfiles)) {
      spa_pod_builder_prop(&builder, SPA_PARAM_PROFILE_name, 0);
      spa_pod_builder_string(&builder, name);
    }
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
  }

  std::uint32_t paramKind() {
    const std::size_t choice = bytes_.below(3);
    if (choice == 0) return SPA_PARAM_Profile;
    return choice == 1 ? std::uint32_t{SPA_PARAM_EnumProfile} : bytes_.number<std::uint32_t>();
  }

  void property() {
    const std::uint32_t object = id();
    const std::uint32_t subject = bytes_.below(4) == 3 ? id() : 0;
    const char* const key = text(kSettings);
    server_.property(object, subject, key, text(kValues));
  }

  void check() {
    const Graph& graph = watch_->graph();
    std::vector<ListedDevice> devices = list_.build(graph, {hal::kAllInterfacesName, "Stage"});
    const auto notRunning = [](const std::string&) { return nullptr; };
    for (ListedDevice& aggregate : aggregatesOf(devices, named(), notRunning)) {
      list_.describeCycle(graph.clock, aggregate.info);
      devices.push_back(std::move(aggregate));
    }
    std::set<std::string> names;
    std::set<std::string> uids;
    for (const ListedDevice& device : devices) {
      require(names.insert(device.info.name).second);
      require(uids.insert(device.info.uid).second);
      checkDevice(device, graph);
    }
  }

  static void checkDevice(const ListedDevice& device, const Graph& graph) {
    std::size_t inputs = 0;
    std::size_t outputs = 0;
    for (const std::uint32_t channels : device.info.inputStreams) inputs += channels;
    for (const std::uint32_t channels : device.info.outputStreams) outputs += channels;
    // A monitor is a member of aggregates and no device: it has channels and no streams.
    if (!device.isMonitor) require(inputs == device.inputs.size() && outputs == device.outputs.size());
    require(hal::utf16Length(hal::validUtf8(device.info.name)).has_value());
    const bool isFixed = device.info.maxBufferFrames == 0;
    require(isFixed || (device.info.minBufferFrames <= device.info.bufferFrames &&
                        device.info.bufferFrames <= device.info.maxBufferFrames));
    for (const auto* channels : {&device.inputs, &device.outputs}) {
      for (const Channel& channel : *channels) {
        if (channel.nodeId != 0) require(!linkEndOf(graph, channel.nodeId, channel.portId).port.empty());
      }
    }
  }

  static const std::vector<hal::Aggregate>& named() {
    static const std::vector<hal::Aggregate> all = {
        {"Stage", {{"pipewire:1", "1", 2, 2}, {"pipewire:2", "2", 0, 1}}}};
    return all;
  }

  Bytes bytes_;
  std::list<std::string> texts_;
  alignas(kPodAlignment) std::array<std::uint8_t, 4096> pod_{};
  FakeLoop loop_;
  FakeServer server_;
  std::unique_ptr<LoopThread> thread_;
  DeviceList list_;
  std::optional<GraphWatch> watch_;
};

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::Run({bytes, size}).run();
  return 0;
}
