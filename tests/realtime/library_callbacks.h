// How a test gets between a sound server's library and the driver's callback: the drivers look up the
// library's functions by name, and the test answers for the function that registers the callback.
#pragma once

#include <string_view>

#include "realtime/io_path_watch.h"

namespace tolvane::test {

/// Of one library each: the function that the driver gets instead of the one `found` under this name.
void* watchedFunction(std::string_view name, void* found);

/// Everything in its lifetime counts as our part of a cycle. [io-thread]
class OurPart {
 public:
  OurPart() noexcept : watch_(IoPathWatch::current()) {
    if (watch_ != nullptr) watch_->enter();
  }
  OurPart(const OurPart&) = delete;
  OurPart& operator=(const OurPart&) = delete;
  ~OurPart() {
    if (watch_ != nullptr) watch_->leave();
  }

 private:
  IoPathWatch* const watch_;
};

}  // namespace tolvane::test
