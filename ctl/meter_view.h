// Peak meters of the routed channels, drawn on a terminal or printed line by line.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/patch_connection.h"
#include "ctl/meter_bank.h"

namespace tolvane::ctl {

/// One meter's reading.
struct MeterReading {
  std::string label;  // "in 1", one-based
  float peak = 0.0F;  // linear, since the last reading
};

/// Everything that a meter view may show.
struct MeterPicture {
  std::string deviceName;
  std::uint64_t cycles = 0;
  std::uint64_t overloads = 0;
  std::string message;  // the newest, or empty
  std::vector<MeterReading> inputs;
  std::vector<MeterReading> outputs;
};

/// Takes the peaks of the channels that the sounding routes use, each once, in order; channels that the
/// device does not have (counts given) are left out. [main-thread]
void readMeters(MeterBank& bank, std::span<const PatchConnection> routes, std::int64_t deviceInputs,
                std::int64_t deviceOutputs, MeterPicture& picture);

/// [main-thread]
class MeterView {
 public:
  virtual ~MeterView() = default;
  /// How often it wants to be shown.
  [[nodiscard]] virtual std::chrono::milliseconds interval() const noexcept = 0;
  virtual void show(const MeterPicture& picture) = 0;
  /// Whether the user asked, by a key, to end the run.
  [[nodiscard]] virtual bool endAsked() { return false; }
};

/// One line a second on standard output.
class MeterLines : public MeterView {
 public:
  [[nodiscard]] std::chrono::milliseconds interval() const noexcept override {
    return std::chrono::milliseconds(1000);
  }
  void show(const MeterPicture& picture) override;
};

/// Takes the terminal for a picture; null when standard output is no terminal, or one that cannot be drawn
/// on. The terminal is given back when the view ends.
[[nodiscard]] std::unique_ptr<MeterView> makeMeterScreen();

}  // namespace tolvane::ctl
