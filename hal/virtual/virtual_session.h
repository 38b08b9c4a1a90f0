#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include "hal/driver/driver.h"
#include "hal/virtual/deadline_clock.h"
#include "hal/virtual/loopback.h"
#include "hal/virtual/sine_bank.h"
#include "hal/virtual/virtual_buffers.h"
#include "hal/virtual/virtual_model.h"

namespace tolvane::hal {

/// One callback running on the virtual device: its IO thread and its buffers.
class VirtualSession final : public Session {
 public:
  /// Throws std::bad_alloc or std::system_error. [not-io]
  VirtualSession(VirtualModel& model, SessionClient& client);
  VirtualSession(const VirtualSession&) = delete;
  VirtualSession& operator=(const VirtualSession&) = delete;
  ~VirtualSession() override;

 private:
  /// Counts as a session on the model for its lifetime.
  class Stay {
   public:
    explicit Stay(VirtualModel& model) : model_(model), begun_(model.beginSession()) {}
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;
    ~Stay() { model_.endSession(); }
    [[nodiscard]] const VirtualDeviceConfig& config() const noexcept { return begun_.device; }
    [[nodiscard]] const TolvaneRehearsal& rehearsal() const noexcept { return begun_.rehearsal; }

   private:
    VirtualModel& model_;
    const VirtualModel::SessionConfig begun_;
  };

  void run() noexcept;
  void runInTime() noexcept;
  void freewheel() noexcept;
  bool adoptBufferFrames() noexcept;
  void cycle(std::int64_t dueNs) noexcept;

  VirtualModel& model_;
  SessionClient& client_;
  Stay stay_;
  SineBank sines_;
  VirtualBuffers input_;
  VirtualBuffers output_;
  std::unique_ptr<Loopback> loopback_;  // null: the configured signal and tap
  std::uint32_t frames_;
  std::uint64_t firstFrame_ = 0;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace tolvane::hal
