#include "hal/jack/jack_prober.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "hal/jack/jack_client.h"
#include "hal/jack/jack_devices.h"
#include "hal/support/thread.h"

namespace tolvane::hal {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kAnswerTimeout{140};
constexpr std::chrono::milliseconds kAnswerLifetime{100};

std::vector<DeviceInfo> askServer(const JackLibrary& library) {
  jack_status_t status;
  const JackClientPtr client = openJackClient(library, "Tolvane-look", status);
  if (!client) return {};
  const double sampleRateHz = library.getSampleRate(client.get());
  const std::uint32_t bufferFrames = library.getBufferSize(client.get());
  std::vector<DeviceInfo> devices;
  for (const JackDevice& device : groupJackPorts(physicalJackPorts(library, client.get()))) {
    devices.push_back(describeJackDevice(device, sampleRateHz, bufferFrames));
  }
  return devices;
}

}  // namespace

struct JackProber::Question {
  std::mutex mutex;
  std::condition_variable answered;
  bool open = false;
  Clock::time_point askedAt;
  Clock::time_point answeredAt;
  bool everAnswered = false;
  std::vector<DeviceInfo> answer;

  [[nodiscard]] bool isFresh(Clock::time_point now) const {
    return everAnswered && now - answeredAt < kAnswerLifetime;
  }

  void settle(std::vector<DeviceInfo> devices) {
    const std::lock_guard lock(mutex);
    answer = std::move(devices);
    everAnswered = true;
    answeredAt = Clock::now();
    open = false;
    answered.notify_all();
  }
};

JackProber::JackProber(const JackLibrary& library)
    : library_(library), question_(std::make_shared<Question>()) {}

std::vector<DeviceInfo> JackProber::devices() {
  std::unique_lock lock(question_->mutex);
  const Clock::time_point now = Clock::now();
  if (!question_->open && !question_->isFresh(now)) {
    question_->askedAt = now;
    question_->open = true;
    lock.unlock();
    runDetached("tolvane-jack",
                [&library = library_, question = question_] { question->settle(askServer(library)); });
    lock.lock();
  }
  const bool known = question_->answered.wait_until(lock, question_->askedAt + kAnswerTimeout,
                                                    [this] { return !question_->open; });
  return known ? question_->answer : std::vector<DeviceInfo>{};
}

}  // namespace tolvane::hal
