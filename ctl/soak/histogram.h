#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tolvane::ctl {

/// How often durations occurred, in classes that are a quarter of an octave wide. One thread adds; all memory
/// is part of the object.
class Histogram {
 public:
  struct Class {
    std::uint64_t fromNs;
    std::uint64_t toNs;  // beyond the class
    std::uint64_t count;
  };

  /// Wait-free. [io-thread]
  void add(std::uint64_t ns) noexcept {
    std::atomic<std::uint64_t>& count = counts_[classOf(ns)];
    count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    if (ns > maxNs_.load(std::memory_order_relaxed)) maxNs_.store(ns, std::memory_order_relaxed);
  }

  [[nodiscard]] std::uint64_t maxNs() const noexcept { return maxNs_.load(std::memory_order_relaxed); }

  /// The classes from the first to the last that occurred. [not-io]
  [[nodiscard]] std::vector<Class> classes() const {
    std::vector<Class> result;
    for (std::size_t c = 0; c < counts_.size(); ++c) {
      const std::uint64_t count = counts_[c].load(std::memory_order_relaxed);
      if (count != 0 || !result.empty()) result.push_back({beginOf(c), beginOf(c + 1), count});
    }
    while (!result.empty() && result.back().count == 0) result.pop_back();
    return result;
  }

  /// The end of the class below which this share of all durations lie; 0 if there are none. [not-io]
  [[nodiscard]] std::uint64_t percentileNs(double share) const {
    const std::vector<Class> all = classes();
    std::uint64_t total = 0;
    for (const Class& each : all) total += each.count;
    std::uint64_t sum = 0;
    for (const Class& each : all) {
      sum += each.count;
      if (static_cast<double>(sum) >= share * static_cast<double>(total)) return std::min(each.toNs, maxNs());
    }
    return 0;
  }

 private:
  static constexpr unsigned kPartsBits = 2;
  static constexpr std::size_t kClasses = 40U << kPartsBits;  // to 18 minutes

  static std::size_t classOf(std::uint64_t ns) noexcept {
    if (ns < 1U << kPartsBits) return static_cast<std::size_t>(ns);
    const auto octave = static_cast<unsigned>(std::bit_width(ns)) - 1;
    const std::uint64_t part = (ns >> (octave - kPartsBits)) & ((1U << kPartsBits) - 1);
    const std::size_t number = ((std::size_t{octave} - 1) << kPartsBits) + static_cast<std::size_t>(part);
    return std::min(number, kClasses - 1);
  }

  static std::uint64_t beginOf(std::size_t number) noexcept {
    if (number < 1U << kPartsBits) return number;
    const std::size_t octave = (number >> kPartsBits) + 1;
    const std::uint64_t part = number & ((1U << kPartsBits) - 1);
    return ((std::uint64_t{1} << kPartsBits) + part) << (octave - kPartsBits);
  }

  std::array<std::atomic<std::uint64_t>, kClasses> counts_{};
  std::atomic<std::uint64_t> maxNs_{0};
};

}  // namespace tolvane::ctl
