// The routes and the signal with which tolvanectl and its rivals are compared on a running sound server.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/patch/patch_connection.h"

namespace tolvane::bench {

/// A device with as many outputs as inputs, and routes of different gains.
struct MatrixCase {
  std::size_t channels;
  std::size_t routesAnOutput;

  /// Output n plays the inputs n, n + 1, n + 2, … modulo the channels.
  [[nodiscard]] std::vector<PatchConnection> routes() const;
  /// "8 × 8, 64 routes"
  [[nodiscard]] std::string name() const;
};

/// The constant sample that each input plays.
[[nodiscard]] float inputSample(std::size_t channel) noexcept;

/// The constant sample that each output must then play. It is exact, whatever the order of the routes: gains
/// and samples have so few bits that no sum is rounded.
[[nodiscard]] std::vector<float> outputSamples(const MatrixCase& matrix);

/// Writes the routes as a patch file.
void writePatch(const MatrixCase& matrix, const std::string& path);

}  // namespace tolvane::bench
