// A client's node in a PipeWire graph with a callback per cycle.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "hal/pipewire/pipewire_headers.h"
#include "support/pipewire_client.h"

namespace tolvane::test {

/// A node with ports of one direction. Calls its owner once per cycle.
class SignalNode {
 public:
  using Process = void (*)(void* owner, const spa_io_clock& clock, std::span<float* const> buffers);

  SignalNode(PipeWireClient& client, const std::string& name, pw_direction direction, std::size_t ports,
             Process process, void* owner)
      : client_(client),
        process_(process),
        owner_(owner),
        isOutput_(direction == PW_DIRECTION_OUTPUT),
        buffers_(ports) {
    static const pw_filter_events kEvents = [] {
      pw_filter_events events{};
      events.version = PW_VERSION_FILTER_EVENTS;
      events.io_changed = [](void* /*data*/, void* port, std::uint32_t id, void* area,
                             std::uint32_t /*bytes*/) {
        if (port != nullptr && id == SPA_IO_Buffers)
          *static_cast<IoArea*>(port) = static_cast<spa_io_buffers*>(area);
      };
      events.process = [](void* data, spa_io_position* position) {
        static_cast<SignalNode*>(data)->onProcess(position);
      };
      return events;
    }();
    pw_thread_loop_lock(client_.loop());
    // So that the node takes part in the cards' cycle even while none of its links is active.
    const std::array<spa_dict_item, 4> items = {{{PW_KEY_NODE_NAME, name.c_str()},
                                                 {PW_KEY_NODE_AUTOCONNECT, "false"},
                                                 {PW_KEY_NODE_GROUP, "cards"},
                                                 {PW_KEY_NODE_ALWAYS_PROCESS, "true"}}};
    const spa_dict properties{0, static_cast<std::uint32_t>(items.size()), items.data()};
    filter_ = pw_filter_new(client_.core(), name.c_str(), pw_properties_new_dict(&properties));
    pw_filter_add_listener(filter_, &hook_, &kEvents, this);
    for (std::size_t i = 0; i < ports; ++i) addPort(direction, i);
    pw_filter_connect(filter_, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
    pw_thread_loop_unlock(client_.loop());
  }

  ~SignalNode() {
    pw_thread_loop_lock(client_.loop());
    pw_filter_destroy(filter_);
    pw_thread_loop_unlock(client_.loop());
  }
  SignalNode(const SignalNode&) = delete;
  SignalNode& operator=(const SignalNode&) = delete;

 private:
  /// The io area in which the library and the graph exchange a port's buffers.
  using IoArea = std::atomic<spa_io_buffers*>;

  void addPort(pw_direction direction, std::size_t index) {
    const std::string name = "port_" + std::to_string(index);
    const std::array<spa_dict_item, 2> items = {
        {{PW_KEY_FORMAT_DSP, "32 bit float mono audio"}, {PW_KEY_PORT_NAME, name.c_str()}}};
    const spa_dict properties{0, static_cast<std::uint32_t>(items.size()), items.data()};
    void* const memory = pw_filter_add_port(filter_, direction, PW_FILTER_PORT_FLAG_MAP_BUFFERS,
                                            sizeof(IoArea), pw_properties_new_dict(&properties), nullptr, 0);
    ports_.push_back(new (memory) IoArea);
  }

  void onProcess(const spa_io_position* position) {
    if (position == nullptr) return;
    const auto frames = static_cast<std::uint32_t>(position->clock.duration);
    for (std::size_t i = 0; i < ports_.size(); ++i) {
      // A buffer that is sent while nobody takes the last one would delay the port by a cycle for ever.
      const spa_io_buffers* const io = *ports_[i];
      const bool isWaiting = isOutput_ && (io == nullptr || io->status == SPA_STATUS_HAVE_DATA);
      buffers_[i] = isWaiting ? nullptr : static_cast<float*>(pw_filter_get_dsp_buffer(ports_[i], frames));
    }
    process_(owner_, position->clock, buffers_);
  }

  PipeWireClient& client_;
  Process process_;
  void* owner_;
  pw_filter* filter_ = nullptr;
  spa_hook hook_{};
  bool isOutput_;
  std::vector<IoArea*> ports_;
  std::vector<float*> buffers_;
};

}  // namespace tolvane::test
