#include "hal/jack/cycle_clock.h"

namespace tolvane::hal {
namespace {

AudioTimeStamp stampOf(std::int64_t sampleTime, double hostTimeUs) noexcept {
  AudioTimeStamp stamp{};
  stamp.mSampleTime = static_cast<Float64>(sampleTime);
  stamp.mHostTime = static_cast<UInt64>(hostTimeUs * 1000.0);
  stamp.mFlags = kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid;
  return stamp;
}

}  // namespace

CycleTimes CycleClock::stamp(const JackLibrary& library, const jack_client_t* client, jack_nframes_t frames,
                             bool& jumped) noexcept {
  jack_nframes_t serverFrame = 0;
  jack_time_t startUs = 0;
  jack_time_t nextUs = 0;
  float periodUs = 0.0F;
  library.getCycleTimes(client, &serverFrame, &startUs, &nextUs, &periodUs);

  jumped = started_ && serverFrame != expectedFrame_;
  // Subtract in the server's 32 bits, where a wrap cancels out.
  sampleTime_ = started_ ? sampleTime_ + static_cast<std::int32_t>(serverFrame - serverFrame_)
                         : static_cast<std::int64_t>(serverFrame);
  started_ = true;
  serverFrame_ = serverFrame;
  expectedFrame_ = serverFrame + frames;

  const auto hostUs = static_cast<double>(startUs);
  const auto period = static_cast<double>(periodUs);
  return {stampOf(sampleTime_, hostUs), stampOf(sampleTime_ - frames, hostUs - period),
          stampOf(sampleTime_ + frames, hostUs + period)};
}

}  // namespace tolvane::hal
