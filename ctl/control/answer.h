// What the control model says: the answer to a command, and the events that everybody who listens is told.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "ctl/control/command.h"

namespace tolvane::ctl::control {

/// The state's number. It grows by one with every change of the routes; the answer to a command that changed
/// nothing has the number of the last change.
using Serial = std::uint64_t;

/// One route as everybody sees it.
struct RouteState {
  RouteKey key;
  float gain = 1.0F;   // linear, may be negative
  bool active = true;  // false: muted
  std::string label;   // empty: none; UTF-8
  bool operator==(const RouteState&) const = default;
};

/// What the device does.
struct DeviceStatus {
  std::string name;  // as the device reports it; may be no UTF-8
  bool isAlive = false;
  std::int64_t inputs = 0;
  std::int64_t outputs = 0;
  double sampleRateHz = 0.0;            // 0: not reported
  std::uint32_t bufferFrames = 0;       // 0: not reported
  std::uint64_t cycles = 0;             // since the start
  std::uint64_t deviceOverloads = 0;    // that the device reported
  std::uint64_t callbackOverloads = 0;  // cycles in which the callback took longer than the cycle lasts
  double load = 0.0;      // the callback's time as a share of the cycle's, the mean of about the last second
  double peakLoad = 0.0;  // the same, of its longest cycle
  bool operator==(const DeviceStatus&) const = default;
};

/// The device and the model.
struct Status {
  DeviceStatus device;
  Serial serial = 0;
  std::uint64_t routes = 0;
  std::uint64_t heard = 0;  // active routes that sound
  std::uint64_t undoSteps = 0;
  std::uint64_t redoSteps = 0;
  bool isSaved = true;    // the patch file has these routes
  std::string scene;      // the last one recalled or saved; empty: none
  std::string patchPath;  // may be no UTF-8
  std::uint32_t rampMs = 0;
  bool operator==(const Status&) const = default;
};

/// A command was refused or failed. Nothing has changed.
struct Refusal {
  std::string text;
  bool operator==(const Refusal&) const = default;
};
struct Done {
  Serial serial = 0;
  bool operator==(const Done&) const = default;
};
struct SceneList {
  std::vector<std::string> names;  // in order; UTF-8
  bool operator==(const SceneList&) const = default;
};
struct RouteDump {
  Serial serial = 0;
  std::vector<RouteState> routes;        // in the order of the patch
  std::vector<std::string> inputLabels;  // one for each channel of the device; empty: none
  std::vector<std::string> outputLabels;
  bool operator==(const RouteDump&) const = default;
};

using Answer = std::variant<Refusal, Done, SceneList, Status, RouteDump>;

/// Why the routes changed.
enum class Cause { edit, undo, redo, scene, file };

/// "edit", "undo" and so on. [any-thread]
[[nodiscard]] const char* nameOf(Cause cause) noexcept;

/// Some routes changed. Of each pair of channels that is named here, these are all routes now.
struct RoutesChanged {
  Serial serial = 0;
  Cause cause = Cause::edit;
  std::vector<RouteState> routes;
  std::vector<RouteKey> removed;  // pairs that have no route any more
  bool operator==(const RoutesChanged&) const = default;
};

/// The device went or came back, the routes or the scene changed, the patch was saved, or a second has
/// passed.
struct StatusChanged {
  Status status;
  bool operator==(const StatusChanged&) const = default;
};

/// The levels of one channel since the last event. Linear; a level that is no finite number is told as the
/// largest one.
struct Level {
  float peak = 0.0F;
  float rms = 0.0F;
  bool isClipped = false;  // the peak was 1.0 or more at some time since the last reset
  bool operator==(const Level&) const = default;
};

struct Meters {
  std::vector<Level> inputs;  // of all channels of the device
  std::vector<Level> outputs;
  bool operator==(const Meters&) const = default;
};

/// A scene was saved: these are all now.
struct ScenesChanged {
  std::vector<std::string> names;  // in order; UTF-8
  bool operator==(const ScenesChanged&) const = default;
};

/// The device's channels have these names now. As in a RouteDump.
struct NamesChanged {
  std::vector<std::string> inputLabels;
  std::vector<std::string> outputLabels;
  bool operator==(const NamesChanged&) const = default;
};

/// The subscriber gets nothing any more until it subscribes again.
struct Dropped {
  std::string why;
  bool operator==(const Dropped&) const = default;
};

using Event = std::variant<RoutesChanged, StatusChanged, ScenesChanged, NamesChanged, Meters, Dropped>;

}  // namespace tolvane::ctl::control
