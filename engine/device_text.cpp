#include "engine/device_text.h"

#include <cstddef>
#include <memory>
#include <type_traits>

#include "base/thread_check.h"

namespace tolvane {

namespace {

struct StringReleaser {
  using pointer = CFStringRef;
  void operator()(CFStringRef string) const noexcept { CFRelease(string); }
};
using OwnedString = std::unique_ptr<std::remove_pointer_t<CFStringRef>, StringReleaser>;

std::string utf8(CFStringRef string) {
  const CFIndex size =
      CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
  std::string text(static_cast<std::size_t>(size), '\0');
  if (CFStringGetCString(string, text.data(), size, kCFStringEncodingUTF8) == 0) return {};
  text.resize(text.find('\0'));
  return text;
}

}  // namespace

std::optional<std::string> deviceText(AudioDeviceID device, AudioObjectPropertySelector selector) {
  checkNotIo();
  const AudioObjectPropertyAddress address{selector, kAudioObjectPropertyScopeGlobal,
                                           kAudioObjectPropertyElementMain};
  CFStringRef reference = nullptr;
  UInt32 size = sizeof(void*);
  const OSStatus status = AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &reference);
  const OwnedString owned(reference);  // released even if the status is an error
  if (status != noErr || reference == nullptr) return std::nullopt;
  return utf8(reference);
}

}  // namespace tolvane
