#include "ctl/render/plan.h"

#include <algorithm>

#include <sys/stat.h>

#include "core/routing/sounding_routes.h"
#include "ctl/render/sound_file.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat fileA {};
  struct stat fileB {};
  return ::stat(a.c_str(), &fileA) == 0 && ::stat(b.c_str(), &fileB) == 0 && fileA.st_dev == fileB.st_dev &&
         fileA.st_ino == fileB.st_ino;
}

void noteIfAny(std::vector<std::string>& notes, std::int64_t routes, const char* direction,
               std::int32_t channels) {
  if (routes == 0) return;
  notes.push_back(std::to_string(routes) + (routes == 1 ? " route is" : " routes are") +
                  " silent: the file has only " + std::to_string(channels) + " " + direction +
                  (channels == 1 ? " channel" : " channels"));
}

}  // namespace

Result<std::int32_t, Failure> outputChannelCount(const RenderOptions& options, const Routes& routes) {
  if (options.outputChannels) return *options.outputChannels;
  std::int64_t highest = -1;
  for (const PatchConnection* route : soundingRoutes(routes)) {
    if (route->inputChannel >= 0) highest = std::max(highest, route->outputChannel);
  }
  if (highest < 0) {
    return Failure{
        about(options.patchPath, "no route is active, so the outputs must be given with --outputs")};
  }
  if (highest >= kMostFileChannels) {
    return Failure{about(options.patchPath, "output " + std::to_string(highest + 1) +
                                                " is routed, but a sound file has at most " +
                                                std::to_string(kMostFileChannels) + " channels")};
  }
  return static_cast<std::int32_t>(highest + 1);
}

std::optional<Failure> overwritesASource(const RenderOptions& options) {
  for (const std::string& source : {options.inputPath, options.patchPath}) {
    if (isSameFile(source, options.outputPath)) {
      return Failure{about(options.outputPath, "would replace what it is made from")};
    }
  }
  return std::nullopt;
}

std::vector<std::string> silentRouteNotes(const Routes& routes, std::int32_t inputChannels,
                                          std::int32_t outputChannels) {
  std::int64_t noInput = 0;
  std::int64_t noOutput = 0;
  for (const PatchConnection* route : soundingRoutes(routes)) {
    if (route->inputChannel < 0 || route->inputChannel >= inputChannels) {
      ++noInput;
    } else if (route->outputChannel < 0 || route->outputChannel >= outputChannels) {
      ++noOutput;
    }
  }
  std::vector<std::string> notes;
  noteIfAny(notes, noInput, "input", inputChannels);
  noteIfAny(notes, noOutput, "output", outputChannels);
  return notes;
}

}  // namespace tolvane::ctl
