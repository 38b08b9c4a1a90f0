#include "core/routing/mix/clear.h"

namespace tolvane {

void clearOutputs(AudioBufferList& output) noexcept {
  AudioBuffer* const end = output.mBuffers + output.mNumberBuffers;
  for (AudioBuffer* buffer = output.mBuffers; buffer != end; ++buffer) {
    if (buffer->mNumberChannels != 0 && buffer->mData != nullptr) clearFrom(*buffer, 0);
  }
}

}  // namespace tolvane
