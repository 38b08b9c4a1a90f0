#include <algorithm>
#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

#include "ctl/control/gain.h"
#include "ctl/control/json.h"

namespace tolvane::ctl::control {

namespace {

// Floats are kept as such, so that 0.1 is not written as 0.10000000149.
using TextJson = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                      std::uint64_t, float>;

std::string textOf(const TextJson& json) {
  return json.dump(-1, ' ', false, TextJson::error_handler_t::replace);
}

/// A level; null is silence.
TextJson decibelsJson(double decibels) {
  return std::isfinite(decibels) ? TextJson(static_cast<float>(decibels)) : TextJson(nullptr);
}

/// Counted from 1. A file may name the largest channel there is.
TextJson channelJson(std::int64_t channel) {
  if (channel < 0) return channel + 1;
  return static_cast<std::uint64_t>(channel) + 1;
}

TextJson keyJson(const RouteKey& key) {
  return {{"input", channelJson(key.input)}, {"output", channelJson(key.output)}};
}

TextJson routeJson(const RouteState& route) {
  TextJson json = keyJson(route.key);
  json["gain"] = route.gain;
  json["db"] = decibelsJson(decibelsOf(route.gain));
  json["active"] = route.active;
  json["label"] = route.label;
  return json;
}

template <class Items, class Encode>
TextJson listJson(const Items& items, Encode encode) {
  TextJson list = TextJson::array();
  for (const auto& item : items) list.push_back(encode(item));
  return list;
}

TextJson levelJson(const Level& level) {
  return {{"peak", level.peak}, {"rms", level.rms}, {"clip", level.isClipped}};
}

TextJson deviceJson(const DeviceStatus& device) {
  return {{"name", device.name},
          {"alive", device.isAlive},
          {"inputs", device.inputs},
          {"outputs", device.outputs},
          {"sampleRate", static_cast<float>(device.sampleRateHz)},
          {"bufferFrames", device.bufferFrames},
          {"cycles", device.cycles},
          {"overloads", {{"device", device.deviceOverloads}, {"callback", device.callbackOverloads}}},
          {"load", static_cast<float>(device.load)},
          {"peakLoad", static_cast<float>(device.peakLoad)}};
}

TextJson statusJson(const Status& status) {
  return {{"device", deviceJson(status.device)},
          {"serial", status.serial},
          {"routes", status.routes},
          {"heard", status.heard},
          {"undo", status.undoSteps},
          {"redo", status.redoSteps},
          {"saved", status.isSaved},
          {"scene", status.scene},
          {"patch", status.patchPath},
          {"ramp", status.rampMs}};
}

/// Adds what an answer says to the object.
struct AnswerMembers {
  TextJson& json;
  void operator()(const Refusal& refusal) const { json["error"] = refusal.text; }
  void operator()(const Done& done) const { json["serial"] = done.serial; }
  void operator()(const SceneList& list) const { json["scenes"] = list.names; }
  void operator()(const Status& status) const { json["status"] = statusJson(status); }
  void operator()(const RouteDump& dump) const {
    json["serial"] = dump.serial;
    json["routes"] = listJson(dump.routes, &routeJson);
    json["inputs"] = dump.inputLabels;
    json["outputs"] = dump.outputLabels;
  }
};

struct EventJson {
  TextJson operator()(const RoutesChanged& changed) const {
    return {{"event", "changed"},
            {"serial", changed.serial},
            {"cause", nameOf(changed.cause)},
            {"routes", listJson(changed.routes, &routeJson)},
            {"removed", listJson(changed.removed, &keyJson)}};
  }
  TextJson operator()(const StatusChanged& changed) const {
    return {{"event", "status"}, {"status", statusJson(changed.status)}};
  }
  TextJson operator()(const Meters& meters) const {
    return {{"event", "meters"},
            {"inputs", listJson(meters.inputs, &levelJson)},
            {"outputs", listJson(meters.outputs, &levelJson)}};
  }
  TextJson operator()(const ScenesChanged& changed) const {
    return {{"event", "scenes"}, {"scenes", changed.names}};
  }
  TextJson operator()(const NamesChanged& changed) const {
    return {{"event", "names"}, {"inputs", changed.inputLabels}, {"outputs", changed.outputLabels}};
  }
  TextJson operator()(const Dropped& dropped) const { return {{"event", "dropped"}, {"why", dropped.why}}; }
};

/// Adds a command's arguments to the object.
struct CommandMembers {
  TextJson& json;
  void operator()(const SetRoute& command) const {
    add(command.key);
    json["gain"] = command.gain;
  }
  void operator()(const SetGain& command) const {
    add(command.key);
    // JSON has no infinity, and null is silence: a level that is too high stays one.
    constexpr auto kHighest = static_cast<double>(std::numeric_limits<float>::max());
    json["db"] = decibelsJson(std::min(command.decibels, kHighest));
  }
  void operator()(const SetMute& command) const {
    add(command.key);
    json["mute"] = command.isMuted;
  }
  void operator()(const SetLabel& command) const {
    add(command.key);
    json["label"] = command.label;
  }
  void operator()(const RemoveRoute& command) const { add(command.key); }
  void operator()(const RecallScene& command) const {
    std::visit([this](const auto& scene) { json["scene"] = scene; }, command.scene);
  }
  void operator()(const SaveScene& command) const { json["scene"] = command.name; }
  void operator()(const Hello& command) const { json["token"] = command.token; }
  void operator()(const Subscribe& command) const {
    json["changes"] = command.changes;
    json["meters"] = command.meters;
  }
  template <class Other>
  void operator()(const Other& /*command*/) const {}

 private:
  void add(const RouteKey& key) const {
    json["input"] = channelJson(key.input);
    json["output"] = channelJson(key.output);
  }
};

void addId(TextJson& json, const RequestId& id) {
  if (const auto* number = std::get_if<std::int64_t>(&id)) json["id"] = *number;
  if (const auto* text = std::get_if<std::string>(&id)) json["id"] = *text;
}

}  // namespace

std::string encodeRequest(const Request& request) {
  TextJson json = {{"command", nameOf(request.command)}};
  addId(json, request.id);
  if (request.gesture != 0) json["gesture"] = request.gesture;
  std::visit(CommandMembers{json}, request.command);
  return textOf(json);
}

std::string encodeAnswer(const Command& command, const RequestId& id, const Answer& answer) {
  TextJson json = {{"answer", nameOf(command)}};
  addId(json, id);
  json["ok"] = !std::holds_alternative<Refusal>(answer);
  std::visit(AnswerMembers{json}, answer);
  return textOf(json);
}

std::string encodeAnswer(const RequestError& error) {
  TextJson json = {{"answer", error.command}};
  addId(json, error.id);
  json["ok"] = false;
  json["error"] = error.text;
  return textOf(json);
}

std::string encodeEvent(const Event& event) {
  return textOf(std::visit(EventJson{}, event));
}

std::string encodeWelcome(const std::string& program, bool needsToken) {
  return textOf({{"event", "welcome"}, {"program", program}, {"token", needsToken}});
}

}  // namespace tolvane::ctl::control
