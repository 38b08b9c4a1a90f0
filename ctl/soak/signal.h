// Samples that name their channel and their frame.
#pragma once

#include <cstdint>
#include <optional>

namespace tolvane::ctl {

inline constexpr unsigned kSignalFrameBits = 14;
inline constexpr std::uint64_t kSignalFrames = std::uint64_t{1} << kSignalFrameBits;  // then the names repeat
inline constexpr std::uint64_t kSignalChannels = 1024;

/// What a sample says: its channel, and its frame modulo kSignalFrames.
struct SignalName {
  std::uint64_t channel;
  std::uint64_t frame;
  bool operator==(const SignalName&) const = default;
};

/// The sample of this name: exact in a float, never zero, at most 2^-8 (-48 dBFS), because it may come out of
/// loudspeakers. `channel` is below kSignalChannels. [any-thread]
[[nodiscard]] constexpr float signalSample(std::uint64_t channel, std::uint64_t frame) noexcept {
  const std::uint64_t code = channel << kSignalFrameBits | frame % kSignalFrames;
  return static_cast<float>(static_cast<std::int32_t>(code + 1)) * 0x1p-32F;
}

/// The name that a sample says; none if it is no sample of this signal. [any-thread]
[[nodiscard]] constexpr std::optional<SignalName> signalName(float sample) noexcept {
  const float scaled = sample * 0x1p32F;
  if (!(scaled >= 1.0F && scaled <= 0x1p24F)) return std::nullopt;
  const auto code = static_cast<std::uint64_t>(scaled);
  if (static_cast<float>(code) != scaled) return std::nullopt;
  return SignalName{(code - 1) >> kSignalFrameBits, (code - 1) % kSignalFrames};
}

}  // namespace tolvane::ctl
