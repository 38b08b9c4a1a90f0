#pragma once

#include <clocale>
#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace tolvane {

/// While it lives, this thread reads and prints numbers as the C locale does, whatever the process's locale
/// and whoever changes it meanwhile. Other threads are not touched. [not-io]
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
