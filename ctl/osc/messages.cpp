#include "ctl/osc/messages.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "ctl/control/gain.h"

namespace tolvane::ctl::osc {

namespace {

using control::Answer;
using control::decibelsOf;
using control::DeviceStatus;
using control::Done;
using control::Dropped;
using control::Event;
using control::Level;
using control::Meters;
using control::NamesChanged;
using control::Refusal;
using control::RouteDump;
using control::RouteKey;
using control::RoutesChanged;
using control::RouteState;
using control::SceneList;
using control::ScenesChanged;
using control::Status;
using control::StatusChanged;

/// Levels of so many channels fit a datagram.
constexpr std::size_t kLevelsPerMessage = 64;

/// OSC's plain integer; a number beyond it becomes the nearest one.
template <class Number>
Argument number(Number value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::cmp_greater(value, Limits::max())) return Limits::max();
  return std::cmp_less(value, Limits::min()) ? Limits::min() : static_cast<std::int32_t>(value);
}

Argument flag(bool value) {
  return number(value ? 1U : 0U);
}

Argument real(double value) {
  return static_cast<float>(value);
}

/// Counted from 1. A file may name the largest channel there is.
Argument channelNumber(std::int64_t channel) {
  return channel < 0 ? number(channel + 1) : number(static_cast<std::uint64_t>(channel) + 1);
}

void append(std::vector<Argument>& arguments, const RouteKey& key) {
  arguments.push_back(channelNumber(key.input));
  arguments.push_back(channelNumber(key.output));
}

void append(std::vector<Argument>& arguments, const RouteState& route) {
  append(arguments, route.key);
  arguments.insert(arguments.end(),
                   {route.gain, real(decibelsOf(route.gain)), flag(route.active), route.label});
}

std::vector<Argument> statusArguments(const Status& status) {
  const DeviceStatus& device = status.device;
  return {device.name,
          flag(device.isAlive),
          number(device.inputs),
          number(device.outputs),
          real(device.sampleRateHz),
          number(device.bufferFrames),
          number(device.cycles),
          number(device.deviceOverloads),
          number(device.callbackOverloads),
          real(device.load),
          real(device.peakLoad),
          number(status.serial),
          number(status.routes),
          number(status.heard),
          number(status.undoSteps),
          number(status.redoSteps),
          flag(status.isSaved),
          status.scene,
          status.patchPath,
          number(status.rampMs)};
}

void appendLabels(std::vector<Message>& messages, const std::string& address,
                  const std::vector<std::string>& labels) {
  for (std::size_t c = 0; c < labels.size(); ++c) {
    if (!labels[c].empty()) messages.push_back({address, {number(c + 1), labels[c]}});
  }
}

struct AnswerMessages {
  std::string reply;
  std::vector<Message> operator()(const Refusal& /*refusal*/) const { return {}; }
  std::vector<Message> operator()(const Done& done) const { return {{reply, {number(done.serial)}}}; }
  std::vector<Message> operator()(const Status& status) const { return {{reply, statusArguments(status)}}; }
  std::vector<Message> operator()(const SceneList& list) const {
    std::vector<Message> messages = {{reply, {number(list.names.size())}}};
    for (std::size_t i = 0; i < list.names.size(); ++i)
      messages.push_back({reply + "/scene", {number(i + 1), list.names[i]}});
    return messages;
  }
  std::vector<Message> operator()(const RouteDump& dump) const {
    std::vector<Message> messages = {{reply,
                                      {number(dump.serial), number(dump.routes.size()),
                                       number(dump.inputLabels.size()), number(dump.outputLabels.size())}}};
    for (std::size_t i = 0; i < dump.routes.size(); ++i) {
      messages.push_back({reply + "/route", {number(i + 1)}});
      append(messages.back().arguments, dump.routes[i]);
    }
    appendLabels(messages, reply + "/input", dump.inputLabels);
    appendLabels(messages, reply + "/output", dump.outputLabels);
    return messages;
  }
};

void appendLevels(std::vector<Message>& messages, const char* address, const std::vector<Level>& levels) {
  for (std::size_t first = 0; first < levels.size(); first += kLevelsPerMessage) {
    Message message{address, {number(first + 1)}};
    const std::size_t end = std::min(levels.size(), first + kLevelsPerMessage);
    for (std::size_t c = first; c < end; ++c) {
      message.arguments.insert(message.arguments.end(),
                               {levels[c].peak, levels[c].rms, flag(levels[c].isClipped)});
    }
    messages.push_back(std::move(message));
  }
}

struct EventMessages {
  std::vector<Message> operator()(const RoutesChanged& changed) const {
    std::vector<Message> messages = {{"/tolvane/event/changed",
                                      {number(changed.serial), std::string(nameOf(changed.cause)),
                                       number(changed.routes.size()), number(changed.removed.size())}}};
    for (const RouteState& route : changed.routes) {
      messages.push_back({"/tolvane/event/route", {number(changed.serial)}});
      append(messages.back().arguments, route);
    }
    for (const RouteKey& key : changed.removed) {
      messages.push_back({"/tolvane/event/removed", {number(changed.serial)}});
      append(messages.back().arguments, key);
    }
    return messages;
  }
  std::vector<Message> operator()(const StatusChanged& changed) const {
    return {{"/tolvane/event/status", statusArguments(changed.status)}};
  }
  std::vector<Message> operator()(const ScenesChanged& changed) const {
    std::vector<Message> messages = {{"/tolvane/event/scenes", {number(changed.names.size())}}};
    for (std::size_t i = 0; i < changed.names.size(); ++i)
      messages.push_back({"/tolvane/event/scene", {number(i + 1), changed.names[i]}});
    return messages;
  }
  std::vector<Message> operator()(const NamesChanged& changed) const {
    std::vector<Message> messages = {
        {"/tolvane/event/names", {number(changed.inputLabels.size()), number(changed.outputLabels.size())}}};
    appendLabels(messages, "/tolvane/event/input", changed.inputLabels);
    appendLabels(messages, "/tolvane/event/output", changed.outputLabels);
    return messages;
  }
  std::vector<Message> operator()(const Meters& meters) const {
    std::vector<Message> messages;
    appendLevels(messages, "/tolvane/event/inputs", meters.inputs);
    appendLevels(messages, "/tolvane/event/outputs", meters.outputs);
    return messages;
  }
  std::vector<Message> operator()(const Dropped& dropped) const {
    return {{"/tolvane/event/dropped", {dropped.why}}};
  }
};

}  // namespace

std::vector<Message> answerMessages(const std::string& address, const Answer& answer) {
  if (const auto* refusal = std::get_if<Refusal>(&answer)) return {{address + "/error", {refusal->text}}};
  return std::visit(AnswerMessages{address + "/reply"}, answer);
}

std::vector<Message> eventMessages(const Event& event) {
  return std::visit(EventMessages{}, event);
}

}  // namespace tolvane::ctl::osc
