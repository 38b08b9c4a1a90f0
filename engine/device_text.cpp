#include "engine/device_text.h"

#include <cstddef>
#include <limits>
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

std::optional<std::string> textAt(AudioDeviceID device, const AudioObjectPropertyAddress& address) {
  checkNotIo();
  CFStringRef reference = nullptr;
  UInt32 size = sizeof(void*);
  const OSStatus status = AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &reference);
  const OwnedString owned(reference);  // released even if the status is an error
  if (status != noErr || reference == nullptr) return std::nullopt;
  return utf8(reference);
}

}  // namespace

std::optional<std::string> deviceText(AudioDeviceID device, AudioObjectPropertySelector selector) {
  return textAt(device, {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain});
}

std::optional<std::string> channelText(AudioDeviceID device, bool isInput, std::int64_t channel,
                                       AudioObjectPropertySelector selector) {
  if (channel < 0 || channel >= std::numeric_limits<UInt32>::max()) return std::nullopt;
  const auto scope = isInput ? kAudioObjectPropertyScopeInput : kAudioObjectPropertyScopeOutput;
  auto text = textAt(device, {selector, scope, static_cast<UInt32>(channel + 1)});
  return text && text->empty() ? std::nullopt : text;
}

}  // namespace tolvane
