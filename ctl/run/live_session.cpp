#include "ctl/run/live_session.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <utility>

#include <poll.h>
#include <unistd.h>

#include "core/routing/sounding_routes.h"
#include "ctl/devices/property.h"
#include "ctl/devices/wait.h"
#include "ctl/patch/route_table.h"
#include "ctl/run/meter_readings.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

using std::chrono::milliseconds;

/// The IO thread may get its real-time priority from a system service, which answers late.
constexpr std::chrono::seconds kGrantWait{2};

std::size_t channels(std::int64_t count) {
  return static_cast<std::size_t>(std::max<std::int64_t>(0, count));
}

std::string liveReport(const std::string& path, const Routes& routes) {
  const std::size_t sounding = soundingRoutes(routes).size();
  return about(path, std::to_string(sounding) + (sounding == 1 ? " route is" : " routes are") + " live");
}

}  // namespace

LiveSession::LiveSession(const RunOptions& options, AudioDeviceInfo device, PatchSource& patch, Routes routes,
                         const SignalPipe& signals, const ServiceManager& manager, DoorPlan doors)
    : options_(options),
      device_(std::move(device)),
      patch_(patch),
      routes_(std::move(routes)),
      signals_(signals),
      bank_(channels(device_.inputChannels), channels(device_.outputChannels)),
      engine_(doors.isEmpty() ? &meteredIoProc : &controlledIoProc),
      publication_(bank_.cycleMarks(),
                   [this](std::span<const PatchConnection> newest) {
                     engine_.writeConnections(engine_.contextPtr(), newest);
                   }),
      routePublication_(publication_, routes_,
                        options_.rampMs > 0 ? std::function([this] { return rampSteps(); }) : nullptr),
      events_(device_.id),
      doors_(std::move(doors)),
      reports_(manager, device_.name) {
  setMeterBank(&bank_);
  if (!doors_.isEmpty())
    desk_ = std::make_unique<ControlDesk>(options_, device_, patch_, routes_, bank_, events_);
  if (!options_.watch) return;
  watcher_ = watchFile(patch_.path());
  fileDebouncer_.touch(Clock::now());  // the file may have changed between its reading and now
}

LiveSession::~LiveSession() {
  engine_.stop();
  setMeterBank(nullptr);
}

ExitStatus LiveSession::run() {
  if (events_.status() == kTolvaneExhaustedError) {
    return fail({about(device_.name, statusText(events_.status()))});
  }
  if (desk_) {
    if (const auto failure = desk_->open(doors_)) return fail(*failure);
  }
  if (const auto error = engine_.start(device_.id, routes_)) {
    const bool isExhausted = error->status == kTolvaneExhaustedError;
    return fail({about(device_.name, isExhausted ? statusText(error->status) : error->errorDescription())});
  }
  say("routing on " + printable(device_.name));
  readNames();
  started_ = Clock::now();
  nextMeters_ = started_;
  schedulingDue_ = started_ + kGrantWait;
  if (options_.meters) bank_.meter(routes_);
  while (!ended_) {
    sleep();
    handleSignals();
    handleFile();
    handleControl();
    handleDevice();
    reports_.tell(Clock::now(), bank_.cycles(), wasAlive_);
    handleScheduling();
    showMeters();
    if (options_.seconds && Clock::now() >= endTime()) ended_ = true;
  }
  reports_.tellStopping();
  tellScheduling();  // while the IO thread still exists
  meters_.reset();   // restores the terminal before stop(), which may never return if a sound server hangs
  messages_.release();
  engine_.stop();
  printSummary();
  return ExitStatus::done;
}

void LiveSession::sleep() {
  const auto left = std::chrono::ceil<milliseconds>(wakeTime() - Clock::now()).count();
  // poll() ignores a descriptor of -1.
  std::vector<pollfd> sources = {{signals_.descriptor(), POLLIN, 0},
                                 {events_.descriptor(), POLLIN, 0},
                                 {watcher_ ? watcher_->descriptor() : -1, POLLIN, 0}};
  if (desk_) desk_->addSources(sources);
  ::poll(sources.data(), sources.size(), static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000)));
  deviceTold_ = sources[1].revents != 0;
}

LiveSession::Clock::time_point LiveSession::wakeTime() const {
  const Clock::time_point now = Clock::now();
  Clock::time_point wake = now + std::chrono::minutes(1);
  if (options_.meters) wake = std::min(wake, nextMeters_);
  if (options_.seconds) wake = std::min(wake, endTime());
  wake = std::min({wake, schedulingDue_.value_or(wake), reports_.due().value_or(wake)});
  wake = std::min(wake, routePublication_.due(now).value_or(wake));
  if (desk_) wake = std::min(wake, desk_->due(now).value_or(wake));
  if (watcher_) wake = std::min(wake, now + watcher_->askEvery());
  return std::min(wake, fileDebouncer_.due().value_or(wake));
}

LiveSession::Clock::time_point LiveSession::endTime() const {
  return started_ +
         std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*options_.seconds));
}

void LiveSession::handleSignals() {
  while (const auto signal = signals_.next()) {
    (*signal == SIGHUP ? reloadAsked_ : ended_) = true;
  }
}

