#pragma once

#include <string>

#include "hal/core_audio.h"

namespace tolvane {

/// Why a start failed, with the HAL's status.
struct EngineError {
  enum class Case {
    createProcFailed,  // the callback could not be registered, or no identifier came back (status 0)
    startFailed,       // the device did not start
  };
  Case kind;
  OSStatus status;

  bool operator==(const EngineError&) const = default;

  /// The two lines shown to the user, joined by one line feed. [not-io]
  [[nodiscard]] std::string errorDescription() const;
};

}  // namespace tolvane
