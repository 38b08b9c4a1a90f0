// Reads arbitrary bytes as an OSC datagram. What is read as messages must be read the same after encoding,
// and every message must be a command within its bounds or have an error in one line.
#include <cstdint>
#include <string>

#include "ctl/osc/commands.h"
#include "ctl/osc/packet.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

using namespace ctl;

/// Doubles and floats may be NaN, which equals nothing.
bool isSame(const osc::Message& a, const osc::Message& b) {
  if (a.address != b.address || a.arguments.size() != b.arguments.size()) return false;
  for (std::size_t i = 0; i < a.arguments.size(); ++i) {
    const bool isNumber =
        std::holds_alternative<float>(a.arguments[i]) || std::holds_alternative<double>(a.arguments[i]);
    if (isNumber ? a.arguments[i].index() != b.arguments[i].index() : a.arguments[i] != b.arguments[i])
      return false;
  }
  return true;
}

void checkKey(const control::RouteKey& key) {
  require(key.input >= 0 && key.input < INT32_MAX && key.output >= 0 && key.output < INT32_MAX);
}

void checkCommand(const osc::Message& message) {
  const auto command = osc::commandOf(message);
  if (!command) {
    require(!command.error().empty() && command.error().find('\n') == std::string::npos);
    return;
  }
  require(message.address == std::string(osc::kRoot) + control::nameOf(command.value()));
  std::visit(
      [](const auto& its) {
        if constexpr (requires { its.key; }) checkKey(its.key);
      },
      command.value());
}

void readAndEncode(std::string_view datagram) {
  const auto packet = osc::decodePacket(datagram);
  if (!packet) {
    require(!packet.error().empty());
    return;
  }
  const std::vector<osc::Message>& messages = packet.value().messages;
  std::size_t next = 0;
  for (const std::string& encoded : osc::encodePackets(messages)) {
    const auto again = osc::decodePacket(encoded);
    require(static_cast<bool>(again));
    for (const osc::Message& message : again.value().messages) require(isSame(message, messages[next++]));
  }
  require(next == messages.size());
  for (const osc::Message& message : messages) checkCommand(message);
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::readAndEncode({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
