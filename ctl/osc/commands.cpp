#include "ctl/osc/commands.h"

#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

namespace tolvane::ctl::osc {

namespace {

using control::Command;
using control::Dump;
using control::GetStatus;
using control::Hello;
using control::ListScenes;
using control::RecallScene;
using control::Redo;
using control::RemoveRoute;
using control::ResetClips;
using control::RouteKey;
using control::Save;
using control::SaveScene;
using control::SetGain;
using control::SetLabel;
using control::SetMute;
using control::SetRoute;
using control::Subscribe;
using control::Undo;
using control::Unsubscribe;

constexpr std::int64_t kLargestPort = 65535;

/// What is wrong with a message; thrown and caught within this file.
struct Wrong {
  std::string text;
};

std::optional<double> numberOf(const Argument& argument) {
  return std::visit(
      [](const auto& value) -> std::optional<double> {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>) {
          return static_cast<double>(value);
        } else {
          return std::nullopt;
        }
      },
      argument);
}

/// Takes a message's arguments in order.
class Arguments {
 public:
  explicit Arguments(const Message& message) : arguments_(message.arguments) {}

  [[nodiscard]] bool isAtEnd() const { return next_ == arguments_.size(); }

  [[nodiscard]] double number(const char* what) {
    if (const auto number = numberOf(take(what))) return *number;
    throw Wrong{std::string(what) + " must be a number"};
  }
  [[nodiscard]] std::int64_t wholeNumber(const char* what) {
    const double value = number(what);
    constexpr double kLargest = std::numeric_limits<std::int32_t>::max();
    if (value >= 1.0 && value <= kLargest && std::trunc(value) == value)
      return static_cast<std::int64_t>(value);
    throw Wrong{std::string(what) + " must be a whole number from 1 to 2147483647"};
  }
  [[nodiscard]] bool flag(const char* what) {
    const Argument& argument = take(what);
    if (const auto* truth = std::get_if<bool>(&argument)) return *truth;
    const auto value = numberOf(argument);
    if (value && (*value == 0.0 || *value == 1.0)) return *value == 1.0;
    throw Wrong{std::string(what) + " must be 0 or 1"};
  }
  [[nodiscard]] std::string text(const char* what) {
    const auto* value = std::get_if<std::string>(&take(what));
    if (value != nullptr) return *value;
    throw Wrong{std::string(what) + " must be a string"};
  }
  [[nodiscard]] bool isText() const {
    return !isAtEnd() && std::holds_alternative<std::string>(arguments_[next_]);
  }

 private:
  const Argument& take(const char* what) {
    if (isAtEnd()) throw Wrong{std::string(what) + " is missing"};
    return arguments_[next_++];
  }

  const std::vector<Argument>& arguments_;
  std::size_t next_ = 0;
};

RouteKey takeKey(Arguments& arguments) {
  const std::int64_t input = arguments.wholeNumber("the input");
  return {input - 1, arguments.wholeNumber("the output") - 1};
}

float takeLinear(Arguments& arguments) {
  const auto gain = static_cast<float>(arguments.number("the gain"));
  if (!std::isfinite(gain)) throw Wrong{"the gain must be a finite number"};
  return gain;
}

Command takeScene(Arguments& arguments) {
  if (arguments.isText()) return RecallScene{arguments.text("the scene")};
  return RecallScene{arguments.wholeNumber("the scene, if it is not a name,")};
}

void takePort(Arguments& arguments) {
  if (arguments.wholeNumber("the port") > kLargestPort) throw Wrong{"the port must be 65535 at most"};
}

Command takeSubscription(Arguments& arguments) {
  Subscribe subscription{false, false};
  while (arguments.isText()) {
    const std::string what = arguments.text("what is subscribed");
    if (what != "changes" && what != "meters")
      throw Wrong{"there are \"changes\" and \"meters\" to subscribe"};
    (what == "changes" ? subscription.changes : subscription.meters) = true;
  }
  if (!arguments.isAtEnd()) takePort(arguments);
  return subscription == Subscribe{false, false} ? Subscribe{} : subscription;
}

Command takeUnsubscription(Arguments& arguments) {
  if (!arguments.isAtEnd()) takePort(arguments);
  return Unsubscribe{};
}

struct Kind {
  const char* name;
  Command (*take)(Arguments&);
};

constexpr Kind kKinds[] = {
    {"route",
     [](Arguments& a) -> Command {
       return SetRoute{takeKey(a), takeLinear(a)};
     }},
    {"route/gain",
     [](Arguments& a) -> Command {
       return SetGain{takeKey(a), a.number("the level")};
     }},
    {"route/mute",
     [](Arguments& a) -> Command {
       return SetMute{takeKey(a), a.flag("mute")};
     }},
    {"route/label",
     [](Arguments& a) -> Command {
       return SetLabel{takeKey(a), a.text("the label")};
     }},
    {"route/remove", [](Arguments& a) -> Command { return RemoveRoute{takeKey(a)}; }},
    {"scene", &takeScene},
    {"scene/save", [](Arguments& a) -> Command { return SaveScene{a.text("the scene")}; }},
    {"scenes", [](Arguments&) -> Command { return ListScenes{}; }},
    {"undo", [](Arguments&) -> Command { return Undo{}; }},
    {"redo", [](Arguments&) -> Command { return Redo{}; }},
    {"save", [](Arguments&) -> Command { return Save{}; }},
    {"status", [](Arguments&) -> Command { return GetStatus{}; }},
    {"dump", [](Arguments&) -> Command { return Dump{}; }},
    {"subscribe", &takeSubscription},
    {"unsubscribe", &takeUnsubscription},
    {"clips/reset", [](Arguments&) -> Command { return ResetClips{}; }},
    {"hello", [](Arguments& a) -> Command { return Hello{a.text("the token")}; }},
};
static_assert(std::size(kKinds) == std::variant_size_v<Command>);

Command take(const Kind& kind, const Message& message) {
  Arguments arguments(message);
  Command command = kind.take(arguments);
  if (!arguments.isAtEnd()) throw Wrong{"there are too many arguments"};
  return command;
}

}  // namespace

Result<Command, std::string> commandOf(const Message& message) {
  try {
    for (const Kind& kind : kKinds) {
      if (message.address == std::string(kRoot) + kind.name) return take(kind, message);
    }
    return std::string("there is no such address");
  } catch (const Wrong& wrong) {
    return wrong.text;
  }
}

std::optional<std::uint16_t> eventPortOf(const Message& message) {
  if (message.arguments.empty()) return std::nullopt;
  const auto port = numberOf(message.arguments.back());
  return port ? std::optional(static_cast<std::uint16_t>(*port)) : std::nullopt;
}

}  // namespace tolvane::ctl::osc
