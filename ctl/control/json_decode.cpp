#include <array>
#include <cmath>
#include <limits>
#include <set>

#include <nlohmann/json.hpp>

#include "base/json_text.h"
#include "ctl/control/json.h"

namespace tolvane::ctl::control {

namespace {

using ParsedJson = nlohmann::json;

constexpr int kDeepest = 8;
constexpr std::size_t kMostRequests = 256;
constexpr std::int64_t kLargestChannel = std::numeric_limits<std::int32_t>::max();

/// What is wrong with a request; thrown and caught within this file.
struct Wrong {
  std::string text;
};

/// The integer that a JSON number stands for; "1.0" is one.
std::optional<std::int64_t> integerOf(const ParsedJson& json) {
  if (json.is_number_unsigned() &&
      json.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()})
    return std::nullopt;
  if (json.is_number_integer()) return json.get<std::int64_t>();
  if (!json.is_number_float()) return std::nullopt;
  const double number = json.get<double>();
  constexpr double kExact = 9007199254740992.0;
  if (std::trunc(number) != number || std::fabs(number) > kExact) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

/// Takes the members of a request, each once. What is left over is wrong.
class Members {
 public:
  explicit Members(const ParsedJson& object) : object_(object) {}

  [[nodiscard]] const ParsedJson* find(const char* key) {
    taken_.insert(key);
    const auto member = object_.find(key);
    return member == object_.end() ? nullptr : &*member;
  }
  [[nodiscard]] const ParsedJson& require(const char* key) {
    if (const ParsedJson* member = find(key)) return *member;
    throw Wrong{std::string("the member \"") + key + "\" is missing"};
  }
  [[nodiscard]] std::int64_t integer(const char* key, std::int64_t lowest, std::int64_t highest) {
    const auto number = integerOf(require(key));
    if (number && *number >= lowest && *number <= highest) return *number;
    throw Wrong{std::string("\"") + key + "\" must be a whole number from " + std::to_string(lowest) +
                " to " + std::to_string(highest)};
  }
  [[nodiscard]] double number(const char* key) {
    const ParsedJson& member = require(key);
    if (!member.is_number()) throw Wrong{std::string("\"") + key + "\" must be a number"};
    return member.get<double>();
  }
  [[nodiscard]] bool flag(const char* key) {
    const ParsedJson& member = require(key);
    if (!member.is_boolean()) throw Wrong{std::string("\"") + key + "\" must be true or false"};
    return member.get<bool>();
  }
  [[nodiscard]] bool flag(const char* key, bool otherwise) {
    return object_.contains(key) ? flag(key) : (static_cast<void>(find(key)), otherwise);
  }
  [[nodiscard]] std::string text(const char* key) {
    const ParsedJson& member = require(key);
    if (!member.is_string()) throw Wrong{std::string("\"") + key + "\" must be a string"};
    return member.get<std::string>();
  }
  void requireNoOthers() const {
    for (const auto& [key, value] : object_.items()) {
      if (!taken_.contains(key)) throw Wrong{"there is no member \"" + key + '"'};
    }
  }

