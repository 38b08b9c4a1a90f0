// A model in the test's own process, for tests of the doors.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ctl/control/control.h"
#include "ctl/support/files.h"

namespace tolvane::ctl {

/// Keeps the levels of a meter that the test sets.
struct StillMeter : control::Meter {
  void ask() override { isAsked = true; }
  [[nodiscard]] std::optional<control::Meters> take() override {
    return std::exchange(isAsked, false) ? std::optional(meters) : std::nullopt;
  }
  bool isAsked = false;
  control::Meters meters{{{0.5F, 0.25F, false}, {}}, {{1.0F, 0.5F, true}, {}}};
};

class ModelTest : public testing::Test {
 protected:
  ModelTest() {
    test::writePatch(path_, {{0, 0, 0.5F, true}, {1, 1, 1.0F, false}});
    ::mkdir(scenes_.c_str(), 0700);
    test::writePatch(scenes_ + "/1 Verse.json", {{0, 1, 0.25F, true}});
    test::writePatch(scenes_ + "/2 Chorus.json", {});
    patch_ = std::make_unique<PatchSource>(path_);
    const Routes routes = patch_->load().value();
    control::Control::Config config;
    config.sceneFolder = scenes_;
    config.inputLabels = {"Vox", ""};
    config.outputLabels = {"", "Wedge"};
    config.device = [this] { return device_; };
    control_ = std::make_unique<control::Control>(config, *patch_, routes, &meter_);
  }

  test::TemporaryFolder folder_;
  std::string path_ = folder_ / "patch.json";
  std::string scenes_ = folder_ / "scenes";
  control::DeviceStatus device_{.name = "Box",
                                .isAlive = true,
                                .inputs = 2,
                                .outputs = 2,
                                .sampleRateHz = 48000.0,
                                .bufferFrames = 64,
                                .cycles = 1234,
                                .deviceOverloads = 3,
                                .callbackOverloads = 1,
                                .load = 0.125,
                                .peakLoad = 0.5};
  StillMeter meter_;
  std::unique_ptr<PatchSource> patch_;
  std::unique_ptr<control::Control> control_;
};

}  // namespace tolvane::ctl
