#include "ctl/control/executor.h"

#include <cmath>
#include <utility>

#include "ctl/control/gain.h"
#include "ctl/control/patch_text.h"
#include "ctl/patch/route_table.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl::control {

namespace {

constexpr std::size_t kLongestLabel = 200;
constexpr const char* kNoScenes = "there are no scenes: the program was started without --scenes";

/// Why a new route cannot have this channel; none if it can.
std::optional<std::string> problemOf(const char* direction, std::int64_t channel, std::size_t channels) {
  if (channel >= 0 && static_cast<std::uint64_t>(channel) < channels) return std::nullopt;
  return std::string("there is no ") + direction + ' ' + oneBased(channel) + "; the device has " +
         std::to_string(channels);
}

}  // namespace

void Control::Executor::operator()(const SetRoute& command) const {
  if (!std::isfinite(command.gain)) return refuse("the gain must be a finite number");
  if (changeAll(command.key, [&](Route& route) { route.connection.gain = command.gain; })) return;
  for (const auto& problem : {problemOf("input", command.key.input, control.config_.inputLabels.size()),
                              problemOf("output", command.key.output, control.config_.outputLabels.size())}) {
    if (problem) return refuse(*problem);
  }
  control.apply(InsertRoute{control.list_.routes().size(),
                            {{command.key.input, command.key.output, command.gain, true}, ""}});
  reply(Done{control.serial()});
}

void Control::Executor::operator()(const SetGain& command) const {
  const auto gain = gainOf(command.decibels);
  if (!gain) return refuse("the level must be a number of decibels, up to 770");
  const bool isKnown = changeAll(command.key, [&](Route& route) {
    route.connection.gain = std::copysign(*gain, route.connection.gain);
  });
  if (!isKnown) refuseUnknown(command.key);
}

void Control::Executor::operator()(const SetMute& command) const {
  if (!changeAll(command.key, [&](Route& route) { route.connection.active = !command.isMuted; }))
    refuseUnknown(command.key);
}

void Control::Executor::operator()(const SetLabel& command) const {
  if (command.label.size() > kLongestLabel) return refuse("a label has at most 200 bytes");
  if (printable(command.label) != command.label)
    return refuse("a label must be UTF-8 without control characters");
  if (!changeAll(command.key, [&](Route& route) { route.label = command.label; })) refuseUnknown(command.key);
}

void Control::Executor::operator()(const RemoveRoute& command) const {
  const auto places = control.list_.find(command.key);
  if (places.empty()) return refuseUnknown(command.key);
  for (auto place = places.rbegin(); place != places.rend(); ++place) control.apply(EraseRoute{*place});
  reply(Done{control.serial()});
}

void Control::Executor::operator()(const RecallScene& command) const {
  if (!control.scenes_) return refuse(kNoScenes);
  auto scene = control.scenes_->read(command.scene);
  if (!scene) return refuse(scene.error().text);
  control.scene_ = scene.value().name;
  ++control.recalls_;
  control.isStatusStale_ = true;
  if (scene.value().routes != control.list_.routes()) {
    control.cause_ = Cause::scene;
    control.apply(ReplaceRoutes{std::move(scene).value().routes});
  }
  reply(Done{control.serial()});
}

void Control::Executor::operator()(const SaveScene& command) const {
  if (!control.scenes_) return refuse(kNoScenes);
  if (const auto problem = SceneFolder::problemOf(command.name)) return refuse(*problem);
  auto text = control.scenes_->textOf(command.name, control.list_.routes());
  if (!text) return refuse(text.error().text);
  const bool isStarted = write({.path = control.scenes_->fileOf(command.name),
                                .text = text.value(),
                                .expected = std::nullopt,
                                .done = [&control = control, reply = reply, name = command.name,
                                         recalls = control.recalls_](const auto& failure) {
                                  control.scenes_->noteSaveEnd();
                                  if (failure) return reply(Refusal{failure->text});
                                  // Another scene may have been recalled meanwhile.
                                  if (recalls == control.recalls_) control.scene_ = name;
                                  control.isStatusStale_ = true;
                                  reply(Done{control.serial()});
                                  control.tellScenes();
                                }});
  if (isStarted) control.scenes_->noteSaving(command.name, std::move(text).value());
}

