#pragma once

#include <QPointer>

#include "base/fatal.h"

namespace tolvane {

/// Returns the control. A missing control is a programming error and ends the process.
template <class Control>
[[nodiscard]] Control& required(const QPointer<Control>& control) {
  if (control.isNull()) fatal("a control of the window is missing");
  return *control;
}

}  // namespace tolvane
