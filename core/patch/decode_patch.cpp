#include <nlohmann/json.hpp>

#include "base/json_text.h"
#include "base/numeric_locale.h"
#include "base/thread_check.h"
#include "core/patch/parser_text.h"
#include "core/patch/patch_file.h"
#include "core/patch/patch_route_builder.h"

namespace tolvane {

namespace {

using Key = PatchConnection::CodingKeys;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Receives the parser's events and keeps only the routes. Level 1 is the patch, level 2 a route; deeper
// levels belong to a member that is unknown or wrong. Levels are only counted: neither the parser nor this
// class recurses, so only the length of the text limits the nesting.
class PatchReader final : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit PatchReader(std::string_view text) : text_(text) {
    if (text.starts_with(kByteOrderMark)) previousEnd_ = kByteOrderMark.size();
  }

  /// Called once for a reader.
  PatchDecodeResult read() {
    const char* const end = text_.data() + text_.size();
    const ParserText first(text_.data(), end, count_);
    const ParserText last(end, end, count_);
    if (nlohmann::json::sax_parse(first, last, this)) return std::move(routes_);
    return std::move(error_);
  }

  bool null() override { return scalar(OtherJsonValue{"null"}); }
  bool boolean(bool flag) override { return scalar(flag); }
  bool string(string_t& /*text*/) override { return scalar(OtherJsonValue{"a string"}); }
  bool binary(binary_t& /*bytes*/) override { return scalar(OtherJsonValue{"binary data"}); }
  bool number_unsigned(number_unsigned_t /*number*/) override { return number(); }
  bool number_float(number_float_t /*number*/, const string_t& /*text*/) override { return number(); }
  bool number_integer(number_integer_t /*number*/) override { return number(); }

  bool start_object(std::size_t /*size*/) override {
    if (depth_ != 1) return judge(OtherJsonValue{"an object"}) && descend();
    route_.begin(valueOffset());
    return descend();
  }
  bool key(string_t& text) override;
  bool end_object() override;
  bool start_array(std::size_t /*size*/) override {
    return (depth_ == 0 || judge(OtherJsonValue{"an array"})) && descend();
  }
  bool end_array() override { return ascend(); }

  bool parse_error(std::size_t bytesRead, const std::string& token,
                   const nlohmann::detail::exception& error) override;

 private:
  std::size_t valueOffset() const { return nextValueOffset(text_, previousEnd_); }

  bool number();
  bool scalar(const JsonValue& value) { return judge(value) && endValue(); }
  bool judge(const JsonValue& value);
  bool descend();
  bool ascend();
  bool endValue();
  bool fail(std::string reason, std::size_t byteOffset);

  std::string_view text_;
  ParserText::Count count_;
  std::size_t previousEnd_ = 0;  // where to search for the first byte of the next value
  std::size_t depth_ = 0;
  std::optional<Key> member_;  // the known member whose value is being read
  PatchRouteBuilder route_;
  std::vector<PatchConnection> routes_;
  PatchFileError error_;
};

bool PatchReader::number() {
  const std::size_t begin = valueOffset();
  const std::size_t end = text_.find_first_not_of("+-.0123456789eE", begin);
  return scalar(JsonNumber{text_.substr(begin, end - begin)});
}

bool PatchReader::judge(const JsonValue& value) {
  if (depth_ == 0) return fail(mismatch("an array of routes", value), valueOffset());
  if (depth_ == 1) {
    error_.element = routes_.size();
    return fail(mismatch("an object", value), valueOffset());
  }
  if (depth_ == 2 && member_) route_.set(*member_, value, valueOffset());
  return true;
}

bool PatchReader::key(string_t& text) {
  previousEnd_ = count_.taken;
  if (depth_ == 2) member_ = codingKey(text);
  return true;
}

bool PatchReader::descend() {
  previousEnd_ = count_.taken;
  ++depth_;
  return true;
}

bool PatchReader::ascend() {
  --depth_;
  return endValue();
}

bool PatchReader::endValue() {
  previousEnd_ = count_.taken;
  if (depth_ == 2) member_.reset();
  return true;
}

bool PatchReader::end_object() {
  if (depth_ != 2) return ascend();
  auto result = route_.finish();
  if (!result) {
    error_ = result.error();
    error_.element = routes_.size();
    return false;
  }
  routes_.push_back(result.value());
  return ascend();
}

bool PatchReader::fail(std::string reason, std::size_t byteOffset) {
  if (depth_ >= 2) error_.element = routes_.size();
  if (member_) error_.member = stringValue(*member_);
  error_.reason = std::move(reason);
  error_.byteOffset = byteOffset;
  return false;
}

bool PatchReader::parse_error(std::size_t bytesRead, const std::string& /*token*/,
                              const nlohmann::detail::exception& error) {
  return fail(syntaxReason(error.what()), bytesRead - 1 + count_.leftOut);
}

}  // namespace

PatchDecodeResult decodePatch(std::string_view text) {
  checkNotIo();
  if (const auto fault = faultBeforeParsing(text)) {
    return PatchFileError{
        .reason = fault->reason, .element = std::nullopt, .member = {}, .byteOffset = fault->byteOffset};
  }
  // The number conversions follow the locale of the thread.
  const ScopedCLocale locale;
  return PatchReader(text).read();
}

}  // namespace tolvane
