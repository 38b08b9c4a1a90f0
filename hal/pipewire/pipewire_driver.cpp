#include "hal/pipewire/pipewire_driver.h"

#include <mutex>
#include <utility>

#include "hal/pipewire/library.h"
#include "hal/pipewire/server.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

using pipewire::FilterSession;
using pipewire::Server;

class PipeWireSession final : public Session {
 public:
  PipeWireSession(std::shared_ptr<Server> server, std::shared_ptr<FilterSession> session)
      : server_(std::move(server)), session_(std::move(session)) {}
  ~PipeWireSession() override { server_->end(std::move(session_)); }
  PipeWireSession(const PipeWireSession&) = delete;
  PipeWireSession& operator=(const PipeWireSession&) = delete;

 private:
  std::shared_ptr<Server> server_;
  std::shared_ptr<FilterSession> session_;
};

class PipeWireDriver final : public Driver {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "pipewire"; }

  std::vector<DeviceInfo> devices() override {
    const auto server = serverOrNull();
    auto devices = server ? server->devices() : std::nullopt;
    return devices ? *std::move(devices) : std::vector<DeviceInfo>{};
  }

  [[nodiscard]] bool awaitsServer() const override {
    const std::lock_guard lock(mutex_);
    return server_ && server_->isSilent();
  }

  [[nodiscard]] std::string server() const override {
    return pipewire::library() != nullptr ? "pipewire" : "";
  }

  [[nodiscard]] std::string problem() const override { return pipewire::libraryProblem(); }

  void setObserver(DeviceObserver& observer) override {
    if (const auto server = serverOrNull()) {
      server->setObserver([this, &observer] { observer.devicesChanged(*this); });
    }
  }

  OSStatus setBufferFrames(const DeviceInfo& device, std::uint32_t frames) override {
    const auto server = serverOrNull();
    if (!server) return kAudioHardwareBadDeviceError;
    if (device.maxBufferFrames == 0) return kAudioHardwareUnsupportedOperationError;
    server->setQuantum(device.uid, frames);
    return noErr;
  }

  StartResult start(const DeviceInfo& device, SessionClient& client) override {
    const auto server = serverOrNull();
    if (!server) return {kAudioHardwareBadDeviceError, nullptr};
    Server::Started started = server->start(device, client);
    if (!started.session) return {started.status, nullptr};
    return {noErr, std::make_unique<PipeWireSession>(server, std::move(started.session))};
  }

 private:
  std::shared_ptr<Server> serverOrNull() {
    const std::lock_guard lock(mutex_);
    const pipewire::Library* library = pipewire::library();
    if (!server_ && library != nullptr) {
      server_ = Server::create(*library);
      if (!server_) throw noThreadLeft();
    }
    return server_;
  }

  mutable std::mutex mutex_;  // guards server_
  std::shared_ptr<Server> server_;
};

}  // namespace

std::unique_ptr<Driver> makePipeWireDriver() {
  return std::make_unique<PipeWireDriver>();
}

}  // namespace tolvane::hal
