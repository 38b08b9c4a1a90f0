#include "engine/core_audio_engine.h"

#include <cinttypes>

#include "base/thread_check.h"
#include "core/routing/trace.h"

namespace tolvane {

CoreAudioEngine& CoreAudioEngine::shared() {
  checkMainThread();
  // Never destroyed: the process may end while the device's thread still uses the context.
  static auto* const engine = new CoreAudioEngine;
  return *engine;
}

CoreAudioEngine::CoreAudioEngine(AudioDeviceIOProc ioProc) noexcept : ioProc_(ioProc) {}

std::optional<EngineError> CoreAudioEngine::start(AudioDeviceID deviceID,
                                                  std::span<const PatchConnection> connections) {
  checkMainThread();
  stop();
  currentDeviceID_ = deviceID;
  const std::int64_t inputs = channelCount(deviceID, true);
  const std::int64_t outputs = channelCount(deviceID, false);
  traceLine("[Engine] id=%" PRIu32 " in=%" PRId64 " out=%" PRId64, deviceID, inputs, outputs);

  auto* const context = new IOProcContext(initialContext(inputs, outputs));
  writeConnections(context, connections);
  contextPtr_ = context;
  traceLine("[Engine] context size=%zu ptr=0x%016" PRIxPTR, sizeof *context,
            reinterpret_cast<std::uintptr_t>(context));

  AudioDeviceIOProcID registered = nullptr;
  const OSStatus created = AudioDeviceCreateIOProcID(deviceID, ioProc_, context, &registered);
  traceLine("[Engine] CreateIOProcID status=%" PRId32, created);
  if (created != noErr || registered == nullptr) {
    freeContext();
    return EngineError{EngineError::Case::createProcFailed, created};
  }
  procID_ = registered;

  traceLine("[Engine] AudioDeviceStart...");
  const OSStatus started = AudioDeviceStart(deviceID, procID_);
  traceLine("[Engine] AudioDeviceStart status=%" PRId32, started);
  if (started != noErr) {
    AudioDeviceDestroyIOProcID(deviceID, procID_);
    procID_ = nullptr;
    freeContext();
    return EngineError{EngineError::Case::startFailed, started};
  }
  isRunning_ = true;
  traceLine("[Engine] Running ✓");
  return std::nullopt;
}

void CoreAudioEngine::stop() noexcept {
  checkMainThread();
  if (procID_ != nullptr) {
    AudioDeviceStop(currentDeviceID_, procID_);
    AudioDeviceDestroyIOProcID(currentDeviceID_, procID_);
    procID_ = nullptr;
  }
  // Freed last: the callback may read the context until it is unregistered.
  freeContext();
  isRunning_ = false;
}

void CoreAudioEngine::writeConnections(IOProcContext* to,
                                       std::span<const PatchConnection> connections) const {
  checkMainThread();
  tolvane::writeConnections(to, connections);
}

void CoreAudioEngine::freeContext() noexcept {
  delete contextPtr_;
  contextPtr_ = nullptr;
}

}  // namespace tolvane
