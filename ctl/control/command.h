// What anybody may ask of a running patch, whatever door the question came through.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <variant>

namespace tolvane::ctl::control {

/// The routes from one channel to another, counted from 0. A patch may have several of them; a command means
/// all of them.
struct RouteKey {
  std::int64_t input = 0;
  std::int64_t output = 0;
  auto operator<=>(const RouteKey&) const = default;  // NOLINT(modernize-use-nullptr): it compares with 0
};

/// Sets the linear gain of a route. If there is no such route, adds one that is active.
struct SetRoute {
  RouteKey key;
  float gain = 1.0F;
  bool operator==(const SetRoute&) const = default;
};

/// Sets the level of a route in decibels; minus infinity is a gain of 0. The sign of the gain stays. A level
/// that is no number is refused, and so is one whose gain is beyond a float.
struct SetGain {
  RouteKey key;
  double decibels = 0.0;
  bool operator==(const SetGain&) const = default;
};

/// Mutes a route or lets it sound again.
struct SetMute {
  RouteKey key;
  bool isMuted = true;
  bool operator==(const SetMute&) const = default;
};

/// Sets the label of a route; empty: none.
struct SetLabel {
  RouteKey key;
  std::string label;
  bool operator==(const SetLabel&) const = default;
};

struct RemoveRoute {
  RouteKey key;
  bool operator==(const RemoveRoute&) const = default;
};

/// Replaces all routes by those of a scene. A number is the place in the list of scenes, counted from 1.
struct RecallScene {
  std::variant<std::string, std::int64_t> scene;
  bool operator==(const RecallScene&) const = default;
};

/// Saves the routes as a scene, in place of the one of that name.
struct SaveScene {
  std::string name;
  bool operator==(const SaveScene&) const = default;
};

struct ListScenes {
  bool operator==(const ListScenes&) const = default;
};
struct Undo {
  bool operator==(const Undo&) const = default;
};
struct Redo {
  bool operator==(const Redo&) const = default;
};
/// Writes the routes into the patch file.
struct Save {
  bool operator==(const Save&) const = default;
};
struct GetStatus {
  bool operator==(const GetStatus&) const = default;
};
/// Asks for all routes and the labels of the channels.
struct Dump {
  bool operator==(const Dump&) const = default;
};
/// Makes the sender a subscriber, of what is true here only. A door may end a subscription that is not
/// repeated.
struct Subscribe {
  bool changes = true;
  bool meters = true;
  bool operator==(const Subscribe&) const = default;
};
struct Unsubscribe {
  bool operator==(const Unsubscribe&) const = default;
};
/// Clears the held clips of all channels.
struct ResetClips {
  bool operator==(const ResetClips&) const = default;
};

/// Says the token. A door that needs none takes any.
struct Hello {
  std::string token;
  bool operator==(const Hello&) const = default;
};

using Command =
    std::variant<SetRoute, SetGain, SetMute, SetLabel, RemoveRoute, RecallScene, SaveScene, ListScenes, Undo,
                 Redo, Save, GetStatus, Dump, Subscribe, Unsubscribe, ResetClips, Hello>;

/// The command's name, the same in OSC, after "/tolvane/", and in JSON: "route/gain". [any-thread]
[[nodiscard]] const char* nameOf(const Command& command) noexcept;

/// True for commands that read or write files, or have long answers. Doors take fewer of them. [any-thread]
[[nodiscard]] bool takesLong(const Command& command) noexcept;

}  // namespace tolvane::ctl::control
