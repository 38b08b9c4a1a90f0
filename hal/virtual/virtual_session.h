#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "hal/driver/driver.h"
#include "hal/virtual/deadline_clock.h"
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
    explicit Stay(VirtualModel& model) : config(model.beginSession()), model_(model) {}
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;
    ~Stay() { model_.endSession(); }
    const VirtualDeviceConfig config;

   private:
    VirtualModel& model_;
  };

  void run() noexcept;
  void adoptBufferFrames(DeadlineClock& clock) noexcept;
  void cycle(std::int64_t dueNs) noexcept;

  VirtualModel& model_;
  SessionClient& client_;
  Stay stay_;
  SineBank sines_;
  VirtualBuffers input_;
  VirtualBuffers output_;
  std::uint32_t frames_;
  std::uint64_t firstFrame_ = 0;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace tolvane::hal
