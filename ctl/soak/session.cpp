#include "ctl/soak/session.h"

#include <algorithm>
#include <ctime>

#include <poll.h>

#include "ctl/devices/property.h"
#include "ctl/devices/wait.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

/// How long the search for loops may take, in seconds of audio.
constexpr double kSearchSeconds = 1.0;
/// The most edits before the signals, the device and the time are looked after again.
constexpr std::uint64_t kMostEditsAtOnce = 1000;
/// The moments that a report shows.
constexpr double kMoments = 500.0;
/// Edits that are not more frequent may each be late by the sleep.
constexpr int kCalmEditsPerMinute = 600;
constexpr std::chrono::milliseconds kCalmSleep{10};

std::size_t channelCount(std::int64_t count) {
  return static_cast<std::size_t>(std::max<std::int64_t>(0, count));
}

double sampleRateOf(AudioDeviceID device) {
  return deviceProperty<Float64>(device, kAudioDevicePropertyNominalSampleRate).value_or(0.0);
}

std::string dateAndTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  char text[64] = "";
  if (::localtime_r(&now, &parts) != nullptr)
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &parts);
  return text;
}

SoakResult begunResult(const SoakOptions& options, const AudioDeviceInfo& device) {
  SoakResult result;
  result.deviceName = device.name;
  result.inputs = channelCount(device.inputChannels);
  result.outputs = channelCount(device.outputChannels);
  result.sampleRateHz = sampleRateOf(device.id);
  result.isFullSpeed = options.fullSpeed;
  result.begun = dateAndTime();
  return result;
}

}  // namespace

SoakSession::SoakSession(const SoakOptions& options, const AudioDeviceInfo& device, const SignalPipe& signals)
    : options_(options),
      device_(device),
      signals_(signals),
      result_(begunResult(options, device)),
      checker_(result_.inputs, result_.outputs, result_.sampleRateHz, options.routing),
      edits_(result_.inputs, result_.outputs),
      engine_(&soakIoProc),
      publication_(checker_.cycleMarks(), [this](auto routes) { publish(routes); }),
      events_(device.id) {
  setSoakChecker(&checker_);
}

SoakSession::~SoakSession() {
  engine_.stop();
  setSoakChecker(nullptr);
}

std::optional<Failure> SoakSession::run() {
  if (events_.status() == kTolvaneExhaustedError) {
    return Failure{about(device_.name, statusText(events_.status()))};
  }
  // Every output carries one input until the loops are found.
  const Routes straight = straightRoutes(result_.inputs, result_.outputs);
  checker_.tables().announce(straight);
  checker_.tables().confirm();
  checker_.loops().search(true);
  if (const auto error = engine_.start(device_.id, straight)) {
    const bool isExhausted = error->status == kTolvaneExhaustedError;
    return Failure{about(device_.name, isExhausted ? statusText(error->status) : error->errorDescription())};
  }
  started_ = Clock::now();
  result_.moments.reserve(static_cast<std::size_t>(kMoments) + 2);  // so that the memory shown is the run's
  while (!ended_) {
    sleep();
    handleSignals();
    handleDevice();
    edit();
    takeMoment();
    if (soakSeconds() >= options_.minutes * 60.0) ended_ = true;
  }
  conclude();
  engine_.stop();
  result_.counts = checker_.counts();
  result_.firstWrong = checker_.firstWrong();
  return std::nullopt;
}

void SoakSession::publish(std::span<const PatchConnection> routes) {
  checker_.tables().announce(routes);
  engine_.writeConnections(engine_.contextPtr(), routes);
  checker_.tables().confirm();
}

void SoakSession::sleep() {
  const bool isBusy = options_.fullSpeed || options_.editsPerMinute > kCalmEditsPerMinute ||
                      publication_.due(Clock::now()).has_value();
  const auto longest = isBusy ? Publication::kAskAgain : kCalmSleep;
  pollfd sources[] = {{signals_.descriptor(), POLLIN, 0}, {events_.descriptor(), POLLIN, 0}};
  ::poll(sources, std::size(sources), static_cast<int>(longest.count()));
  deviceTold_ = sources[1].revents != 0;
}

void SoakSession::handleSignals() {
  while (signals_.next()) ended_ = true;
}

void SoakSession::handleDevice() {
  if (!deviceTold_) return;
  const bool alive = events_.isAlive();
  if (wasAlive_ && !alive) ++result_.losses;
  wasAlive_ = alive;
}

/// Makes the edits that are due by now, once the loops are found.
void SoakSession::edit() {
  const double audio = audioSeconds();
  if (!searchedUntil_) {
    if (audio < kSearchSeconds) return;
    checker_.loops().search(false);
    searchedUntil_ = audio;
  }
  const double due = (audio - *searchedUntil_) / 60.0 * options_.editsPerMinute;
  for (std::uint64_t made = 0; static_cast<double>(result_.edits) < due && made < kMostEditsAtOnce; ++made) {
    publication_.edit(edits_.next(), Clock::now());
    ++result_.edits;
  }
  publication_.poll(Clock::now());
}

void SoakSession::takeMoment() {
  const double seconds = soakSeconds();
  if (seconds < nextMoment_) return;
  nextMoment_ = seconds + std::max(0.1, options_.minutes * 60.0 / kMoments);
  if (const auto state = processState())
    result_.moments.push_back({seconds / 60.0, *state, checker_.counts().cycles, events_.overloads()});
}

/// Reads what only exists while the device runs.
void SoakSession::conclude() {
  result_.seconds = std::chrono::duration<double>(Clock::now() - started_).count();
  if (const auto scheduling = ioThreadScheduling(device_.id))
    result_.scheduling = schedulingText(*scheduling);
  result_.bufferFrames = deviceProperty<UInt32>(device_.id, kAudioDevicePropertyBufferFrameSize).value_or(0);
  result_.overloads = events_.overloads();
  result_.publications = publication_.count();
  nextMoment_ = 0.0;
  takeMoment();
}

double SoakSession::audioSeconds() const noexcept {
  return static_cast<double>(checker_.counts().frames) / std::max(1.0, result_.sampleRateHz);
}

/// A device at full speed is given its time in audio, after the search for loops. Another one is given it on
/// the wall clock.
double SoakSession::soakSeconds() const noexcept {
  if (options_.fullSpeed) return searchedUntil_ ? audioSeconds() - *searchedUntil_ : 0.0;
  return std::chrono::duration<double>(Clock::now() - started_).count();
}

}  // namespace tolvane::ctl
