#include "base/numeric_locale.h"

#include "base/fatal.h"

namespace tolvane {

namespace {

locale_t cLocale() noexcept {
  // Never freed: threads may use it until the process ends.
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  if (locale == nullptr) fatal("the C locale is missing");
  return locale;
}

}  // namespace

ScopedCLocale::ScopedCLocale() noexcept : previous_(uselocale(cLocale())) {}

ScopedCLocale::~ScopedCLocale() {
  uselocale(previous_);
}

}  // namespace tolvane
