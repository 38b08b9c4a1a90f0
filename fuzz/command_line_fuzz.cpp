// Parses arbitrary words as tolvanectl's command line. The commands themselves are replaced: they check that
// the options are within the documented bounds. Messages must have text and no control characters.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "bytes.h"
#include "ctl/aggregate/command.h"
#include "ctl/check/command.h"
#include "ctl/command_line.h"
#include "ctl/devices/command.h"
#include "ctl/remote/command.h"
#include "ctl/render/command.h"
#include "ctl/run/command.h"
#include "ctl/soak/command.h"
#include "ctl/terminal/messages.h"
#include "require.h"

using tolvane::fuzz::require;

namespace {

int commandsRun = 0;
int messages = 0;

tolvane::ctl::ExitStatus ran() {
  ++commandsRun;
  return tolvane::ctl::ExitStatus::done;
}

void checkWait(double seconds) {
  require(seconds >= 0.0 && seconds <= 1e9);
}

void checkFrames(std::int64_t frames) {
  require(frames >= 1 && frames <= 65536);
}

}  // namespace

namespace tolvane::ctl {

void say(std::string_view text) {
  ++messages;
  require(!text.empty());
  require(std::none_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < ' ' || byte == 0x7F; }));
}

ExitStatus devicesCommand(const DevicesOptions& options) {
  checkWait(options.waitSeconds);
  return ran();
}

ExitStatus checkCommand(const CheckOptions& options) {
  require(!options.paths.empty());
  for (const std::string& path : options.paths) require(!path.empty());
  checkWait(options.waitSeconds);
  return ran();
}

ExitStatus renderCommand(const RenderOptions& options) {
  require(!options.patchPath.empty() && !options.inputPath.empty() && !options.outputPath.empty());
  require(options.outputPath != "-");
  require(!options.outputChannels || (*options.outputChannels >= 1 && *options.outputChannels <= 1024));
  checkFrames(options.bufferFrames);
  return ran();
}

ExitStatus runCommand(const RunOptions& options) {
  require(!options.patchPath.empty());
  checkWait(options.waitSeconds);
  const DeviceSettings& settings = options.settings;
  if (settings.bufferFrames) checkFrames(*settings.bufferFrames);
  require(!settings.sampleRateHz || *settings.sampleRateHz > 0);
  require(!settings.periods || *settings.periods > 0);
  require(!options.seconds || (*options.seconds > 0.0 && *options.seconds <= 1e9));
  return ran();
}

ExitStatus soakCommand(const SoakOptions& options) {
  checkWait(options.waitSeconds);
  require(options.minutes > 0.0 && options.minutes <= 1e9);
  require(options.editsPerMinute >= 0 && options.editsPerMinute <= 1'000'000);
  return ran();
}

ExitStatus remoteCommand(const RemoteOptions& options) {
  require(!options.address.empty());
  require(options.watch != options.command.has_value());
  return ran();
}

ExitStatus aggregateListCommand(const AggregateOptions& options) {
  checkWait(options.waitSeconds);
  return ran();
}

ExitStatus aggregateCreateCommand(const AggregateOptions& options) {
  require(!options.name.empty() && !options.devices.empty());
  for (const std::string& device : options.devices) require(!device.empty());
  checkWait(options.waitSeconds);
  return ran();
}

ExitStatus aggregateDeleteCommand(const AggregateOptions& options) {
  require(!options.name.empty());
  return ran();
}

}  // namespace tolvane::ctl

/// The words are separated by NUL bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::Bytes input(bytes, size);
  std::vector<std::string> words = {"tolvanectl"};
  while (!input.isEmpty()) words.push_back(input.text());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  commandsRun = 0;
  messages = 0;
  const auto status = tolvane::ctl::runCommandLine(static_cast<int>(words.size()), pointers.data());
  // Either one command ran, or an error was explained, or help was asked for.
  if (status == tolvane::ctl::ExitStatus::usage)
    require(commandsRun == 0 && messages > 0);
  else
    require(commandsRun <= 1 && messages == 0);
  return 0;
}
