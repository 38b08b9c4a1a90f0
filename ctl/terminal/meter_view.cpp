#include "ctl/terminal/meter_view.h"

#include <cstdio>

#include "ctl/terminal/decimal.h"

namespace tolvane::ctl {

namespace {

void appendReadings(std::string& line, const std::vector<MeterReading>& readings) {
  for (const MeterReading& reading : readings) {
    if (!line.empty()) line += "  ";
    line += reading.label + " " + decibels(reading.peak) + " dBFS";
  }
}

}  // namespace

void MeterLines::show(const MeterPicture& picture) {
  std::string line;
  appendReadings(line, picture.inputs);
  appendReadings(line, picture.outputs);
  if (line.empty()) line = "no routed channels";
  std::puts(line.c_str());
  std::fflush(stdout);
}

}  // namespace tolvane::ctl
