// The running patch in the hands of people: commands in, answers and events out. No sockets: the doors are
// elsewhere.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ctl/control/answer.h"
#include "ctl/control/command.h"
#include "ctl/control/file_writer.h"
#include "ctl/control/history.h"
#include "ctl/control/meter_teller.h"
#include "ctl/control/route_list.h"
#include "ctl/control/scene_folder.h"
#include "ctl/patch/source.h"

namespace tolvane::ctl::control {

/// Gets the answer to one command, at once or later. Called once, on the main thread; not at all if the model
/// ends first. It must not execute commands.
using Reply = std::function<void(const Answer&)>;

/// A door. [main-thread]
class Listener {
 public:
  virtual ~Listener() = default;
  /// Takes an event that is for all subscribers. Must not block, and must not execute commands.
  virtual void tell(const Event& event) = 0;
  /// True if any subscriber of this door wants changes, or meters.
  [[nodiscard]] virtual bool wantsChanges() const = 0;
  [[nodiscard]] virtual bool wantsMeters() const = 0;
};

/// The routes of a run and everything that may be done with them. [main-thread]
///
/// A command either succeeds whole or changes nothing. Every change gets the next serial number, becomes an
/// undo step, and is told to all listeners. The model publishes nothing itself: its owner asks
/// takeUnpublished() and hands the routes to the engine's publication, as after a change of the file.
class Control {
 public:
  using Time = std::chrono::steady_clock::time_point;

  struct Config {
    std::optional<std::string> sceneFolder;  // none: no scenes
    std::vector<std::string> inputLabels;    // one for each channel of the device; empty: none
    std::vector<std::string> outputLabels;
    std::uint32_t rampMs = 0;  // for the status
    /// Asks the device. Called whenever somebody wants to know. Never null.
    std::function<DeviceStatus()> device;
  };

  /// `patch` was just read and gave `routes`. It must outlive the object, and so must `meter`, which may be
  /// null.
  Control(Config config, PatchSource& patch, const Routes& routes, Meter* meter);
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  /// Executes a command and replies; then tells the change that it has made, if no bundle lives. Subscribe,
  /// Unsubscribe and Hello are the doors' own; they only get a Done.
  void execute(const Command& command, const Sender& sender, const Reply& reply);

  /// While it lives, all changes are one: one serial number, one undo step, one event. An Undo or Redo within
  /// it is a change of its own, and so is what follows.
  class Bundle {
   public:
    explicit Bundle(Control& control) : control_(control) { ++control_.bundles_; }
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;
    ~Bundle() {
      --control_.bundles_;
      control_.endChange();
    }

   private:
    Control& control_;
  };

  /// A listener must be removed before it ends.
  void add(Listener& listener);
  void remove(Listener& listener);

  /// The patch file has been read and gave these routes. They replace all; undo brings the former ones back.
  void takeOver(const Routes& routes);
  /// The device's channels have these names now.
  void setLabels(std::vector<std::string> inputs, std::vector<std::string> outputs);
  /// The device went, came back, or was changed.
  void deviceChanged();

  /// Sends the status and the meters that are due, and the replies of saves that have ended.
  void tick(Time now);
  /// When to call tick() next; none if nobody listens.
  [[nodiscard]] std::optional<Time> due(Time now) const;
  /// For poll(): readable when tick() has a reply to send.
  [[nodiscard]] int descriptor() const noexcept { return writer_.descriptor(); }

  /// True once after the routes have changed that the engine should play.
  [[nodiscard]] bool takeUnpublished() noexcept;
  /// All routes, in order.
  [[nodiscard]] Routes routes() const { return list_.connections(); }
  /// True while a save runs: the file may be newer than what is known of it.
  [[nodiscard]] bool isSaving() const noexcept { return writer_.isBusy(); }

  [[nodiscard]] Status status() const;
  /// Of the last change, also of one that a bundle has begun.
  [[nodiscard]] Serial serial() const noexcept { return serial_ + (edits_.empty() ? 0 : 1); }

 private:
  struct Executor;

  void apply(RouteEdit edit);
  /// Outside of bundles: makes the edits since the last change the next one.
  void endChange();
  void commit();
  void tellChange();
  void tellAll(const Event& event) const;
  void tellScenes() const;
  [[nodiscard]] Time nextStatus() const noexcept;

  Config config_;
  PatchSource& patch_;
  std::string fileText_;                 // that gave the routes of the file, or was saved
  std::deque<std::string> savingTexts_;  // of the saves that have not ended, in order
  RouteList list_;
  std::vector<Route> savedRoutes_;  // that the file has
  History history_;
  MeterTeller meters_;
  std::optional<SceneFolder> scenes_;
  FileWriter writer_;
  std::vector<Listener*> listeners_;
  Serial serial_ = 0;  // of the last change that was told
  std::string scene_;
  std::uint64_t recalls_ = 0;     // of scenes
  std::vector<RouteEdit> edits_;  // since the last change, as the ones that take them back
  Sender sender_;                 // of these edits
  Cause cause_ = Cause::edit;     // likewise
  int bundles_ = 0;
  bool unpublished_ = false;
  std::optional<Time> lastStatus_;
  bool isStatusStale_ = false;  // what was told is no longer true
};

}  // namespace tolvane::ctl::control
