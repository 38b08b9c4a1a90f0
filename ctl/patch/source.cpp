#include "ctl/patch/source.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>

#include "core/patch/patch_file.h"
#include "core/routing/sounding_routes.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

constexpr std::size_t kLargestPatchBytes = std::size_t{256} << 20U;

struct FileCloser {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

bool fitsDevice(std::int64_t channel) {
  using Limits = std::numeric_limits<std::int32_t>;
  return channel >= Limits::min() && channel <= Limits::max();
}

PatchFileError beyondDevices(std::size_t element, const char* member, std::int64_t channel) {
  return {"the channel number " + std::to_string(channel) + " of an active route is beyond 32 bits", element,
          member, std::nullopt};
}

/// The error for the first sounding route whose channels the engine could not publish.
std::optional<PatchFileError> unroutable(std::span<const PatchConnection> routes) {
  for (const PatchConnection* route : soundingRoutes(routes)) {
    const auto element = static_cast<std::size_t>(route - routes.data());
    if (!fitsDevice(route->inputChannel)) return beyondDevices(element, "inputChannel", route->inputChannel);
    if (!fitsDevice(route->outputChannel))
      return beyondDevices(element, "outputChannel", route->outputChannel);
  }
  return std::nullopt;
}

/// Opens the file for reading. Returns -1 and sets errno on failure.
int openFile(const std::string& path, Readable readable) {
  if (readable == Readable::anything) return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);  // in case it is a FIFO or tty
}

bool isRegularFile(int descriptor) {
  struct stat file {};
  return ::fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode);
}

/// True if the file says that it is larger than any patch. A pipe or a device does not say.
bool isTooLarge(int descriptor) {
  struct stat file {};
  return ::fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode) &&
         static_cast<std::uint64_t>(file.st_size) > kLargestPatchBytes;
}

Failure tooLarge(const std::string& path) {
  return Failure{about(path, "larger than 256 MiB, so not a patch file")};
}

Failure badPatch(const std::string& path, const PatchFileError& error) {
  return {about(path, error.message()), ExitStatus::badPatch};
}

}  // namespace

Result<std::string, Failure> readPatchText(const std::string& path, Readable readable) {
  const int descriptor = openFile(path, readable);
  const std::unique_ptr<std::FILE, FileCloser> file(descriptor < 0 ? nullptr : ::fdopen(descriptor, "rb"));
  if (!file) return systemFailure(path, errno);
  if (readable == Readable::regularFile && !isRegularFile(descriptor)) {
    return Failure{path + ": is not a regular file"};
  }
  if (isTooLarge(descriptor)) return tooLarge(path);
  std::string text;
  char chunk[65536];
  while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, file.get())) {
    text.append(chunk, count);
    if (text.size() > kLargestPatchBytes) return tooLarge(path);
  }
  if (std::ferror(file.get()) != 0) return systemFailure(path, errno);
  return text;
}

PatchResult parsePatch(const std::string& path, const std::string& text) {
  PatchDecodeResult decoded = decodePatch(text);
  if (!decoded) return badPatch(path, decoded.error());
  if (const auto error = unroutable(decoded.value())) return badPatch(path, *error);
  return std::move(decoded).value();
}

PatchResult loadPatch(const std::string& path) {
  const auto text = readPatchText(path, Readable::anything);
  if (!text) return text.error();
  return parsePatch(path, text.value());
}

std::optional<std::string> unheardRoutesNote(const std::string& path,
                                             std::span<const PatchConnection> routes) {
  const auto active = static_cast<std::size_t>(
      std::count_if(routes.begin(), routes.end(), [](const PatchConnection& route) { return route.active; }));
  const std::size_t heard = soundingRoutes(routes).size();
  if (active == heard) return std::nullopt;
  return about(path, std::to_string(active) + " routes are active, but only the first " +
                         std::to_string(heard) + " of them are heard");
}

PatchResult PatchSource::load() {
  return read(Readable::anything);
}

PatchResult PatchSource::reload() {
  return read(Readable::regularFile);
}

std::optional<PatchResult> PatchSource::loadIfChanged() {
  const std::string textBefore = lastText_;
  const std::optional<Failure> failureBefore = lastFailure_;
  PatchResult result = reload();
  const bool sameFailure = lastFailure_ && failureBefore && lastFailure_->text == failureBefore->text;
  const bool sameText = !lastFailure_ && !failureBefore && lastText_ == textBefore;
  if (sameFailure || sameText) return std::nullopt;
  return result;
}

PatchResult PatchSource::read(Readable readable) {
  auto text = readPatchText(path_, readable);
  lastFailure_.reset();
  if (!text) {
    lastFailure_ = text.error();
    return *lastFailure_;
  }
  lastText_ = std::move(text).value();
  return parsePatch(path_, lastText_);
}

}  // namespace tolvane::ctl
