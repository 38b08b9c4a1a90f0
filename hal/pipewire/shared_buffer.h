// The buffers that a server shares with us.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::hal::pipewire {

/// Notes how many bytes of the buffer's samples a cycle may touch. sampleBytes() returns it. [any-thread]
inline void setSampleBytes(pw_buffer& buffer, std::size_t bytes) noexcept {
  buffer.user_data = std::bit_cast<void*>(std::uintptr_t{bytes});
}

/// 0 until they are set. Wait-free. [any-thread]
inline std::size_t sampleBytes(const pw_buffer& buffer) noexcept {
  return std::bit_cast<std::uintptr_t>(buffer.user_data);
}

/// Finds out how much of the buffer is there: a server can state a size that its memory does not have, and
/// the system ends a process that touches what is not there. Calls setSampleBytes(), with 0 if the buffer
/// cannot be used. A kernel before 5.14 cannot tell; then the server is believed. [not-io]
void checkBuffer(pw_buffer& buffer, bool isForWriting) noexcept;

}  // namespace tolvane::hal::pipewire
