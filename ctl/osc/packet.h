// OSC packets and their messages. The library converts messages; bundles are taken apart here, because the
// library does so only for its own server.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/result.h"

namespace tolvane::ctl::osc {

/// An argument of a type that no command takes.
struct OtherType {
  bool operator==(const OtherType&) const = default;
};

using Argument = std::variant<OtherType, std::int32_t, std::int64_t, float, double, bool, std::string>;

struct Message {
  std::string address;
  std::vector<Argument> arguments;
  bool operator==(const Message&) const = default;
};

/// The messages of a datagram, in order. The messages of nested bundles count as the outer one's.
struct Packet {
  std::vector<Message> messages;
  bool isBundle = false;
};

/// Takes a datagram apart. Error: it is no OSC message with type tags and no bundle of such, whole; has more
/// than 256 messages; or bundles are nested deeper than 8. Time tags are ignored. [any-thread]
[[nodiscard]] Result<Packet, std::string> decodePacket(std::string_view datagram);

/// The datagrams for these messages, in order, each of at most about 1400 bytes unless a single message is
/// longer: a message by itself, or a bundle. [any-thread]
[[nodiscard]] std::vector<std::string> encodePackets(const std::vector<Message>& messages);

}  // namespace tolvane::ctl::osc
