#include "hal/surface/cf_string.h"

#include <atomic>
#include <cstring>
#include <limits>
#include <string>

#include "base/thread_check.h"
#include "hal/support/utf8.h"

struct TolvaneString {
  std::string text;
  CFIndex utf16Length;
  mutable std::atomic<long> owners{1};
};

namespace {

// The most bytes of UTF-8 that one UTF-16 code unit can stand for.
constexpr CFIndex kMaxBytesPerUnit = 3;

const TolvaneString* stringOf(CFTypeRef object) noexcept {
  return static_cast<const TolvaneString*>(object);
}

}  // namespace

extern "C" {

CFStringRef CFStringCreateWithCString(CFAllocatorRef /*allocator*/, const char* utf8,
                                      CFStringEncoding encoding) {
  tolvane::checkNotIo();
  if (utf8 == nullptr || encoding != kCFStringEncodingUTF8) return nullptr;
  const auto units = tolvane::hal::utf16Length(utf8);
  if (!units) return nullptr;
  return new TolvaneString{utf8, static_cast<CFIndex>(*units)};
}

CFIndex CFStringGetLength(CFStringRef string) {
  return string == nullptr ? 0 : string->utf16Length;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  const bool counts = length >= 0 && length <= std::numeric_limits<CFIndex>::max() / kMaxBytesPerUnit;
  return counts && encoding == kCFStringEncodingUTF8 ? length * kMaxBytesPerUnit : kCFNotFound;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  if (string == nullptr || buffer == nullptr || encoding != kCFStringEncodingUTF8) return 0;
  if (bufferSize <= 0 || string->text.size() >= static_cast<std::size_t>(bufferSize)) return 0;
  std::memcpy(buffer, string->text.c_str(), string->text.size() + 1);
  return 1;
}

CFTypeRef CFRetain(CFTypeRef object) {
  if (object != nullptr) stringOf(object)->owners.fetch_add(1, std::memory_order_relaxed);
  return object;
}

void CFRelease(CFTypeRef object) {
  tolvane::checkNotIo();
  if (object == nullptr) return;
  if (stringOf(object)->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete stringOf(object);
}

}  // extern "C"
