#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "ctl/devices/channels.h"
#include "ctl/devices/events.h"
#include "ctl/files/debouncer.h"
#include "ctl/files/file_watcher.h"
#include "ctl/patch/source.h"
#include "ctl/process/signal_pipe.h"
#include "ctl/publication/publication.h"
#include "ctl/publication/ramped_publication.h"
#include "ctl/run/control_desk.h"
#include "ctl/run/door_plan.h"
#include "ctl/run/io_thread.h"
#include "ctl/run/meter_bank.h"
#include "ctl/run/options.h"
#include "ctl/run/removed_links.h"
#include "ctl/run/run_reports.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/meter_view.h"
#include "engine/core_audio_engine.h"

namespace tolvane::ctl {

/// Live routing on one device, from the start to the summary. [main-thread]
class LiveSession {
 public:
  /// `patch`, `signals` and `manager` belong to the caller and must outlive the session. `routes` came from
  /// `patch`.
  LiveSession(const RunOptions& options, AudioDeviceInfo device, PatchSource& patch, Routes routes,
              const SignalPipe& signals, const ServiceManager& manager, DoorPlan doors);
  LiveSession(const LiveSession&) = delete;
  LiveSession& operator=(const LiveSession&) = delete;
  ~LiveSession();

  /// Routes until a signal, the user or the time limit ends the run. Returns failed if the device does not
  /// start, else done.
  [[nodiscard]] ExitStatus run();

 private:
  using Clock = std::chrono::steady_clock;

  void sleep();
  [[nodiscard]] Clock::time_point wakeTime() const;
  [[nodiscard]] Clock::time_point endTime() const;
  void handleSignals();
  void handleFile();
  void handleControl();
  void handleDevice();
  void handleScheduling();
  /// Reads the IO thread's scheduling, and reports once if it is not real-time.
  void tellScheduling();
  void takeOver(const PatchResult& result);
  /// Plays these routes from now on.
  void play(Routes routes);
  void readNames();
  /// In how many cycles a change of the routes is to arrive.
  [[nodiscard]] std::uint32_t rampSteps() const;
  void showMeters();
  void openMeters(Clock::time_point now);
  void printSummary() const;

  RunOptions options_;
  AudioDeviceInfo device_;
  PatchSource& patch_;
  Routes routes_;
  const SignalPipe& signals_;
  MessageLog messages_;
  ChannelNames names_;
  MeterBank bank_;
  CoreAudioEngine engine_;
  Publication publication_;
  RampedPublication routePublication_;  // in front of the other
  DeviceEvents events_;
  DoorPlan doors_;
  std::unique_ptr<ControlDesk> desk_;  // null: all doors are closed
  RunReports reports_;
  std::unique_ptr<FileWatcher> watcher_;  // null: the file is not watched
  Debouncer fileDebouncer_;
  std::unique_ptr<MeterView> meters_;  // null: no meters, or not open yet
  MeterPicture picture_;
  Clock::time_point started_;
  Clock::time_point nextMeters_;
  std::optional<Clock::time_point> schedulingDue_;     // when to check; none: already checked
  std::optional<TolvaneThreadScheduling> scheduling_;  // of the IO thread, as last read
  std::optional<bool> isMemoryLocked_;
  bool schedulingTold_ = false;
  bool ended_ = false;
  bool deviceTold_ = false;
  bool reloadAsked_ = false;
  bool wasAlive_ = true;
  RemovedChannels removed_;
};

}  // namespace tolvane::ctl
