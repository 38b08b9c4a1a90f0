// tolvanectl render gives the same bits as adding the routes one by one.
#include <random>

#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

/// The product of two floats is exact in double, so this rounds once, even if the compiler contracts.
float roundedProduct(float a, float b) {
  return static_cast<float>(static_cast<double>(a) * static_cast<double>(b));
}

/// Rounding a sum of two floats to double and then to float gives the same as rounding once.
float roundedSum(float a, float b) {
  return static_cast<float>(static_cast<double>(a) + static_cast<double>(b));
}

/// The reference: adds route by route in order; each output starts at positive zero.
std::vector<float> referenceLoop(const Sound& input, const std::vector<PatchConnection>& routes,
                                 int outputs) {
  std::vector<float> result(input.frames() * static_cast<std::size_t>(outputs), 0.0F);
  int sounding = 0;
  for (const PatchConnection& route : routes) {
    if (!route.active || ++sounding > 64) continue;
    if (route.inputChannel < 0 || route.inputChannel >= input.channels) continue;
    if (route.outputChannel < 0 || route.outputChannel >= outputs) continue;
    for (std::size_t frame = 0; frame < input.frames(); ++frame) {
      const auto from =
          frame * static_cast<std::size_t>(input.channels) + static_cast<std::size_t>(route.inputChannel);
      const auto to =
          frame * static_cast<std::size_t>(outputs) + static_cast<std::size_t>(route.outputChannel);
      const float scaled =
          route.gain == 1.0F ? input.samples[from] : roundedProduct(input.samples[from], route.gain);
      result[to] = roundedSum(result[to], scaled);
    }
  }
  return result;
}

class Random {
 public:
  explicit Random(unsigned seed) : generator_(seed) {}
  int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(generator_); }
  float real(float low, float high) { return std::uniform_real_distribution<float>(low, high)(generator_); }

  float gain() {
    switch (between(0, 5)) {
      case 0:
        return 1.0F;
      case 1:
        return 0.0F;
      case 2:
        return -0.5F;
      default:
        return real(-2.0F, 2.0F);
    }
  }

  /// Quiet, loud and tiny samples, so that rounding occurs.
  float sample() { return real(-1.5F, 1.5F) * (between(0, 9) == 0 ? 1e-20F : 1.0F); }

 private:
  std::mt19937 generator_;
};

struct Case {
  Sound input;
  std::vector<PatchConnection> routes;
  int outputs = 1;
};

Case randomCase(unsigned seed) {
  Random random(seed);
  Case made;
  made.input.channels = random.between(1, 64);
  made.input.sampleRateHz = random.between(0, 1) == 0 ? 44100 : 96000;
  made.outputs = random.between(1, 64);
  const int frames = random.between(1, 1500);
  for (int i = 0; i < frames * made.input.channels; ++i) made.input.samples.push_back(random.sample());
  const int routes = random.between(1, 72);
  for (int i = 0; i < routes; ++i) {
    // Some channels that the files do not have, and some inactive routes.
    made.routes.push_back({random.between(-1, made.input.channels), random.between(-1, made.outputs),
                           random.gain(), random.between(0, 9) != 0});
  }
  return made;
}

class RenderBits : public testing::TestWithParam<unsigned> {};

TEST_P(RenderBits, AreThoseOfThePlainLoopAtEveryBufferSize) {
  constexpr unsigned kPatchesACase = 10;
  const TemporaryFolder folder;
  for (unsigned seed = GetParam() * kPatchesACase; seed < (GetParam() + 1) * kPatchesACase; ++seed) {
    const Case made = randomCase(seed);
    writeSound(folder / "in.wav", made.input);
    writePatch(folder / "patch.json", made.routes);
    const auto expected = bitsOf(referenceLoop(made.input, made.routes, made.outputs));
    std::string firstFile;
    for (const char* buffer : {"1", "7", "64", "512", "4096"}) {
      const Finished run =
          runProgram({"render", "--patch", folder / "patch.json", "--outputs", std::to_string(made.outputs),
                      "--buffer", buffer, folder / "in.wav", folder / "out.wav"});
      ASSERT_EQ(run.status, 0) << run.err;
      const Sound output = readSound(folder / "out.wav");
      ASSERT_EQ(output.channels, made.outputs);
      ASSERT_EQ(output.sampleRateHz, made.input.sampleRateHz);
      ASSERT_TRUE(bitsOf(output.samples) == expected) << "patch " << seed << ", buffer " << buffer;
      // The whole file, not only its samples, is independent of the buffer size and the time of day.
      const std::string file = readBytes(folder / "out.wav");
      if (firstFile.empty()) firstFile = file;
      ASSERT_TRUE(file == firstFile) << "patch " << seed << ", buffer " << buffer;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(TwoHundredPatches, RenderBits, testing::Range(0U, 20U));

}  // namespace
}  // namespace tolvane::test
