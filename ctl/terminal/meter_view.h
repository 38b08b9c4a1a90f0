// Peak meters of the routed channels, drawn on a terminal or printed line by line.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tolvane::ctl {

/// One meter's reading.
struct MeterReading {
  std::string label;  // "in 1", one-based
  float peak = 0.0F;  // linear, since the last reading
};

/// The data that a meter view can show.
struct MeterPicture {
  std::string deviceName;
  std::uint64_t cycles = 0;
  std::uint64_t overloads = 0;
  std::string message;  // the newest message, or empty
  std::vector<MeterReading> inputs;
  std::vector<MeterReading> outputs;
};

/// A display of the meters. [main-thread]
class MeterView {
 public:
  virtual ~MeterView() = default;
  /// The time between two calls of show().
  [[nodiscard]] virtual std::chrono::milliseconds interval() const noexcept = 0;
  virtual void show(const MeterPicture& picture) = 0;
  /// True if the user asked to end the run, by a key or by closing the terminal.
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

/// Opens a full-screen view on the terminal. Null if standard output is no terminal, or a terminal that
/// cannot move its cursor. The view's destructor restores the terminal. [main-thread]
[[nodiscard]] std::unique_ptr<MeterView> makeMeterScreen();

}  // namespace tolvane::ctl
