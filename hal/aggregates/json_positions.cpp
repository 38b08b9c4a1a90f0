#include "hal/aggregates/json_positions.h"

#include <algorithm>
#include <vector>

#include "base/json_text.h"

namespace tolvane::hal {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMaxDepth = 64;

struct TooDeep {
  std::size_t offset;
};

/// Receives the parser's events and notes where each value begins.
class Locator {
 public:
  Locator(std::string_view text, LocatedJson& result) : text_(text), result_(result) {}

  /// Throws what the parser throws, and TooDeep.
  void parse() {
    const CountingIterator first(text_.data(), consumed_);
    const CountingIterator last(text_.data() + text_.size(), consumed_);
    result_.value = Json::parse(first, last, [this](int /*depth*/, Json::parse_event_t event, Json& parsed) {
      follow(event, parsed);
      return true;
    });
  }

 private:
  struct Level {
    bool isArray;
    std::size_t index = 0;
    std::string key = {};
  };

  void follow(Json::parse_event_t event, const Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        note();
        if (levels_.size() == kMaxDepth) throw TooDeep{consumed_ - 1};
        levels_.push_back({event == Json::parse_event_t::array_start});
        break;
      case Json::parse_event_t::key:
        levels_.back().key = parsed.get_ref<const std::string&>();
        break;
      case Json::parse_event_t::value:
        note();
        next();
        break;
      default:
        levels_.pop_back();
        next();
    }
    previousEnd_ = consumed_;
  }

  void note() { result_.offsets[pointer()] = nextValueOffset(text_, previousEnd_); }

  void next() {
    if (!levels_.empty()) ++levels_.back().index;
  }

  [[nodiscard]] std::string pointer() const {
    nlohmann::json::json_pointer pointer;
    for (const Level& level : levels_) pointer /= level.isArray ? std::to_string(level.index) : level.key;
    return pointer.to_string();
  }

  std::string_view text_;
  LocatedJson& result_;
  std::size_t consumed_ = 0;
  std::size_t previousEnd_ = 0;
  std::vector<Level> levels_;
};

}  // namespace

std::string placeOf(std::string_view text, std::size_t byteOffset) {
  const std::string_view before = text.substr(0, byteOffset);
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 on the first line
  return "line " + std::to_string(lines + 1) + ", column " + std::to_string(before.size() - lineStart + 1);
}

LocatedJson parseLocated(std::string_view text) {
  LocatedJson result;
  if (const auto fault = faultBeforeParsing(text)) {
    result.error = placeOf(text, fault->byteOffset) + ": " + fault->reason;
    return result;
  }
  try {
    Locator(text, result).parse();
  } catch (const Json::parse_error& error) {
    result.error = placeOf(text, error.byte == 0 ? 0 : error.byte - 1) + ": " + syntaxReason(error.what());
  } catch (const Json::exception&) {
    result.error = "a number is out of range";
  } catch (const TooDeep& error) {
    result.error = placeOf(text, error.offset) + ": nesting deeper than " + std::to_string(kMaxDepth);
  }
  return result;
}

}  // namespace tolvane::hal