 private:
  const ParsedJson& object_;
  std::set<std::string> taken_;
};

RouteKey takeKey(Members& members) {
  const std::int64_t input = members.integer("input", 1, kLargestChannel);
  return {input - 1, members.integer("output", 1, kLargestChannel) - 1};
}

double takeLevel(Members& members) {
  if (members.require("db").is_null()) return -std::numeric_limits<double>::infinity();
  return members.number("db");
}

float takeLinear(Members& members) {
  const double gain = members.number("gain");
  const auto narrow = static_cast<float>(gain);
  if (!std::isfinite(narrow)) throw Wrong{"\"gain\" is too large"};
  return narrow;
}

RecallScene takeScene(Members& members) {
  if (members.require("scene").is_string()) return {members.text("scene")};
  return {members.integer("scene", 1, kLargestChannel)};
}

Subscribe takeSubscription(Members& members) {
  const bool changes = members.flag("changes", true);
  return {changes, members.flag("meters", true)};
}

using Take = Command (*)(Members&);
struct Kind {
  const char* name;
  Take take;
};

// Arguments are taken in a fixed order: that of an initialiser list.
constexpr Kind kKinds[] = {
    {"route",
     [](Members& m) -> Command {
       return SetRoute{takeKey(m), takeLinear(m)};
     }},
    {"route/gain",
     [](Members& m) -> Command {
       return SetGain{takeKey(m), takeLevel(m)};
     }},
    {"route/mute",
     [](Members& m) -> Command {
       return SetMute{takeKey(m), m.flag("mute")};
     }},
    {"route/label",
     [](Members& m) -> Command {
       return SetLabel{takeKey(m), m.text("label")};
     }},
    {"route/remove", [](Members& m) -> Command { return RemoveRoute{takeKey(m)}; }},
    {"scene", [](Members& m) -> Command { return takeScene(m); }},
    {"scene/save", [](Members& m) -> Command { return SaveScene{m.text("scene")}; }},
    {"scenes", [](Members&) -> Command { return ListScenes{}; }},
    {"undo", [](Members&) -> Command { return Undo{}; }},
    {"redo", [](Members&) -> Command { return Redo{}; }},
    {"save", [](Members&) -> Command { return Save{}; }},
    {"status", [](Members&) -> Command { return GetStatus{}; }},
    {"dump", [](Members&) -> Command { return Dump{}; }},
    {"subscribe", [](Members& m) -> Command { return takeSubscription(m); }},
    {"unsubscribe", [](Members&) -> Command { return Unsubscribe{}; }},
    {"clips/reset", [](Members&) -> Command { return ResetClips{}; }},
    {"hello", [](Members& m) -> Command { return Hello{m.text("token")}; }},
};
static_assert(std::size(kKinds) == std::variant_size_v<Command>);

RequestId takeId(Members& members) {
  const ParsedJson* id = members.find("id");
  if (id == nullptr) return std::monostate();
  if (id->is_string() && id->get_ref<const std::string&>().size() <= 100) return id->get<std::string>();
  if (const auto number = integerOf(*id)) return *number;
  throw Wrong{"\"id\" must be a whole number or a string of at most 100 bytes"};
}

const Kind& takeKind(Members& members) {
  const std::string name = members.text("command");
  for (const Kind& kind : kKinds) {
    if (name == kind.name) return kind;
  }
  throw Wrong{"there is no such command"};
}

Result<Request, RequestError> decodeRequest(const ParsedJson& json) {
  RequestError error;
  try {
    if (!json.is_object()) throw Wrong{"a request must be an object"};
    Members members(json);
    error.id = takeId(members);
    const Kind& kind = takeKind(members);
    error.command = kind.name;
    Request request{kind.take(members), error.id, 0};
    if (json.contains("gesture"))
      request.gesture = static_cast<std::uint64_t>(members.integer("gesture", 1, kLargestChannel));
    members.requireNoOthers();
    return request;
  } catch (const Wrong& wrong) {
    error.text = wrong.text;
    return error;
  }
}

/// True if objects and arrays are nested deeper than any request.
bool isTooDeep(std::string_view text) {
  int depth = 0;
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (isInString && c == '\\') ++i;
    if (c == '"') isInString = !isInString;
    if (isInString) continue;
    if ((c == '{' || c == '[') && ++depth > kDeepest) return true;
    if (c == '}' || c == ']') --depth;
  }
  return false;
}

RequestError wrong(std::string text) {
  return {std::move(text), {}, {}};
}

}  // namespace

Result<RequestBundle, RequestError> decodeRequests(std::string_view text) {
  if (text.size() > kLargestMessageBytes) return wrong("the message is larger than 64 KiB");
  if (const auto fault = faultBeforeParsing(text)) return wrong(fault->reason);
  if (isTooDeep(text)) return wrong("the message is nested too deep");
  ParsedJson json;
  try {
    json = ParsedJson::parse(text);
  } catch (const ParsedJson::exception&) {
    return wrong("the message is not JSON");
  }
  RequestBundle bundle;
  if (!json.is_array()) {
    if (!json.is_object()) return wrong("the message must be an object or an array of objects");
    bundle.push_back(decodeRequest(json));
    return bundle;
  }
  if (json.empty() || json.size() > kMostRequests) return wrong("an array must hold 1 to 256 requests");
  for (const ParsedJson& each : json) bundle.push_back(decodeRequest(each));
  return bundle;
}

}  // namespace tolvane::ctl::control
