// The surface's strings with a count of all references, so that tests detect a leak or a double release.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "hal/core_audio.h"
#include "support/scripted_hal.h"

struct TolvaneString {
  std::string utf8;
  int references = 1;
};

namespace {

int liveReferences = 0;

TolvaneString* mutableString(CFTypeRef object) {
  return const_cast<TolvaneString*>(static_cast<const TolvaneString*>(object));
}

/// The number of UTF-16 code units: one for each UTF-8 sequence, two if it has four bytes.
CFIndex codeUnits(const std::string& utf8) {
  CFIndex units = 0;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0U) != 0x80U) units += byte >= 0xF0U ? 2 : 1;
  }
  return units;
}

}  // namespace

extern "C" {

CFStringRef CFStringCreateWithCString(CFAllocatorRef /*allocator*/, const char* utf8,
                                      CFStringEncoding encoding) {
  if (utf8 == nullptr || encoding != kCFStringEncodingUTF8) return nullptr;
  ++liveReferences;
  return new TolvaneString{utf8};
}

CFIndex CFStringGetLength(CFStringRef string) {
  return codeUnits(string->utf8);
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding /*encoding*/) {
  return length * 3;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding) {
  const std::string& text = string->utf8;
  if (encoding != kCFStringEncodingUTF8 || static_cast<CFIndex>(text.size()) >= bufferSize) return 0;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return 1;
}

CFTypeRef CFRetain(CFTypeRef object) {
  ++mutableString(object)->references;
  ++liveReferences;
  return object;
}

void CFRelease(CFTypeRef object) {
  if (object == nullptr) return;
  if (liveReferences-- == 0) {
    std::fputs("scripted HAL: a string was released too often\n", stderr);
    std::abort();
  }
  TolvaneString* const string = mutableString(object);
  if (--string->references == 0) delete string;
}

}  // extern "C"

namespace tolvane::test {

int liveStringReferences() {
  return liveReferences;
}

}  // namespace tolvane::test
