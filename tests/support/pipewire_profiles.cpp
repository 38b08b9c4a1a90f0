#include "support/pipewire_profiles.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include <pipewire/pipewire.h>

#include "hal/pipewire/pipewire_headers.h"
#include "support/eventually.h"
#include "support/pipewire_profile_pods.h"

namespace tolvane::test {

struct PipeWireProfiles::State {
  pw_thread_loop* loop = nullptr;
  std::string name;
  std::vector<std::string> profiles;
  std::atomic<int> current{0};
  spa_device device{};
  spa_hook_list hooks{};
  pw_proxy* proxy = nullptr;
  std::array<spa_param_info, 2> params = {{SPA_PARAM_INFO(SPA_PARAM_EnumProfile, SPA_PARAM_INFO_READ),
                                           SPA_PARAM_INFO(SPA_PARAM_Profile, SPA_PARAM_INFO_READWRITE)}};

  std::array<spa_dict_item, 3> properties{};
  spa_dict dictionary{};

  void describe() {
    properties = {{{PW_KEY_MEDIA_CLASS, "Audio/Device"},
                   {PW_KEY_DEVICE_NAME, name.c_str()},
                   {PW_KEY_DEVICE_DESCRIPTION, name.c_str()}}};
    dictionary = {0, static_cast<std::uint32_t>(properties.size()), properties.data()};
  }

  static State& of(void* state) { return *static_cast<State*>(state); }

  void emitInfo(bool isChange) {
    if (isChange) params[1].flags ^= SPA_PARAM_INFO_SERIAL;
    spa_device_info info{};
    info.version = SPA_VERSION_DEVICE_INFO;
    info.change_mask = SPA_DEVICE_CHANGE_MASK_PROPS | SPA_DEVICE_CHANGE_MASK_PARAMS;
    info.props = &dictionary;
    info.params = params.data();
    info.n_params = static_cast<std::uint32_t>(params.size());
    spa_device_emit_info(&hooks, &info);
  }

  int addListener(spa_hook* hook, const spa_device_events* events, void* data) {
    spa_hook_list others;
    spa_hook_list_isolate(&hooks, &others, hook, events, data);
    emitInfo(false);
    spa_hook_list_join(&hooks, &others);
    return 0;
  }

  int enumerate(int sequence, std::uint32_t kind) {
    if (kind != SPA_PARAM_EnumProfile && kind != SPA_PARAM_Profile) return -ENOENT;
    for (int index = 0; index < static_cast<int>(profiles.size()); ++index) {
      if (kind == SPA_PARAM_Profile && index != current) continue;
      const ProfilePod pod(kind, index, profiles[static_cast<std::size_t>(index)]);
      spa_result_device_params result{};
      result.id = kind;
      result.index = static_cast<std::uint32_t>(index);
      result.next = result.index + 1;
      result.param = pod.get();
      spa_device_emit_result(&hooks, sequence, 0, SPA_RESULT_TYPE_DEVICE_PARAMS, &result);
    }
    return 0;
  }

  int set(std::uint32_t kind, const spa_pod* param) {
    const auto profile = hal::pipewire::profileIn(param);
    if (kind != SPA_PARAM_Profile || !profile) return -EINVAL;
    current = profile->index;
    emitInfo(true);
    return 0;
  }
};

namespace {

const spa_device_methods& methods() {
  using State = PipeWireProfiles::State;
  static const spa_device_methods kMethods = [] {
    spa_device_methods methods{};
    methods.version = SPA_VERSION_DEVICE_METHODS;
    methods.add_listener = [](void* state, spa_hook* hook, const spa_device_events* events, void* data) {
      return State::of(state).addListener(hook, events, data);
    };
    methods.sync = [](void* state, int sequence) {
      spa_device_emit_result(&State::of(state).hooks, sequence, 0, 0, nullptr);
      return 0;
    };
    methods.enum_params = [](void* state, int sequence, std::uint32_t kind, std::uint32_t /*start*/,
                             std::uint32_t /*max*/, const spa_pod* /*filter*/) {
      return State::of(state).enumerate(sequence, kind);
    };
    methods.set_param = [](void* state, std::uint32_t kind, std::uint32_t /*flags*/, const spa_pod* param) {
      return State::of(state).set(kind, param);
    };
    return methods;
  }();
  return kMethods;
}

}  // namespace

PipeWireProfiles::PipeWireProfiles(PipeWireClient& client, const std::string& name,
                                   std::vector<std::string> profiles)
    : state_(std::make_unique<State>()) {
  State& state = *state_;
  state.loop = client.loop();
  state.name = name;
  state.profiles = std::move(profiles);
  state.describe();
  spa_hook_list_init(&state.hooks);
  state.device.iface = {SPA_TYPE_INTERFACE_Device, SPA_VERSION_DEVICE, {&methods(), &state}};
  pw_thread_loop_lock(state.loop);
  state.proxy = static_cast<pw_proxy*>(
      pw_core_export(client.core(), SPA_TYPE_INTERFACE_Device, &state.dictionary, &state.device, 0));
  pw_thread_loop_unlock(state.loop);
  if (state.proxy == nullptr) throw std::runtime_error("cannot offer the card " + name);
  if (!eventually([&] { return id() != SPA_ID_INVALID; })) throw std::runtime_error("no card " + name);
}

PipeWireProfiles::~PipeWireProfiles() {
  pw_thread_loop_lock(state_->loop);
  pw_proxy_destroy(state_->proxy);
  pw_thread_loop_unlock(state_->loop);
}

std::uint32_t PipeWireProfiles::id() const {
  pw_thread_loop_lock(state_->loop);
  const std::uint32_t id = pw_proxy_get_bound_id(state_->proxy);
  pw_thread_loop_unlock(state_->loop);
  return id;
}

int PipeWireProfiles::current() const {
  return state_->current;
}

}  // namespace tolvane::test
