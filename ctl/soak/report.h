#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ctl/soak/checker.h"
#include "ctl/soak/process_state.h"

namespace tolvane::ctl {

/// The state of a soak at one moment.
struct SoakMoment {
  double minutes;
  ProcessState process;
  std::uint64_t cycles;
  std::uint64_t overloads;
};

/// All that a soak has found.
struct SoakResult {
  std::string deviceName;
  std::size_t inputs = 0;
  std::size_t outputs = 0;
  double sampleRateHz = 0.0;
  std::uint32_t bufferFrames = 0;
  bool isFullSpeed = false;
  std::string begun;               // date and time
  double seconds = 0.0;            // on the wall clock
  std::string scheduling;          // of the audio thread; empty: unknown
  std::uint64_t overloads = 0;     // that the device reported
  std::uint64_t losses = 0;        // how often the device went
  std::uint64_t edits = 0;         // made
  std::uint64_t publications = 0;  // of them
  SoakCounts counts;
  std::optional<std::string> firstWrong;
  std::vector<SoakMoment> moments;

  /// What makes the soak a failure; empty if nothing does. [not-io]
  [[nodiscard]] std::string failure(const LoopCheck& loops) const;
};

using Facts = std::vector<std::pair<std::string, std::string>>;

/// Names and values in words: the counts of a result. [not-io]
[[nodiscard]] Facts soakFacts(const SoakResult& result, const SoakChecker& checker);

/// A page that needs no other file, with pictures. [not-io]
[[nodiscard]] std::string soakPage(const SoakResult& result, const SoakChecker& checker);

}  // namespace tolvane::ctl
