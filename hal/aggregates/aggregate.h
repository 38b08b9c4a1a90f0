#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane::hal {

/// A device of an aggregate: its identity, and the channels kept for it whether it is present or not.
struct AggregateMember {
  std::string uid;   // the device's persistent identity
  std::string name;  // shown to the user; as it was when the aggregate was made
  std::uint32_t inputChannels = 0;
  std::uint32_t outputChannels = 0;

  bool operator==(const AggregateMember&) const = default;
};

/// Several devices used as one: the channels of its members, one member after the other.
struct Aggregate {
  std::string name;
  std::vector<AggregateMember> members;

  bool operator==(const Aggregate&) const = default;
};

/// The name of the built-in aggregate of all sound cards.
inline constexpr const char* kAllInterfacesName = "All Interfaces";

/// The limit for one member, in one direction.
inline constexpr std::uint32_t kMaxMemberChannels = 1024;
inline constexpr std::size_t kMaxAggregateMembers = 64;
inline constexpr std::size_t kMaxAggregateNameCharacters = 100;

/// The uid of an aggregate. One made again under the same name is the same device. [not-io]
[[nodiscard]] inline std::string aggregateUid(std::string_view name) {
  return "pipewire-aggregate:" + std::string(name);
}

/// Why no aggregate can have this name; empty if one can. Names in files that others have written must pass
/// too. [not-io]
[[nodiscard]] std::string whyNoAggregateName(std::string_view name);

/// Why no new aggregate can have this name; empty if one can. Refuses more than whyNoAggregateName(): text
/// that is too long or not UTF-8, and control characters, which would act on the terminal or the menu that
/// shows the name. [not-io]
[[nodiscard]] std::string whyNoNewAggregateName(std::string_view name);

/// At the end of a uid or a name: not the device itself, but what its outputs play, as inputs. A device whose
/// uid really ends so comes before a monitor.
inline constexpr std::string_view kMonitorSuffix = ":monitor";

/// The uid of a device's monitor, which is no device of the list, but can be a member of an aggregate.
/// [not-io]
[[nodiscard]] inline std::string monitorUid(std::string_view deviceUid) {
  return std::string(deviceUid) + std::string(kMonitorSuffix);
}

/// True if the device with this uid can be a member of an aggregate. Only PipeWire's devices can: PipeWire
/// runs the members together. [not-io]
[[nodiscard]] bool canBeAggregated(std::string_view uid);

}  // namespace tolvane::hal
