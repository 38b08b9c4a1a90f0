// The sound server's client library, loaded at run time so that the same program runs on machines without it.
#pragma once

#include <string>
#include <string_view>

#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::hal::pipewire {

// Most of the client API is inline functions over function tables. These are the exported functions that we
// use.
#define TOLVANE_PIPEWIRE_FUNCTIONS(FUNCTION) \
  FUNCTION(pw_init)                          \
  FUNCTION(pw_get_library_version)           \
  FUNCTION(pw_log_set_level)                 \
  FUNCTION(pw_thread_loop_new)               \
  FUNCTION(pw_thread_loop_start)             \
  FUNCTION(pw_thread_loop_stop)              \
  FUNCTION(pw_thread_loop_destroy)           \
  FUNCTION(pw_thread_loop_get_loop)          \
  FUNCTION(pw_context_new)                   \
  FUNCTION(pw_context_destroy)               \
  FUNCTION(pw_context_connect)               \
  FUNCTION(pw_core_disconnect)               \
  FUNCTION(pw_core_get_mempool)              \
  FUNCTION(pw_mempool_find_id)               \
  FUNCTION(pw_properties_new_dict)           \
  FUNCTION(pw_proxy_destroy)                 \
  FUNCTION(pw_proxy_add_listener)            \
  FUNCTION(pw_filter_new)                    \
  FUNCTION(pw_filter_add_listener)           \
  FUNCTION(pw_filter_add_port)               \
  FUNCTION(pw_filter_connect)                \
  FUNCTION(pw_filter_update_properties)      \
  FUNCTION(pw_filter_get_node_id)            \
  FUNCTION(pw_filter_dequeue_buffer)         \
  FUNCTION(pw_filter_queue_buffer)           \
  FUNCTION(pw_filter_destroy)

/// The functions under their own names.
struct Library {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member cannot be declared in parentheses
#define TOLVANE_PIPEWIRE_MEMBER(name) decltype(&::name) name = nullptr;
  TOLVANE_PIPEWIRE_FUNCTIONS(TOLVANE_PIPEWIRE_MEMBER)
#undef TOLVANE_PIPEWIRE_MEMBER
};

/// The library, loaded and initialised at the first call and never unloaded. Null if it is missing or lacks
/// one of the functions. Its messages are off unless the user has set PIPEWIRE_DEBUG. [not-io]
[[nodiscard]] const Library* library();

/// What the user should know of a library that is too old, or older than any that is tested; empty if there
/// is nothing to say, or no library. [not-io]
[[nodiscard]] std::string libraryProblem();

/// True if a version ("1.4.2") is `major`.`minor`.`micro` or later. [any-thread]
[[nodiscard]] bool isSince(std::string_view version, int major, int minor, int micro = 0) noexcept;

/// The name of the configuration that gives a client's data thread real-time priority, in a library of this
/// version ("1.4.2"). [any-thread]
[[nodiscard]] const char* realTimeConfigName(std::string_view libraryVersion) noexcept;

}  // namespace tolvane::hal::pipewire
