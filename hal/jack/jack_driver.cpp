#include "hal/jack/jack_driver.h"

#include <optional>
#include <utility>

#include "hal/driver/time_limits.h"
#include "hal/jack/jack_library.h"
#include "hal/jack/jack_prober.h"
#include "hal/jack/jack_setting.h"
#include "hal/jack/jack_stream.h"
#include "hal/jack/jack_watch.h"
#include "hal/jack/late_answer.h"
#include "hal/support/thread.h"

namespace tolvane::hal {
namespace {

/// A stream, and what its thread tells its owner.
struct Hosting {
  std::shared_ptr<JackStream> stream;
  std::shared_ptr<LateAnswer<OSStatus>> entered = std::make_shared<LateAnswer<OSStatus>>();
  std::shared_ptr<LateAnswer<bool>> left = std::make_shared<LateAnswer<bool>>();
};

/// Runs a stream from enter() to leave(), on a thread of its own. That thread has every signal blocked, and
/// libjack's threads inherit this from it. The reason: writing to a dead server raises SIGPIPE.
void host(const Hosting& hosting) {
  const OSStatus status = hosting.stream->enter();
  if (status == noErr && hosting.entered->give(status)) hosting.stream->awaitEnd();
  hosting.stream->leave();
  if (status != noErr) hosting.entered->give(status);
  hosting.left->give(true);
}

class JackSession final : public Session {
 public:
  explicit JackSession(Hosting hosting) : hosting_(std::move(hosting)) { hosting_.stream->open(); }
  ~JackSession() override {
    hosting_.stream->shut();
    hosting_.stream->requestEnd();
    hosting_.left->take(kJackLeaveLimit);
  }
  JackSession(const JackSession&) = delete;
  JackSession& operator=(const JackSession&) = delete;

 private:
  Hosting hosting_;
};

class JackDriver final : public Driver {
 public:
  JackDriver(const JackLibrary& library, const JackLimits& limits)
      : library_(library), limits_(limits), prober_(library) {}

  [[nodiscard]] const char* name() const noexcept override { return "jack"; }

  std::vector<DeviceInfo> devices() override { return prober_.devices(); }

  [[nodiscard]] bool awaitsServer() const override { return prober_.isSilent(); }

  [[nodiscard]] std::string server() const override { return library_.isPipeWire ? "pipewire" : ""; }

  StartResult start(const DeviceInfo& device, SessionClient& client) override {
    if (!prober_.answers(limits_.signOfLife)) return {kAudioHardwareNotReadyError, nullptr};
    Hosting hosting{std::make_shared<JackStream>(library_, device, client)};
    if (!runDetached("tolvane-jack", [hosting] { host(hosting); })) throw noThreadLeft();
    const OSStatus status =
        hosting.entered->take(limits_.start).value_or(OSStatus{kAudioHardwareNotReadyError});
    if (status != noErr) return {status, nullptr};
    return {noErr, std::make_unique<JackSession>(std::move(hosting))};
  }

  void setObserver(DeviceObserver& observer) override {
    watch_.emplace(library_, [this, &observer] {
      prober_.forget();
      observer.devicesChanged(*this);
    });
    prober_.askThrough(watch_->asker());
  }

  OSStatus setBufferFrames(const DeviceInfo& device, std::uint32_t frames) override {
    if (device.maxBufferFrames == 0) return kAudioHardwareUnsupportedOperationError;
    const OSStatus status = setJackBufferFrames(library_, frames, limits_.setting);
    prober_.forget();
    return status;
  }

 private:
  const JackLibrary& library_;
  const JackLimits limits_;
  JackProber prober_;
  std::optional<JackWatch> watch_;  // last, because its threads use the rest
};

/// The driver on a machine without libjack.
class AbsentJackDriver final : public Driver {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "jack"; }
  std::vector<DeviceInfo> devices() override { return {}; }
  StartResult start(const DeviceInfo& /*device*/, SessionClient& /*client*/) override {
    return {kAudioHardwareNotReadyError, nullptr};
  }
};

}  // namespace

std::unique_ptr<Driver> makeJackDriver() {
  return makeJackDriver(JackLimits{});
}

std::unique_ptr<Driver> makeJackDriver(const JackLimits& limits) {
  const JackLibrary* library = JackLibrary::get();
  if (library == nullptr) return std::make_unique<AbsentJackDriver>();
  return std::make_unique<JackDriver>(*library, limits);
}

bool jackLibraryIsPipeWire() {
  const JackLibrary* library = JackLibrary::get();
  return library != nullptr && library->isPipeWire;
}

}  // namespace tolvane::hal
