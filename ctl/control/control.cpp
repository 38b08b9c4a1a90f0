#include "ctl/control/control.h"

#include <algorithm>
#include <utility>

#include "core/routing/sounding_routes.h"
#include "ctl/control/executor.h"
#include "ctl/control/patch_text.h"

namespace tolvane::ctl::control {

namespace {

constexpr std::chrono::seconds kStatusInterval{1};
/// After a change.
constexpr std::chrono::milliseconds kShortStatusInterval{100};

}  // namespace

Control::Control(Config config, PatchSource& patch, const Routes& routes, Meter* meter)
    : config_(std::move(config)),
      patch_(patch),
      fileText_(patch.text()),
      list_(PatchText(fileText_, routes).routes()),
      savedRoutes_(list_.routes()),
      meters_(meter) {
  if (config_.sceneFolder) scenes_.emplace(*config_.sceneFolder);
}

void Control::execute(const Command& command, const Sender& sender, const Reply& reply) {
  if (edits_.empty()) sender_ = sender;
  std::visit(Executor{*this, reply}, command);
  endChange();
}

void Control::apply(RouteEdit edit) {
  list_.apply(edit);
  edits_.push_back(std::move(edit));
}

void Control::endChange() {
  if (bundles_ == 0) commit();
}

void Control::commit() {
  if (edits_.empty()) return;
  history_.add(std::exchange(edits_, {}), sender_);
  tellChange();
}

void Control::tellChange() {
  ++serial_;
  unpublished_ = true;
  isStatusStale_ = true;
  RoutesChanged changes = list_.takeChanges();
  changes.serial = serial_;
  changes.cause = std::exchange(cause_, Cause::edit);
  tellAll(changes);
}

void Control::add(Listener& listener) {
  listeners_.push_back(&listener);
}

void Control::remove(Listener& listener) {
  std::erase(listeners_, &listener);
}

void Control::tellAll(const Event& event) const {
  for (Listener* listener : listeners_) listener->tell(event);
}

void Control::takeOver(const Routes& routes) {
  fileText_ = patch_.text();
  std::vector<Route> fromFile = PatchText(fileText_, routes).routes();
  savedRoutes_ = fromFile;
  if (fromFile != list_.routes()) {
    commit();
    sender_ = {};
    cause_ = Cause::file;
    apply(ReplaceRoutes{std::move(fromFile)});
    commit();
  }
  isStatusStale_ = true;
}

void Control::setLabels(std::vector<std::string> inputs, std::vector<std::string> outputs) {
  if (inputs == config_.inputLabels && outputs == config_.outputLabels) return;
  config_.inputLabels = std::move(inputs);
  config_.outputLabels = std::move(outputs);
  tellAll(NamesChanged{config_.inputLabels, config_.outputLabels});
}

void Control::tellScenes() const {
  if (auto names = scenes_->names()) tellAll(ScenesChanged{std::move(names).value()});
}

void Control::deviceChanged() {
  tellAll(StatusChanged{status()});
}

void Control::tick(Time now) {
  writer_.finish();
  const auto wants = [this](auto what) {
    return std::any_of(listeners_.begin(), listeners_.end(),
                       [what](const Listener* listener) { return (listener->*what)(); });
  };
  if (const auto meters = meters_.read(now, wants(&Listener::wantsMeters))) tellAll(*meters);
  if (now < nextStatus() || !wants(&Listener::wantsChanges)) return;
  lastStatus_ = now;
  isStatusStale_ = false;
  tellAll(StatusChanged{status()});
}

std::optional<Control::Time> Control::due(Time now) const {
  std::optional<Time> due;
  for (const Listener* listener : listeners_) {
    if (listener->wantsMeters()) due = std::min(due.value_or(Time::max()), meters_.due(now));
    if (listener->wantsChanges()) due = std::min(due.value_or(Time::max()), nextStatus());
  }
  return due;
}

Control::Time Control::nextStatus() const noexcept {
  if (!lastStatus_) return {};
  if (isStatusStale_) return *lastStatus_ + kShortStatusInterval;
  return *lastStatus_ + kStatusInterval;
}

bool Control::takeUnpublished() noexcept {
  return std::exchange(unpublished_, false);
}

Status Control::status() const {
  Status status;
  status.device = config_.device();
  status.serial = serial();
  status.routes = list_.routes().size();
  status.heard = soundingRoutes(list_.connections()).size();
  status.undoSteps = history_.undoSteps();
  status.redoSteps = history_.redoSteps();
  status.isSaved = list_.routes() == savedRoutes_;
  status.scene = scene_;
  status.patchPath = patch_.path();
  status.rampMs = config_.rampMs;
  return status;
}

}  // namespace tolvane::ctl::control
