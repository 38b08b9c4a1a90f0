#include "hal/driver/buffer_list.h"

#include <algorithm>

namespace tolvane::hal {

BufferList::BufferList(std::size_t buffers)
    : memory_(std::make_unique<std::byte[]>(std::max(sizeof(AudioBufferList), bytes(buffers)))) {
  list().mNumberBuffers = static_cast<UInt32>(buffers);
}

}  // namespace tolvane::hal
