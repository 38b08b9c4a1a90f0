#pragma once

#include <clocale>
#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace tolvane {

/// Switches the calling thread to the number format of the C locale for the lifetime of the object, whatever
/// the process locale is or becomes. Other threads keep their locale. [not-io]
class ScopedCLocale {
 public:
  ScopedCLocale() noexcept;
  ~ScopedCLocale();
  ScopedCLocale(const ScopedCLocale&) = delete;
  ScopedCLocale& operator=(const ScopedCLocale&) = delete;

 private:
  locale_t previous_;
};

}  // namespace tolvane
