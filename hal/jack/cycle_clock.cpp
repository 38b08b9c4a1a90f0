#include "hal/jack/cycle_clock.h"

#include "hal/driver/time_stamp.h"

namespace tolvane::hal {
namespace {

UInt64 nsOf(double us) noexcept {
  return static_cast<UInt64>(us * 1000.0);
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

  const auto frame = static_cast<Float64>(sampleTime_);
  const auto hostUs = static_cast<double>(startUs);
  const auto period = static_cast<double>(periodUs);
  return {timeStamp(frame, nsOf(hostUs)), timeStamp(frame - frames, nsOf(hostUs - period)),
          timeStamp(frame + frames, nsOf(hostUs + period))};
}

}  // namespace tolvane::hal
