#pragma once

#include "hal/driver/buffer_list.h"
#include "hal/driver/driver.h"

namespace tolvane::hal {

/// Presents the buffers of a device that came back as the streams that the callback was started with, so that
/// every channel keeps its number. A stream whose channel count has changed has no data. If the layout is the
/// same, the callback gets the device's own lists.
class BufferView {
 public:
  BufferView(const DeviceInfo& promised, const DeviceInfo& actual);

  /// The cycle as the callback sees it. Valid until the next call. [io-thread]
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
