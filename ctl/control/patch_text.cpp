#include "ctl/control/patch_text.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include <nlohmann/json.hpp>

#include "ctl/terminal/decimal.h"

namespace tolvane::ctl::control {

namespace {

constexpr std::string_view kLabel = "label";
constexpr std::array<std::string_view, 5> kOurs = {"inputChannel", "outputChannel", "gain", "active", kLabel};

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// The text of a JSON string; none if the value is no string.
std::optional<std::string> stringOf(std::string_view json) {
  if (json.empty() || json.front() != '"') return std::nullopt;
  const bool hasEscapes = json.find('\\') != std::string_view::npos;
  if (!hasEscapes) return std::string(json.substr(1, json.size() - 2));
  return nlohmann::json::parse(json).get<std::string>();
}

std::string jsonOf(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// The JSON text of the member that `key` names.
std::string valueOf(const Route& route, std::string_view key) {
  const PatchConnection& connection = route.connection;
  if (key == kOurs[0]) return std::to_string(connection.inputChannel);
  if (key == kOurs[1]) return std::to_string(connection.outputChannel);
  if (key == kOurs[2]) return shortestDecimal(connection.gain);
  if (key == kOurs[3]) return connection.active ? "true" : "false";
  return jsonOf(route.label);
}

/// True if the member has the same value in both.
bool isSame(const Route& a, const Route& b, std::string_view key) {
  if (key == kOurs[2]) return a.connection.gain == b.connection.gain;
  if (key == kOurs[3]) return a.connection.active == b.connection.active;
  return key != kLabel || a.label == b.label;
}

std::string newElement(const Route& route) {
  std::string text = "{";
  for (const std::string_view key : kOurs) {
    if (key == kLabel && route.label.empty()) continue;
    if (text.size() > 1) text += ',';
    text += jsonOf(std::string(key)) + ':' + valueOf(route, key);
  }
  return text + '}';
}

}  // namespace

/// Walks a text that is known to be a patch file, so it never meets its end.
class PatchText::Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  [[nodiscard]] char next() const { return text_[at_]; }
  [[nodiscard]] std::size_t at() const { return at_; }
  void pass() { ++at_; }
  [[nodiscard]] std::string takeSpace() {
    const std::size_t begin = at_;
    while (isSpace(text_[at_])) ++at_;
    return std::string(text_.substr(begin, at_ - begin));
  }
  void passSpace() {
    while (isSpace(text_[at_])) ++at_;
  }
  [[nodiscard]] std::string takeUpTo(char end) {
    const std::size_t begin = std::exchange(at_, text_.find(end, at_) + 1);
    return std::string(text_.substr(begin, at_ - begin));
  }
  [[nodiscard]] std::string_view takeValue() {
    const std::size_t begin = at_;
    if (next() == '"') {
      passString();
    } else if (next() == '{' || next() == '[') {
      passNested();
    } else {
      at_ = std::min(text_.size(), text_.find_first_of(",]} \t\r\n", at_));
    }
    return text_.substr(begin, at_ - begin);
  }
  [[nodiscard]] Element takeElement() {
    Element element;
    const std::size_t begin = at_;
    pass();  // the brace
    for (passSpace(); next() != '}'; passSpace()) {
      takeMember(element, begin);
      passSpace();
      if (next() == ',') pass();
    }
    pass();
    element.text = text_.substr(begin, at_ - begin);
    return element;
  }

 private:
  void passString() {
    for (++at_; text_[at_] != '"'; ++at_) {
      if (text_[at_] == '\\') ++at_;
    }
    ++at_;
  }
  void passNested() {
    std::size_t depth = 0;
    do {
      if (next() == '"') {
        passString();
        continue;
      }
      if (next() == '{' || next() == '[') ++depth;
      if (next() == '}' || next() == ']') --depth;
      ++at_;
    } while (depth > 0);
  }
  void takeMember(Element& element, std::size_t begin) {
    const std::string key = stringOf(takeValue()).value_or("");
    passSpace();
    pass();  // the colon
    passSpace();
    const std::size_t valueBegin = at_;
    const std::string_view value = takeValue();
    if (std::find(kOurs.begin(), kOurs.end(), key) == kOurs.end()) return;
    if (key == kLabel) {
      const auto label = stringOf(value);
      if (!label) return;  // not a label of ours
      element.route.label = *label;
    }
    element.members.push_back({key, valueBegin - begin, at_ - begin});
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

PatchText::PatchText(std::string_view text, std::span<const PatchConnection> routes) {
  if (text.empty()) return;
  Scanner scanner(text);
  head_ = scanner.takeUpTo('[');
  std::string before = scanner.takeSpace();
  if (routes.empty()) inside_ = before;
  for (const PatchConnection& route : routes) {
    Element element = scanner.takeElement();
    element.before = std::exchange(before, {});
    element.after = scanner.takeSpace();
    element.route.connection = route;
    elements_.push_back(std::move(element));
    if (scanner.next() != ',') break;
    scanner.pass();
    before = scanner.takeSpace();
  }
  tail_ = text.substr(scanner.at());
}

std::vector<Route> PatchText::routes() const {
  std::vector<Route> routes(elements_.size());
  std::transform(elements_.begin(), elements_.end(), routes.begin(),
                 [](const Element& element) { return element.route; });
  return routes;
}

std::string PatchText::changed(const Element& element, const Route& route) {
  std::string text = element.text;
  bool hasLabel = false;
  for (auto member = element.members.rbegin(); member != element.members.rend(); ++member) {
    hasLabel = hasLabel || member->key == kLabel;
    if (isSame(element.route, route, member->key)) continue;
    text.replace(member->begin, member->end - member->begin, valueOf(route, member->key));
  }
  if (!hasLabel && !route.label.empty()) text.insert(text.size() - 1, ",\"label\":" + jsonOf(route.label));
  return text;
}

std::string PatchText::with(std::span<const Route> routes) const {
  std::map<RouteKey, std::vector<const Element*>> known;  // the next one last
  for (auto element = elements_.rbegin(); element != elements_.rend(); ++element)
    known[keyOf(element->route)].push_back(&*element);
  const std::string newBefore = elements_.size() > 1 ? elements_[1].before
                                : elements_.empty()  ? ""
                                                     : elements_[0].before;
  std::string text = head_;
  for (const Route& route : routes) {
    if (&route != routes.data()) text += ',';
    auto& candidates = known[keyOf(route)];
    if (candidates.empty()) {
      text += newBefore + newElement(route);
      continue;
    }
    const Element& element = *candidates.back();
    candidates.pop_back();
    const bool isLast = &element == &elements_.back();
    text += element.before + changed(element, route) + (isLast ? "" : element.after);
  }
  if (elements_.empty() || !routes.empty()) text += elements_.empty() ? inside_ : elements_.back().after;
  return text + tail_;
}

}  // namespace tolvane::ctl::control
