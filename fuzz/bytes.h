// Takes values from a fuzzer's bytes. After the last byte every value is zero or empty.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace tolvane::fuzz {

class Bytes {
 public:
  Bytes(const std::uint8_t* bytes, std::size_t size) : at_(bytes), end_(bytes + size) {}

  [[nodiscard]] bool isEmpty() const { return at_ == end_; }
  [[nodiscard]] std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }

  /// A number of any value, from as many bytes as it has.
  template <class Number>
  Number number() {
    Number value{};
    const std::size_t taken = std::min(sizeof value, left());
    if (taken != 0) std::memcpy(&value, at_, taken);
    at_ += taken;
    return value;
  }

  /// 0 to 255, from one byte.
  std::uint8_t byte() { return number<std::uint8_t>(); }

  /// 0 to count - 1, from one byte.
  std::size_t below(std::size_t count) { return byte() % count; }

  bool coin() { return (byte() & 1U) != 0; }

  /// A text without NUL bytes, up to the next NUL byte, which is taken too.
  std::string text() {
    const std::uint8_t* const stop = std::find(at_, end_, std::uint8_t{0});
    std::string taken(at_, stop);
    at_ = stop == end_ ? end_ : stop + 1;
    return taken;
  }

 private:
  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

}  // namespace tolvane::fuzz