void Control::Executor::operator()(const ListScenes& /*command*/) const {
  if (!control.scenes_) return refuse(kNoScenes);
  auto names = control.scenes_->names();
  if (!names) return refuse(names.error().text);
  reply(SceneList{std::move(names).value()});
}

void Control::Executor::operator()(const Undo& /*command*/) const {
  step(&History::undo, Cause::undo);
}

void Control::Executor::operator()(const Redo& /*command*/) const {
  step(&History::redo, Cause::redo);
}

void Control::Executor::operator()(const Save& /*command*/) const {
  const PatchResult routes = parsePatch(control.patch_.path(), control.fileText_);
  const auto& known = control.fileText_;
  std::string text =
      PatchText(routes ? known : "", routes ? routes.value() : Routes()).with(control.list_.routes());
  // Saves before this one may still wait, and may fail.
  std::vector<std::string> expected(control.savingTexts_.begin(), control.savingTexts_.end());
  expected.push_back(known);
  control.savingTexts_.push_back(text);
  const bool isStarted = write(
      {.path = control.patch_.path(),
       .text = text,
       .expected = std::move(expected),
       .done = [&control = control, reply = reply, routes = control.list_.routes()](const auto& failure) {
         const std::string saved = std::move(control.savingTexts_.front());
         control.savingTexts_.pop_front();
         if (failure) return reply(Refusal{failure->text});
         control.fileText_ = saved;
         control.patch_.noteSaved(saved);
         control.savedRoutes_ = routes;
         control.isStatusStale_ = true;
         reply(Done{control.serial()});
       }});
  if (!isStarted) control.savingTexts_.pop_back();
}

void Control::Executor::operator()(const GetStatus& /*command*/) const {
  reply(control.status());
}

void Control::Executor::operator()(const Dump& /*command*/) const {
  RouteDump dump{control.serial(), {}, control.config_.inputLabels, control.config_.outputLabels};
  for (const Route& route : control.list_.routes()) dump.routes.push_back(stateOf(route));
  reply(dump);
}

void Control::Executor::operator()(const Subscribe& /*command*/) const {
  reply(Done{control.serial()});
}

void Control::Executor::operator()(const Unsubscribe& /*command*/) const {
  reply(Done{control.serial()});
}

void Control::Executor::operator()(const ResetClips& /*command*/) const {
  control.meters_.resetClips();
  reply(Done{control.serial()});
}

void Control::Executor::operator()(const Hello& /*command*/) const {
  reply(Done{control.serial()});
}

bool Control::Executor::changeAll(const RouteKey& key, const std::function<void(Route&)>& change) const {
  const auto places = control.list_.find(key);
  if (places.empty()) return false;
  for (const std::size_t place : places) {
    Route route = control.list_.routes()[place];
    change(route);
    if (route != control.list_.routes()[place]) control.apply(ChangeRoute{place, std::move(route)});
  }
  reply(Done{control.serial()});
  return true;
}

void Control::Executor::refuseUnknown(const RouteKey& key) const {
  refuse("there is no route from input " + oneBased(key.input) + " to output " + oneBased(key.output));
}

void Control::Executor::step(bool (History::*take)(RouteList&), Cause cause) const {
  control.commit();
  if (!(control.history_.*take)(control.list_)) {
    return refuse(cause == Cause::undo ? "there is nothing to undo" : "there is nothing to redo");
  }
  control.cause_ = cause;
  reply(Done{control.serial_ + 1});
  control.tellChange();
}

bool Control::Executor::write(FileWriter::Job job) const {
  const auto failure = control.writer_.start(std::move(job));
  if (failure) refuse(failure->text);
  return !failure;
}

}  // namespace tolvane::ctl::control
