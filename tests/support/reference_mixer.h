// The plain loop that every way of routing must agree with, to the bit.
#pragma once

#include <cstddef>
#include <vector>

namespace tolvane::test {

/// Samples by channel, then frame.
using Channels = std::vector<std::vector<float>>;

struct ReferenceRoute {
  std::size_t input;
  std::size_t output;
  float gain;
};

/// Adds each route in order: the product is rounded, then the sum. Routes must name channels that are there.
inline Channels mixPlainly(const Channels& inputs, std::size_t outputCount, std::size_t frames,
                           const std::vector<ReferenceRoute>& routes) {
  Channels outputs(outputCount, std::vector<float>(frames, 0.0F));
  for (const ReferenceRoute& route : routes) {
    for (std::size_t f = 0; f < frames; ++f) {
      const volatile float product = inputs[route.input][f] * route.gain;
      const volatile float sum = outputs[route.output][f] + product;
      outputs[route.output][f] = sum;
    }
  }
  return outputs;
}

}  // namespace tolvane::test
