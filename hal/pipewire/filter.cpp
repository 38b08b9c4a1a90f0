#include "hal/pipewire/filter.h"

#include <array>
#include <new>
#include <string>
#include <utility>

#include "hal/pipewire/shared_buffer.h"
#include "hal/support/utf8.h"

namespace tolvane::hal::pipewire {

namespace {

template <std::size_t count>
pw_properties* propertiesOf(const Library& library, const std::array<spa_dict_item, count>& items) {
  const spa_dict dictionary{0, static_cast<std::uint32_t>(count), items.data()};
  return library.pw_properties_new_dict(&dictionary);
}

pw_properties* nodeProperties(const Library& library, const std::string& latency) {
  // If the user has set PIPEWIRE_LATENCY, PIPEWIRE_QUANTUM or PIPEWIRE_RATE, the library itself replaces our
  // suggestion.
  return propertiesOf(library, std::array<spa_dict_item, 8>{{{PW_KEY_MEDIA_TYPE, "Audio"},
                                                             {PW_KEY_MEDIA_CATEGORY, "Filter"},
                                                             {PW_KEY_MEDIA_ROLE, "DSP"},
                                                             {PW_KEY_NODE_NAME, "tolvane"},
                                                             {PW_KEY_NODE_DESCRIPTION, "Tolvane"},
                                                             {PW_KEY_NODE_ALWAYS_PROCESS, "true"},
                                                             {PW_KEY_NODE_AUTOCONNECT, "false"},
                                                             {PW_KEY_NODE_LATENCY, latency.c_str()}}});
}

/// Without a channel's name the server makes an alias by itself.
pw_properties* portProperties(const Library& library, const std::string& name, const std::string& channel) {
  constexpr std::size_t kMostBytes = 256;
  const std::string alias = cutUtf8(validUtf8(channel), kMostBytes);
  const std::array<spa_dict_item, 3> items{{{PW_KEY_FORMAT_DSP, "32 bit float mono audio"},
                                            {PW_KEY_PORT_NAME, name.c_str()},
                                            {PW_KEY_PORT_ALIAS, alias.c_str()}}};
  const spa_dict properties{0, alias.empty() ? 2U : 3U, items.data()};
  return library.pw_properties_new_dict(&properties);
}

}  // namespace

Filter::Filter(const Library& library, pw_core* core, CycleRunner& runner, const ServedChannels& served,
               const std::string& latency, Task changed)
    : library_(library),
      runner_(runner),
      changed_(std::move(changed)),
      filter_(library.pw_filter_new(core, "Tolvane", nodeProperties(library, latency))) {
  static const pw_filter_events kEvents = [] {
    pw_filter_events events{};
    events.version = PW_VERSION_FILTER_EVENTS;
    events.state_changed = [](void* data, pw_filter_state /*old*/, pw_filter_state state,
                              const char* /*error*/) { static_cast<Filter*>(data)->onStateChanged(state); };
    events.io_changed = [](void* /*data*/, void* port, std::uint32_t id, void* area, std::uint32_t bytes) {
      if (port == nullptr || id != SPA_IO_Buffers) return;
      const bool isWhole = bytes >= sizeof(spa_io_buffers);
      static_cast<FilterPort*>(port)->io.store(isWhole ? static_cast<spa_io_buffers*>(area) : nullptr,
                                               std::memory_order_release);
    };
    events.add_buffer = [](void* /*data*/, void* port, pw_buffer* buffer) {
      if (port != nullptr) checkBuffer(*buffer, static_cast<FilterPort*>(port)->isOutput);
    };
    events.process = [](void* data, spa_io_position* position) {
      static_cast<Filter*>(data)->runner_.process(position);
    };
    return events;
  }();
  isDead_ = filter_ == nullptr;
  if (isDead_) return;
  library_.pw_filter_add_listener(filter_, &hook_, &kEvents, this);
  runner_.setPorts(addPorts(PW_DIRECTION_INPUT, served.inputs),
                   addPorts(PW_DIRECTION_OUTPUT, served.outputs));
  isDead_ = isDead_ || library_.pw_filter_connect(filter_, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0) < 0;
}

Filter::~Filter() {
  if (filter_ == nullptr) return;
  changed_ = nullptr;
  library_.pw_filter_destroy(filter_);
}

void Filter::suggestLatency(const std::string& latency) {
  if (filter_ == nullptr) return;
  const spa_dict_item item{PW_KEY_NODE_LATENCY, latency.c_str()};
  const spa_dict properties{0, 1, &item};
  library_.pw_filter_update_properties(filter_, nullptr, &properties);
}

std::vector<FilterPort*> Filter::addPorts(pw_direction direction, const std::vector<std::string>& served) {
  const std::string prefix = direction == PW_DIRECTION_INPUT ? "input_" : "output_";
  std::vector<FilterPort*> ports;
  for (const std::string& channel : served) {
    const std::string name = prefix + std::to_string(ports.size() + 1);
    void* const memory =
        library_.pw_filter_add_port(filter_, direction, PW_FILTER_PORT_FLAG_MAP_BUFFERS, sizeof(FilterPort),
                                    portProperties(library_, name, channel), nullptr, 0);
    if (memory == nullptr) {
      isDead_ = true;
      return {};
    }
    ports.push_back(new (memory) FilterPort);
    ports.back()->isOutput = direction == PW_DIRECTION_OUTPUT;
  }
  return ports;
}

void Filter::onStateChanged(pw_filter_state state) {
  if (!changed_) return;  // being destroyed
  if (state == PW_FILTER_STATE_CONNECTING) {
    wasConnecting_ = true;
    return;
  }
  const bool isGone =
      state == PW_FILTER_STATE_ERROR || (state == PW_FILTER_STATE_UNCONNECTED && wasConnecting_);
  isDead_ = isDead_ || isGone;
  nodeId_ = isDead_ ? SPA_ID_INVALID : library_.pw_filter_get_node_id(filter_);
  changed_();
}

}  // namespace tolvane::hal::pipewire
