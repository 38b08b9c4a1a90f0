#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tolvane {

/// One route: the device plays an input channel on an output channel, times a gain. Channels are zero-based
/// and counted across all buffers of the device. No range is enforced here.
struct PatchConnection {
  std::int64_t inputChannel = 0;
  std::int64_t outputChannel = 0;
  float gain = 1.0F;   // linear; 1.0 is unity gain
  bool active = true;  // false: kept, shown and saved, but not routed

  /// Equal in all four fields, gains compared as numbers: NaN equals nothing, -0.0 equals 0.0.
  bool operator==(const PatchConnection&) const = default;

  /// The serialised members, in field order.
  enum class CodingKeys { inputChannel, outputChannel, gain, active };
};

/// The key's text, exactly the field's name. [any-thread]
[[nodiscard]] std::string_view stringValue(PatchConnection::CodingKeys key) noexcept;

/// The key with exactly this text, or none. [any-thread]
[[nodiscard]] std::optional<PatchConnection::CodingKeys> codingKey(std::string_view text) noexcept;

/// Keys have no integer form: always none. [any-thread]
[[nodiscard]] std::optional<std::int64_t> intValue(PatchConnection::CodingKeys key) noexcept;

/// No integer makes a key: always none. [any-thread]
[[nodiscard]] std::optional<PatchConnection::CodingKeys> codingKey(std::int64_t value) noexcept;

}  // namespace tolvane
