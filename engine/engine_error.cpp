#include "engine/engine_error.h"

namespace tolvane {

std::string EngineError::errorDescription() const {
  const std::string code = std::to_string(status);
  if (kind == Case::createProcFailed) {
    return "AudioDeviceCreateIOProcID failed (" + code +
           ").\nGrant Microphone access: System Settings → Privacy & Security → Microphone.";
  }
  return "AudioDeviceStart failed (" + code + ").\nIs another app using the device exclusively?";
}

}  // namespace tolvane
