#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>

namespace tolvane::test {

/// Where random cycles take their choices from: a seed, or the bytes of a fuzzer, and then a fixed seed.
class Choices {
 public:
  explicit Choices(std::uint64_t seed) : random_(static_cast<std::mt19937::result_type>(seed)) {}
  explicit Choices(std::span<const std::uint8_t> bytes) : random_(1), bytes_(bytes) {}

  /// Any 32 bits.
  std::uint32_t bits() { return bytes_.empty() ? static_cast<std::uint32_t>(random_()) : taken(4); }

  /// 0 to `most`. Takes no more bytes than it needs, so that a byte of the fuzzer stays a choice of its own.
  std::size_t upTo(std::size_t most) {
    if (bytes_.empty()) return random_() % (most + 1);
    return taken(most < 256 ? 1 : most < 65536 ? 2 : 4) % (most + 1);
  }

 private:
  std::uint32_t taken(std::size_t count) {
    std::uint32_t value = 0;
    for (; count != 0 && !bytes_.empty(); --count) {
      value = value << 8U | bytes_.front();
      bytes_ = bytes_.subspan(1);
    }
    return value;
  }

  std::mt19937 random_;
  std::span<const std::uint8_t> bytes_;
};

}  // namespace tolvane::test
