#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane::hal {

/// A device's place in an aggregate: what it is known by, and how many channels are kept for it, there or
/// not.
struct AggregateMember {
  std::string uid;   // the device's lasting identity
  std::string name;  // for people, as it was when the aggregate was made
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

/// The aggregate of all sound cards, which nobody has to make.
inline constexpr const char* kAllInterfacesName = "All Interfaces";

/// Of one member, in one direction.
inline constexpr std::uint32_t kMaxMemberChannels = 1024;
inline constexpr std::size_t kMaxAggregateMembers = 64;
inline constexpr std::size_t kMaxAggregateNameCharacters = 100;

/// The device identity of an aggregate: made anew under the same name it is the same device. [not-io]
[[nodiscard]] inline std::string aggregateUid(std::string_view name) {
  return "pipewire-aggregate:" + std::string(name);
}

/// Why no aggregate can be called this, not even one of a file that somebody else has written; empty when one
/// can. [not-io]
[[nodiscard]] std::string whyNoAggregateName(std::string_view name);

/// Why no new aggregate can be called this: what would drive the terminal or the menu that shows it is
/// refused, too; empty when one can. [not-io]
[[nodiscard]] std::string whyNoNewAggregateName(std::string_view name);

/// Whether an aggregate can have the device of this identity as a member: PipeWire runs the members together.
/// [not-io]
[[nodiscard]] bool canBeAggregated(std::string_view uid);

}  // namespace tolvane::hal
