// Commands as OSC messages.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/result.h"
#include "ctl/control/command.h"
#include "ctl/osc/packet.h"

namespace tolvane::ctl::osc {

/// Begins every address.
inline constexpr const char* kRoot = "/tolvane/";

/// The command that a message stands for. Error: there is no such address; or the number of arguments, the
/// type of one, or a channel is wrong. Where a number is meant, any of i, h, f and d is taken; a channel is a
/// whole number from 1 to 2147483647; a switch is a number that is 0 or 1, or T or F. [any-thread]
[[nodiscard]] Result<control::Command, std::string> commandOf(const Message& message);

/// The port for the events of a subscription; none: the sender's own. Only for a message that commandOf()
/// takes for a Subscribe or an Unsubscribe. [any-thread]
[[nodiscard]] std::optional<std::uint16_t> eventPortOf(const Message& message);

}  // namespace tolvane::ctl::osc
