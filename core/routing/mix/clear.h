#pragma once

#include <cstdint>
#include <cstring>

#include "hal/core_audio.h"

namespace tolvane {

/// Clears all bytes of every output buffer that has channels and data. [io-thread]
void clearOutputs(AudioBufferList& output) noexcept;

/// Clears the bytes after the first `frames` frames. The buffer holds at least that many. [io-thread]
inline void clearFrom(AudioBuffer& buffer, std::int64_t frames) noexcept {
  const std::uint64_t kept = static_cast<std::uint64_t>(frames) * buffer.mNumberChannels * sizeof(float);
  if (kept < buffer.mDataByteSize)
    std::memset(static_cast<char*>(buffer.mData) + kept, 0, buffer.mDataByteSize - kept);
}

}  // namespace tolvane
