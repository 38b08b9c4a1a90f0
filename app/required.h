#pragma once

#include <QPointer>

#include "base/fatal.h"

namespace tolvane {

/// The control; one that is missing is a mistake of ours and ends the process.
template <class Control>
[[nodiscard]] Control& required(const QPointer<Control>& control) {
  if (control.isNull()) fatal("a control of the window is missing");
  return *control;
}

}  // namespace tolvane
