#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <poll.h>

#include "ctl/control/control.h"
#include "ctl/control/level_bank.h"
#include "ctl/devices/channels.h"
#include "ctl/devices/events.h"
#include "ctl/doors/door.h"
#include "ctl/run/door_plan.h"
#include "ctl/run/meter_bank.h"
#include "ctl/run/options.h"
#include "engine/audio_device_info.h"

namespace tolvane::ctl {

/// The control model of a run with its doors and its meter. [main-thread]
class ControlDesk {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// The references must outlive the object. `routes` came from `patch`.
  ControlDesk(const RunOptions& options, const AudioDeviceInfo& device, PatchSource& patch,
              const Routes& routes, const MeterBank& bank, const DeviceEvents& events);
  ControlDesk(const ControlDesk&) = delete;
  ControlDesk& operator=(const ControlDesk&) = delete;
  /// The device must have been stopped.
  ~ControlDesk();

  /// Opens the doors, and says where. Failure: one cannot be opened.
  [[nodiscard]] std::optional<Failure> open(const DoorPlan& plan);

  /// Adds what poll() must wait for.
  void addSources(std::vector<pollfd>& sources) const;
  /// When the next turn is due even if nothing comes; none: never.
  [[nodiscard]] std::optional<Time> due(Time now) const;

  /// Executes what has come. The routes to play now, if they have changed.
  [[nodiscard]] std::optional<Routes> receive(Time now);
  /// Sends answers and events. To be called after the routes were published.
  void send(Time now);

  /// The patch file gave these routes.
  void takeOver(const Routes& routes) { control_.takeOver(routes); }
  void setNames(const ChannelNames& names);
  void setAlive(bool isAlive);
  /// True while the patch file is being saved.
  [[nodiscard]] bool isSaving() const noexcept { return control_.isSaving(); }

 private:
  [[nodiscard]] control::DeviceStatus deviceStatus();

  AudioDeviceInfo device_;
  const MeterBank& bank_;
  const DeviceEvents& events_;
  bool isAlive_ = true;
  control::LevelBank levels_;
  control::Control control_;
  std::vector<std::unique_ptr<Door>> doors_;
};

extern "C" {

/// Calls meteredIoProc, then measures its buffers and its time with the current LevelBank. [io-thread]
OSStatus controlledIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                          const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                          const AudioTimeStamp* outputTime, void* clientData) noexcept;
}

}  // namespace tolvane::ctl
