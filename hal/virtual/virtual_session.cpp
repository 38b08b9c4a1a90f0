#include "hal/virtual/virtual_session.h"

#include <algorithm>

#include <pthread.h>

#include "hal/driver/time_stamp.h"
#include "hal/support/realtime.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

std::uint32_t maxFrames(const VirtualDeviceConfig& config) noexcept {
  return std::max(config.bufferFrames, VirtualModel::kMaxBufferFrames);
}

}  // namespace

VirtualSession::VirtualSession(VirtualModel& model, SessionClient& client)
    : model_(model),
      client_(client),
      stay_(model),
      sines_(stay_.config().sampleRateHz),
      input_(stay_.config().inputStreams, stay_.config().inputStreamsWithoutData, maxFrames(stay_.config())),
      output_(stay_.config().outputStreams, stay_.config().outputStreamsWithoutData,
              maxFrames(stay_.config())),
      loopback_(stay_.rehearsal().mLoopback != 0
                    ? std::make_unique<Loopback>(stay_.config().outputStreams, maxFrames(stay_.config()))
                    : nullptr),
      frames_(model.bufferFrames()) {
  const SignalsBlocked blocked;
  thread_ = std::thread([this] { run(); });
}

VirtualSession::~VirtualSession() {
  stop_.store(true);
  thread_.join();
}

void VirtualSession::run() noexcept {
  pthread_setname_np(pthread_self(), "tolvane-virtual");
  stay_.rehearsal().mFreewheel != 0 ? freewheel() : runInTime();
}

void VirtualSession::runInTime() noexcept {
  becomeRealtime();
  DeadlineClock clock(stay_.config().sampleRateHz, frames_);
  for (clock.sleep(stop_); !stop_.load(); clock.sleep(stop_)) {
    if (clock.begin()) client_.overload();
    cycle(clock.dueNs());
    if (adoptBufferFrames()) clock.setFrames(frames_);
  }
}

/// Without real-time priority: it never sleeps, so nothing else would run.
void VirtualSession::freewheel() noexcept {
  const std::int64_t beginNs = monotonicNs();
  while (!stop_.load()) {
    const double seconds = static_cast<double>(firstFrame_ + frames_) / stay_.config().sampleRateHz;
    cycle(beginNs + static_cast<std::int64_t>(seconds * 1e9));
    adoptBufferFrames();
  }
}

/// True if the buffer size has changed.
bool VirtualSession::adoptBufferFrames() noexcept {
  const std::uint32_t wanted = model_.bufferFrames();
  if (wanted == frames_) return false;
  frames_ = wanted;
  client_.formatChanged(stay_.config().sampleRateHz, wanted);
  return true;
}

void VirtualSession::cycle(std::int64_t dueNs) noexcept {
  const VirtualDeviceConfig& config = stay_.config();
  AudioBufferList& input = input_.list(frames_);
  AudioBufferList& output = output_.list(frames_);
  VirtualInput* signal = config.inputSignal != nullptr ? config.inputSignal : &sines_;
  if (loopback_) signal = loopback_.get();
  signal->fill(firstFrame_, frames_, input);
  // The cycle begins when its last input frame has arrived, and its output plays at once.
  const auto lengthNs = static_cast<std::int64_t>(frames_ * 1e9 / config.sampleRateHz);
  const auto first = static_cast<Float64>(firstFrame_);
  const AudioTimeStamp inputTime = timeStamp(first, static_cast<UInt64>(dueNs - lengthNs));
  const AudioTimeStamp now = timeStamp(first + frames_, static_cast<UInt64>(dueNs));
  client_.cycle({&now, &input, &inputTime, &output, &now});
  VirtualTap* const tap = loopback_ ? loopback_.get() : config.outputTap;
  if (tap != nullptr) tap->observe(firstFrame_, frames_, output);
  firstFrame_ += frames_;
}

}  // namespace tolvane::hal
