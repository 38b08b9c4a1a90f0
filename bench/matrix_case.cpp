#include "bench/matrix_case.h"

#include <fstream>
#include <stdexcept>

#include "core/patch/patch_file.h"

namespace tolvane::bench {

std::vector<PatchConnection> MatrixCase::routes() const {
  std::vector<PatchConnection> routes;
  for (std::size_t output = 0; output < channels; ++output) {
    for (std::size_t n = 0; n < routesAnOutput; ++n) {
      const std::size_t input = (output + n) % channels;
      const float gain = static_cast<float>(routes.size() + 1) / 128.0F;
      routes.push_back({static_cast<std::int64_t>(input), static_cast<std::int64_t>(output), gain, true});
    }
  }
  return routes;
}

std::string MatrixCase::name() const {
  const std::string count = std::to_string(channels);
  return count + " × " + count + ", " + std::to_string(channels * routesAnOutput) + " routes";
}

float inputSample(std::size_t channel) noexcept {
  return static_cast<float>(channel + 1) / 64.0F;
}

std::vector<float> outputSamples(const MatrixCase& matrix) {
  std::vector<float> samples(matrix.channels);
  for (const PatchConnection& route : matrix.routes()) {
    samples[static_cast<std::size_t>(route.outputChannel)] +=
        route.gain * inputSample(static_cast<std::size_t>(route.inputChannel));
  }
  return samples;
}

void writePatch(const MatrixCase& matrix, const std::string& path) {
  const PatchEncodeResult text = encodePatch(matrix.routes());
  std::ofstream file(path);
  file << text.value();
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace tolvane::bench
