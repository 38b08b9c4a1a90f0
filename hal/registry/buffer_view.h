#pragma once

#include <cstddef>
#include <memory>

#include "hal/driver/driver.h"

namespace tolvane::hal {

/// A list of `buffers` buffers, all empty, in one block of memory.
class BufferList {
 public:
  explicit BufferList(std::size_t buffers);
  [[nodiscard]] AudioBufferList& list() noexcept;

 private:
  std::unique_ptr<std::byte[]> bytes_;
};

/// Shows the buffers of a device that came back in the streams that a callback was started with, so that no
/// channel changes its number: a stream that has not the same channels as before is without data. When
/// nothing changed, the device's own lists are shown.
class BufferView {
 public:
  BufferView(const DeviceInfo& promised, const DeviceInfo& actual);

  /// The cycle as the callback is to see it; holds until the next call. [io-thread]
  const IoCycle& show(const IoCycle& cycle) noexcept;

 private:
  struct Direction {
    explicit Direction(StreamLayout promised);
    void show(const AudioBufferList& from, UInt32 frames) noexcept;

    StreamLayout promised;
    BufferList buffers;
  };

  bool same_;
  Direction input_;
  Direction output_;
  IoCycle shown_{};
};

}  // namespace tolvane::hal
