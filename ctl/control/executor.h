#pragma once

#include <functional>
#include <string>

#include "ctl/control/control.h"

namespace tolvane::ctl::control {

/// Executes each kind of command on the model, and replies. [main-thread]
struct Control::Executor {
  Control& control;
  const Reply& reply;

  void operator()(const SetRoute& command) const;
  void operator()(const SetGain& command) const;
  void operator()(const SetMute& command) const;
  void operator()(const SetLabel& command) const;
  void operator()(const RemoveRoute& command) const;
  void operator()(const RecallScene& command) const;
  void operator()(const SaveScene& command) const;
  void operator()(const ListScenes& command) const;
  void operator()(const Undo& command) const;
  void operator()(const Redo& command) const;
  void operator()(const Save& command) const;
  void operator()(const GetStatus& command) const;
  void operator()(const Dump& command) const;
  void operator()(const Subscribe& command) const;
  void operator()(const Unsubscribe& command) const;
  void operator()(const ResetClips& command) const;
  void operator()(const Hello& command) const;

 private:
  /// Changes all routes of the pair, and replies. False, without a reply, if there are none.
  bool changeAll(const RouteKey& key, const std::function<void(Route&)>& change) const;
  void refuse(std::string text) const { reply(Refusal{std::move(text)}); }
  void refuseUnknown(const RouteKey& key) const;
  void step(bool (History::*take)(RouteList&), Cause cause) const;
  /// False, after a refusal, if the job cannot be started.
  bool write(FileWriter::Job job) const;
};

}  // namespace tolvane::ctl::control
