#include "hal/jack/jack_prober.h"

#include <chrono>
#include <condition_variable>
#include <utility>

#include "hal/driver/time_limits.h"
#include "hal/jack/jack_client.h"
#include "hal/jack/jack_devices.h"
#include "hal/support/thread.h"

namespace tolvane::hal {
namespace {

constexpr std::chrono::milliseconds kAnswerLifetime{100};

std::vector<DeviceInfo> askServer(const JackLibrary& library, const JackWatch::Asker& asker) {
  if (asker) {
    if (auto devices = asker()) return *std::move(devices);
  }
  jack_status_t status;
  const JackClientPtr client = openJackClient(library, "Tolvane-look", status);
  return client ? listJackDevices(library, client.get()) : std::vector<DeviceInfo>{};
}

}  // namespace

struct JackProber::Question {
  std::mutex mutex;
  std::condition_variable answered;
  bool open = false;
  Clock::time_point askedAt;
  Clock::time_point answeredAt;
  bool worthKeeping = false;  // nothing has changed since it was asked
  std::vector<DeviceInfo> answer;

  [[nodiscard]] bool isFresh() const { return worthKeeping && Clock::now() - answeredAt < kAnswerLifetime; }

  void begin() {
    askedAt = Clock::now();
    open = true;
    worthKeeping = true;
  }

  void settle(std::vector<DeviceInfo> devices) {
    const std::lock_guard lock(mutex);
    answer = std::move(devices);
    answeredAt = Clock::now();
    open = false;
    answered.notify_all();
  }
};

JackProber::JackProber(const JackLibrary& library)
    : library_(library), question_(std::make_shared<Question>()) {}

std::vector<DeviceInfo> JackProber::devices() {
  std::unique_lock lock(question_->mutex);
  const bool wasOpen = question_->open;
  const Clock::time_point deadline = (wasOpen ? question_->askedAt : Clock::now()) + kJackListLimit;
  if (!wasOpen && !question_->isFresh()) ask(lock);
  if (!awaitAnswer(lock, deadline)) return {};
  // If something has changed since the request, ask again.
  if (!question_->isFresh()) ask(lock);
  return awaitAnswer(lock, deadline) ? question_->answer : std::vector<DeviceInfo>{};
}

bool JackProber::isSilent() const {
  const std::lock_guard lock(question_->mutex);
  return question_->open;
}

bool JackProber::answers(std::chrono::milliseconds timeout) {
  const Clock::time_point deadline = Clock::now() + timeout;
  std::unique_lock lock(question_->mutex);
  // The server may have answered an open question before it hung. So only a question from now on counts.
  if (question_->open && !awaitAnswer(lock, deadline)) return false;
  if (!question_->open) ask(lock);
  return awaitAnswer(lock, deadline);
}

void JackProber::forget() {
  const std::lock_guard lock(question_->mutex);
  question_->worthKeeping = false;
}

void JackProber::ask(std::unique_lock<std::mutex>& lock) {
  question_->begin();
  lock.unlock();
  const bool isAsked =
      runDetached("tolvane-jack", [&library = library_, asker = asker_, question = question_] {
        question->settle(askServer(library, asker));
      });
  if (!isAsked) {
    question_->settle({});
    throw noThreadLeft();
  }
  lock.lock();
}

bool JackProber::awaitAnswer(std::unique_lock<std::mutex>& lock, Clock::time_point deadline) {
  return question_->answered.wait_until(lock, deadline, [this] { return !question_->open; });
}

}  // namespace tolvane::hal
