// Answers and events as OSC messages.
#pragma once

#include <string>
#include <vector>

#include "ctl/control/answer.h"
#include "ctl/osc/packet.h"

namespace tolvane::ctl::osc {

/// The answer to a message with this address: "ADDRESS/reply" and what it says, or "ADDRESS/error" and the
/// text. [any-thread]
[[nodiscard]] std::vector<Message> answerMessages(const std::string& address, const control::Answer& answer);

/// The messages of an event; docs/control.md lists them. [any-thread]
[[nodiscard]] std::vector<Message> eventMessages(const control::Event& event);

}  // namespace tolvane::ctl::osc