void LiveSession::handleFile() {
  // While the file is saved, it is not known whether a new text in it is our own.
  if (desk_ && desk_->isSaving()) return;
  if (std::exchange(reloadAsked_, false)) takeOver(patch_.reload());
  if (!watcher_) return;
  const Clock::time_point now = Clock::now();
  if (watcher_->changed()) fileDebouncer_.touch(now);
  if (!fileDebouncer_.settled(now)) return;
  if (const auto result = patch_.loadIfChanged()) takeOver(*result);
}

void LiveSession::takeOver(const PatchResult& result) {
  if (!result) {
    messages_.say(result.error().text + "; the routes stay as they were");
    return;
  }
  const Routes& routes = result.value();
  if (desk_) {
    desk_->takeOver(routes);  // which are played when control has had its turn
  } else {
    play(routes);
  }
  readNames();
  messages_.say(liveReport(patch_.path(), routes));
  if (const auto note = unheardRoutesNote(patch_.path(), routes)) messages_.say(*note);
}

void LiveSession::handleControl() {
  if (desk_) {
    if (auto routes = desk_->receive(Clock::now())) play(std::move(*routes));
  }
  routePublication_.poll(Clock::now());
  if (desk_) desk_->send(Clock::now());
}

void LiveSession::play(Routes routes) {
  routes_ = std::move(routes);
  routePublication_.edit(routes_, Clock::now());
  if (options_.meters) bank_.meter(routes_);
}

void LiveSession::readNames() {
  names_.read(device_);
  if (desk_) desk_->setNames(names_);
}

std::uint32_t LiveSession::rampSteps() const {
  const double rateHz =
      deviceProperty<Float64>(device_.id, kAudioDevicePropertyNominalSampleRate).value_or(48'000.0);
  const double frames = deviceProperty<UInt32>(device_.id, kAudioDevicePropertyBufferFrameSize).value_or(512);
  return static_cast<std::uint32_t>(std::ceil(options_.rampMs * rateHz / (1000.0 * std::max(1.0, frames))));
}

void LiveSession::handleDevice() {
  if (!deviceTold_) return;
  const bool alive = events_.isAlive();
  const RemovedChannels removed = removedChannelsOf(device_.id);
  if (const auto note = removedLinksNote(removed_, removed)) messages_.say(about(device_.name, *note));
  removed_ = removed;
  if (alive == wasAlive_) return;
  wasAlive_ = alive;
  if (alive) readNames();
  if (desk_) desk_->setAlive(alive);
  messages_.say(about(device_.name, alive ? "is back" : "is gone; waiting for it to come back"));
}

void LiveSession::handleScheduling() {
  if (!schedulingDue_ || Clock::now() < *schedulingDue_) return;
  schedulingDue_.reset();
  tellScheduling();
}

void LiveSession::tellScheduling() {
  if (const auto now = ioThreadScheduling(device_.id)) scheduling_ = now;
  if (const auto now = isIoMemoryLocked(device_.id)) isMemoryLocked_ = now;
  if (!scheduling_ || isRealtime(*scheduling_) || std::exchange(schedulingTold_, true)) return;
  messages_.say(device_.name + ": its audio thread did not get real-time priority (" +
                schedulingText(*scheduling_) + "); sound may break up under load");
}

void LiveSession::showMeters() {
  const Clock::time_point now = Clock::now();
  if (!options_.meters || now < nextMeters_) return;
  if (!meters_) {
    openMeters(now);
    return;
  }
  readMeters(bank_, routes_, device_, names_, picture_);
  picture_.cycles = bank_.cycles();
  picture_.overloads = events_.overloads();
  picture_.message = messages_.latest();
  meters_->show(picture_);
  if (meters_->endAsked()) ended_ = true;
  nextMeters_ += meters_->interval();
  if (nextMeters_ < now) nextMeters_ = now + meters_->interval();
}

void LiveSession::openMeters(Clock::time_point now) {
  // The first cycle prints its trace, which would tear the picture: wait for that cycle, but only so long, as
  // a dead device runs none.
  constexpr milliseconds kLook{10};
  constexpr std::chrono::seconds kLongestWait{2};
  nextMeters_ = now + kLook;
  if (bank_.cycles() == 0 && now < started_ + kLongestWait) return;
  picture_.deviceName = printable(device_.name);
  meters_ = makeMeterScreen();
  if (!meters_) {
    meters_ = std::make_unique<MeterLines>();
  } else if (::isatty(STDERR_FILENO) == 1) {
    messages_.holdBack();
  }
  nextMeters_ = now + meters_->interval();
}

void LiveSession::printSummary() const {
  std::printf("cycles: %llu\noverloads: %llu\n", static_cast<unsigned long long>(bank_.cycles()),
              static_cast<unsigned long long>(events_.overloads()));
  if (scheduling_) std::printf("scheduling: %s\n", schedulingText(*scheduling_).c_str());
  if (isMemoryLocked_) std::printf("memory: %s\n", *isMemoryLocked_ ? "locked" : "not locked");
  std::fputs(routeTable(routes_, names_.forRoutes()).c_str(), stdout);
  std::fflush(stdout);  // now, while the SignalPipe exists: a signal then ends a flush into a full pipe
}

}  // namespace tolvane::ctl
