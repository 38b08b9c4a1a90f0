// Includes the sound server's headers and wraps its function-table macros in functions. The headers are C and
// the macros expand to statement expressions, so this file is marked as a system header to suppress warnings.
#pragma once
#pragma GCC system_header

#include <cerrno>
#include <optional>
#include <string_view>

#include <pipewire/extensions/metadata.h>
#include <pipewire/filter.h>
#include <pipewire/mem.h>
#include <pipewire/pipewire.h>
#include <spa/param/profile.h>
#include <spa/pod/parser.h>
#include <spa/utils/json.h>
#include <spa/utils/string.h>

namespace tolvane::hal::pipewire {

inline void addListener(pw_core* core, spa_hook* hook, const pw_core_events* events, void* data) {
  pw_core_add_listener(core, hook, events, data);
}

inline void addListener(pw_registry* registry, spa_hook* hook, const pw_registry_events* events, void* data) {
  pw_registry_add_listener(registry, hook, events, data);
}

inline void addListener(pw_node* node, spa_hook* hook, const pw_node_events* events, void* data) {
  pw_node_add_listener(node, hook, events, data);
}

inline void addListener(pw_device* device, spa_hook* hook, const pw_device_events* events, void* data) {
  pw_device_add_listener(device, hook, events, data);
}

inline void enumParams(pw_device* device, uint32_t kind) {
  pw_device_enum_params(device, 0, kind, 0, UINT32_MAX, nullptr);
}

/// A card's profile; its name is valid as long as the parameter.
struct Profile {
  int index = 0;
  std::string_view name = {};
};

inline std::optional<Profile> profileIn(const spa_pod* param) {
  int32_t index = 0;
  const char* name = nullptr;
  if (param == nullptr ||
      spa_pod_parse_object(param, SPA_TYPE_OBJECT_ParamProfile, nullptr, SPA_PARAM_PROFILE_index,
                           SPA_POD_Int(&index), SPA_PARAM_PROFILE_name, SPA_POD_OPT_String(&name)) < 0) {
    return std::nullopt;
  }
  return Profile{index, name != nullptr ? name : ""};
}

inline void addListener(pw_link* link, spa_hook* hook, const pw_link_events* events, void* data) {
  pw_link_add_listener(link, hook, events, data);
}

inline void addListener(pw_metadata* metadata, spa_hook* hook, const pw_metadata_events* events, void* data) {
  pw_metadata_add_listener(metadata, hook, events, data);
}

inline int sync(pw_core* core) {
  return pw_core_sync(core, PW_ID_CORE, 0);
}

inline pw_registry* getRegistry(pw_core* core) {
  return pw_core_get_registry(core, PW_VERSION_REGISTRY, 0);
}

inline pw_proxy* createObject(pw_core* core, const char* factory, const char* type, uint32_t version,
                              const spa_dict* properties) {
  return static_cast<pw_proxy*>(pw_core_create_object(core, factory, type, version, properties, 0));
}

inline pw_proxy* bind(pw_registry* registry, uint32_t id, const char* type, uint32_t version) {
  return static_cast<pw_proxy*>(pw_registry_bind(registry, id, type, version, 0));
}

inline void destroyGlobal(pw_registry* registry, uint32_t id) {
  pw_registry_destroy(registry, id);
}

inline void setProperty(pw_metadata* metadata, uint32_t subject, const char* key, const char* type,
                        const char* value) {
  pw_metadata_set_property(metadata, subject, key, type, value);
}

inline spa_source* addEvent(pw_loop* loop, spa_source_event_func_t handler, void* data) {
  return pw_loop_add_event(loop, handler, data);
}

inline void signalEvent(pw_loop* loop, spa_source* event) {
  pw_loop_signal_event(loop, event);
}

inline spa_source* addTimer(pw_loop* loop, spa_source_timer_func_t handler, void* data) {
  return pw_loop_add_timer(loop, handler, data);
}

inline void updateTimer(pw_loop* loop, spa_source* timer, timespec* first, timespec* interval) {
  pw_loop_update_timer(loop, timer, first, interval, false);
}

inline spa_source* addReader(pw_loop* loop, int descriptor, spa_source_io_func_t handler, void* data) {
  return pw_loop_add_io(loop, descriptor, SPA_IO_IN, false, handler, data);
}

inline void destroySource(pw_loop* loop, spa_source* source) {
  pw_loop_destroy_source(loop, source);
}

}  // namespace tolvane::hal::pipewire
