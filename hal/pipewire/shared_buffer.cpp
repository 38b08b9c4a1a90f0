#include "hal/pipewire/shared_buffer.h"

#include <algorithm>

#include <sys/mman.h>
#include <unistd.h>

#include "hal/pipewire/stream_buffers.h"

namespace tolvane::hal::pipewire {

namespace {

/// More than any cycle needs.
constexpr std::size_t kMostBytes = std::size_t{4} * kMaxCycleFrames * sizeof(float);

bool populate(void* memory, std::size_t bytes, int advice) noexcept {
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t before = reinterpret_cast<std::uintptr_t>(memory) % page;
  return ::madvise(static_cast<std::byte*>(memory) - before, before + bytes, advice) == 0;
}

/// True if the memory is mapped, with something behind it.
bool isThere(void* memory, std::size_t bytes, bool isForWriting) noexcept {
  if (memory == nullptr) return false;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  if (begin + bytes < begin) return false;
  static const bool isKnown = [] {
    char some = 0;
    return populate(&some, sizeof some, MADV_POPULATE_READ);
  }();
  return !isKnown || populate(memory, bytes, isForWriting ? MADV_POPULATE_WRITE : MADV_POPULATE_READ);
}

}  // namespace

void checkBuffer(pw_buffer& buffer, bool isForWriting) noexcept {
  setSampleBytes(buffer, 0);
  if (buffer.buffer == nullptr || buffer.buffer->n_datas == 0) return;
  const spa_data& block = buffer.buffer->datas[0];
  const std::size_t bytes = std::min<std::size_t>(block.maxsize, kMostBytes);
  if (isThere(block.chunk, sizeof *block.chunk, isForWriting) && isThere(block.data, bytes, isForWriting))
    setSampleBytes(buffer, bytes);
}

}  // namespace tolvane::hal::pipewire
