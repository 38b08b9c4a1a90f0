// The program as it ships, with a tap on the virtual device's outputs and a count of the window's heartbeats.
// Usage: TAPFILE (at least as large as a TapRecord).
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include <fcntl.h>
#include <sys/mman.h>

#include "app/application.h"
#include "hal/virtual/virtual_device.h"
#include "tap_record.h"

namespace {

using tolvane::test::kTapChannels;
using tolvane::test::TapChannel;
using tolvane::test::TapRecord;

class PeakTap : public tolvane::hal::VirtualTap {
 public:
  explicit PeakTap(TapRecord& record) : record_(record) {}

  void observe(std::uint64_t /*firstFrame*/, std::uint32_t frames,
               const AudioBufferList& output) noexcept override {
    std::size_t channel = 0;
    for (UInt32 i = 0; i < output.mNumberBuffers; ++i) {
      const AudioBuffer& buffer = (&output.mBuffers[0])[i];
      for (UInt32 offset = 0; offset < buffer.mNumberChannels && channel < kTapChannels;
           ++offset, ++channel) {
        observeChannel(channel, static_cast<const float*>(buffer.mData) + offset, buffer.mNumberChannels,
                       frames);
      }
    }
    record_.frames += frames;
    ++record_.cycles;
  }

 private:
  void observeChannel(std::size_t channel, const float* samples, UInt32 stride,
                      std::uint32_t frames) noexcept {
    float peak = 0.0F;
    std::uint64_t crossings = 0;
    float& last = last_.at(channel);
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
      const float sample = samples[std::size_t{frame} * stride];
      peak = std::max(peak, std::fabs(sample));
      if (last < 0.0F && sample >= 0.0F) ++crossings;
      last = sample;
    }
    record_.channels.at(channel).peak = peak;
    record_.channels.at(channel).framesAndCrossings += (std::uint64_t{frames} << 32U) + crossings;
  }

  TapRecord& record_;
  std::array<float, kTapChannels> last_{};
};

TapRecord* sharedRecord = nullptr;

/// Time that this thread has run or waited for a processor so far.
qint64 awakeMs() {
  std::ifstream statistics("/proc/thread-self/schedstat");
  qint64 ranNs = 0;
  qint64 waitedNs = 0;
  statistics >> ranNs >> waitedNs;
  return (ranNs + waitedNs) / 1000000;
}

/// The application calls this after its construction.
void startHeartbeat() {
  auto* const timer = new QTimer(QCoreApplication::instance());
  static QElapsedTimer sinceLast;
  static qint64 awakeBefore = awakeMs();
  sinceLast.start();
  QObject::connect(timer, &QTimer::timeout, [] {
    const qint64 awake = awakeMs();
    const qint64 sleptMs = sinceLast.restart() - (awake - awakeBefore);
    awakeBefore = awake;
    const auto atLeastZero = static_cast<std::uint32_t>(std::max<qint64>(0, sleptMs));
    sharedRecord->longestSleepMs = std::max(sharedRecord->longestSleepMs.load(), atLeastZero);
    ++sharedRecord->heartbeats;
  });
  timer->start(5);
}
Q_COREAPP_STARTUP_FUNCTION(startHeartbeat)

TapRecord* mapRecord(const char* path) {
  const int file = open(path, O_RDWR | O_CLOEXEC);
  if (file < 0) return nullptr;
  void* const memory = mmap(nullptr, sizeof(TapRecord), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  return memory == MAP_FAILED ? nullptr : static_cast<TapRecord*>(memory);
}

}  // namespace

int main(int argc, char** argv) {
  TapRecord* const record = argc == 2 ? mapRecord(argv[1]) : nullptr;
  if (record == nullptr) {
    std::fputs("usage: tolvane_end_to_end TAPFILE\n", stderr);
    return 2;
  }
  sharedRecord = record;
  // Never destroyed: the device may still run when main returns.
  tolvane::hal::VirtualDeviceConfig config;
  config.outputTap = new PeakTap(*record);
  if (tolvane::hal::configureVirtualDevice(config) != noErr) return 3;
  return tolvane::runApplication();
}
