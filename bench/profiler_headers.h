// Includes the sound server's profiler headers and wraps their macros in functions. The macros expand to C,
// so this file is marked as a system header to suppress warnings.
#pragma once
#pragma GCC system_header

#include <cstdint>

#include <pipewire/extensions/profiler.h>
#include <pipewire/impl.h>
#include <pipewire/pipewire.h>
#include <spa/param/profiler.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>

namespace tolvane::bench {

/// What the server has recorded of one node in one cycle. Times are in nanoseconds.
struct FollowerBlock {
  std::int32_t nodeId = 0;
  std::int64_t awakeNs = 0;
  std::int64_t finishNs = 0;
  std::int32_t status = 0;
};

inline void addListener(pw_profiler* profiler, spa_hook* hook, const pw_profiler_events* events, void* data) {
  pw_profiler_add_listener(profiler, hook, events, data);
}

/// Calls `cycleBegins()` for each cycle of a profile, then `follower(block)` for each node of the cycle that
/// does not drive it.
template <class CycleBegins, class Follower>
void readProfile(const spa_pod* profile, CycleBegins cycleBegins, Follower follower) {
  const spa_pod* cycle = nullptr;
  SPA_POD_FOREACH(static_cast<const spa_pod*>(SPA_POD_BODY_CONST(profile)), SPA_POD_BODY_SIZE(profile),
                  cycle) {
    if (!spa_pod_is_object_type(cycle, SPA_TYPE_OBJECT_Profiler)) continue;
    cycleBegins();
    const spa_pod_prop* property = nullptr;
    SPA_POD_OBJECT_FOREACH(reinterpret_cast<const spa_pod_object*>(cycle), property) {
      if (property->key != SPA_PROFILER_followerBlock) continue;
      FollowerBlock block;
      const char* name = nullptr;
      std::int64_t previousSignalNs = 0;
      std::int64_t signalNs = 0;
      spa_pod_parser parser;
      spa_pod_parser_pod(&parser, &property->value);
      const int got = spa_pod_parser_get_struct(&parser, SPA_POD_Int(&block.nodeId), SPA_POD_String(&name),
                                                SPA_POD_Long(&previousSignalNs), SPA_POD_Long(&signalNs),
                                                SPA_POD_Long(&block.awakeNs), SPA_POD_Long(&block.finishNs),
                                                SPA_POD_Int(&block.status));
      if (got >= 0) follower(block);
    }
  }
}

}  // namespace tolvane::bench
