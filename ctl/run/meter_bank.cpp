#include "ctl/run/meter_bank.h"

#include <algorithm>
#include <bit>

#include "core/routing/io_proc.h"

namespace tolvane::ctl {

namespace {

std::atomic<MeterBank*> currentBank{nullptr};

std::uint32_t magnitudeBits(float sample) noexcept {
  return std::bit_cast<std::uint32_t>(sample) & 0x7FFFFFFFU;
}

}  // namespace

MeterBank::MeterBank(std::size_t inputs, std::size_t outputs) : inputs_(inputs), outputs_(outputs) {}

void MeterBank::meter(std::span<const PatchConnection> routes) noexcept {
  const SoundingRoutes sounding = soundingRoutes(routes);
  inputs_.meterOnly(sounding, &PatchConnection::inputChannel);
  outputs_.meterOnly(sounding, &PatchConnection::outputChannel);
}

void MeterBank::observe(const AudioBufferList* input, const AudioBufferList* output) noexcept {
  inputs_.observe(input);
  outputs_.observe(output);
  cycles_.fetch_add(1, std::memory_order_relaxed);
}

float MeterBank::takeInputPeak(std::size_t channel) noexcept {
  return inputs_.takePeak(channel);
}

float MeterBank::takeOutputPeak(std::size_t channel) noexcept {
  return outputs_.takePeak(channel);
}

void MeterBank::Side::meterOnly(const SoundingRoutes& routes,
                                std::int64_t PatchConnection::*channel) noexcept {
  for (std::size_t c = 0; c < count; ++c) {
    const bool routed = std::any_of(routes.begin(), routes.end(), [&](const PatchConnection* route) {
      return route->*channel == static_cast<std::int64_t>(c);
    });
    channels[c].metered.store(routed ? 1 : 0, std::memory_order_relaxed);
    if (!routed) channels[c].peakBits.store(0, std::memory_order_relaxed);
  }
}

void MeterBank::Side::observe(const AudioBufferList* list) noexcept {
  if (list == nullptr) return;
  std::size_t number = 0;  // channel across all buffers, including those without data
  for (UInt32 b = 0; b < list->mNumberBuffers && number < count; ++b) {
    const AudioBuffer& buffer = list->mBuffers[b];
    const std::size_t stride = buffer.mNumberChannels;
    const std::size_t end = std::min(count, number + stride);
    const auto* first = static_cast<const float*>(buffer.mData);
    for (; number < end && first != nullptr; ++number, ++first) {
      if (channels[number].metered.load(std::memory_order_relaxed) == 0) continue;
      raisePeak(channels[number], first, buffer.mDataByteSize / (stride * sizeof(float)), stride);
    }
    number = end;
  }
}

void MeterBank::raisePeak(Channel& channel, const float* first, std::size_t frames,
                          std::size_t stride) noexcept {
  std::uint32_t peak = 0;
  for (std::size_t f = 0; f < frames; ++f) peak = std::max(peak, magnitudeBits(first[f * stride]));
  std::uint32_t shown = channel.peakBits.load(std::memory_order_relaxed);
  // Rarely repeats: only if the main thread takes the peak at the same moment, or the exchange fails
  // spuriously.
  while (peak > shown && !channel.peakBits.compare_exchange_weak(shown, peak, std::memory_order_relaxed)) {
  }
}

float MeterBank::Side::takePeak(std::size_t channel) noexcept {
  if (channel >= count) return 0.0F;
  return std::bit_cast<float>(channels[channel].peakBits.exchange(0, std::memory_order_relaxed));
}

void setMeterBank(MeterBank* bank) noexcept {
  currentBank.store(bank, std::memory_order_release);
}

OSStatus meteredIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                       const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                       const AudioTimeStamp* outputTime, void* clientData) noexcept {
  MeterBank* const bank = currentBank.load(std::memory_order_acquire);
  if (bank == nullptr)
    return halIOProc(device, now, inputData, inputTime, outputData, outputTime, clientData);
  const CycleScope scope(bank->cycleMarks());
  const OSStatus status = halIOProc(device, now, inputData, inputTime, outputData, outputTime, clientData);
  bank->observe(inputData, outputData);
  return status;
}

}  // namespace tolvane::ctl
