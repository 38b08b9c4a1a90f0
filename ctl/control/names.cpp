#include "ctl/control/answer.h"
#include "ctl/control/command.h"

namespace tolvane::ctl::control {

namespace {

/// In the order of the alternatives of Command.
constexpr const char* kCommandNames[] = {
    "route",      "route/gain", "route/mute",  "route/label", "route/remove", "scene",
    "scene/save", "scenes",     "undo",        "redo",        "save",         "status",
    "dump",       "subscribe",  "unsubscribe", "clips/reset", "hello",
};
static_assert(std::size(kCommandNames) == std::variant_size_v<Command>);

}  // namespace

const char* nameOf(const Command& command) noexcept {
  return kCommandNames[command.index()];
}

bool takesLong(const Command& command) noexcept {
  return std::holds_alternative<Dump>(command) || std::holds_alternative<RecallScene>(command) ||
         std::holds_alternative<SaveScene>(command) || std::holds_alternative<ListScenes>(command) ||
         std::holds_alternative<Save>(command);
}

const char* nameOf(Cause cause) noexcept {
  constexpr const char* kNames[] = {"edit", "undo", "redo", "scene", "file"};
  return kNames[static_cast<std::size_t>(cause)];
}

}  // namespace tolvane::ctl::control
