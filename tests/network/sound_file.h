// Reads what a recorder has written.
#pragma once

#include <string>
#include <vector>

namespace tolvane::test {

struct Sound {
  unsigned channels = 0;
  std::vector<float> samples;  // interleaved
};

/// Reads a WAV file. It may be cut off or say nothing of its length, as a recorder that was ended leaves it.
/// Failures throw std::runtime_error.
[[nodiscard]] Sound readSound(const std::string& path);

}  // namespace tolvane::test
