#include "core/patch/patch_route_builder.h"

#include <cmath>
#include <cstdlib>

#include "core/patch/json_integer.h"

namespace tolvane {

namespace {

using Key = PatchConnection::CodingKeys;

const char* nameOf(const JsonValue& value) {
  if (const auto* other = std::get_if<OtherJsonValue>(&value)) return other->name;
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
  return "a number";
}

// Each function stores the value and returns an empty text, or returns why the value cannot be stored.

std::string takeInteger(const JsonValue& value, std::int64_t& field) {
  const auto* number = std::get_if<JsonNumber>(&value);
  if (number == nullptr) return mismatch("an integer", value);
  const auto reading = readInteger(number->text);
  if (reading.outcome == IntegerReading::Outcome::fraction) {
    return "expected an integer, found a number with a fraction";
  }
  if (reading.outcome == IntegerReading::Outcome::outOfRange) return "integer out of range for 64 bits";
  field = reading.value;
  return {};
}

std::string takeGain(const JsonValue& value, float& field) {
  const auto* number = std::get_if<JsonNumber>(&value);
  if (number == nullptr) return mismatch("a number", value);
  // Converted directly to float: by way of double, a text near the middle of two floats may end on the
  // farther one.
  const float gain = std::strtof(std::string(number->text).c_str(), nullptr);
  if (!std::isfinite(gain)) return "number out of range for a 32-bit float";
  field = gain;
  return {};
}

std::string takeFlag(const JsonValue& value, bool& field) {
  const auto* flag = std::get_if<bool>(&value);
  if (flag == nullptr) return mismatch("true or false", value);
  field = *flag;
  return {};
}

}  // namespace

std::string mismatch(const char* wanted, const JsonValue& value) {
  return std::string("expected ") + wanted + ", found " + nameOf(value);
}

void PatchRouteBuilder::begin(std::size_t byteOffset) {
  members_.fill({"missing", byteOffset});
}

void PatchRouteBuilder::set(Key key, const JsonValue& value, std::size_t byteOffset) {
  members_[static_cast<std::size_t>(key)] = {take(key, value), byteOffset};
}

std::string PatchRouteBuilder::take(Key key, const JsonValue& value) {
  switch (key) {
    case Key::inputChannel:
      return takeInteger(value, route_.inputChannel);
    case Key::outputChannel:
      return takeInteger(value, route_.outputChannel);
    case Key::gain:
      return takeGain(value, route_.gain);
    case Key::active:
      break;
  }
  return takeFlag(value, route_.active);
}

Result<PatchConnection, PatchFileError> PatchRouteBuilder::finish() const {
  for (std::size_t index = 0; index < members_.size(); ++index) {
    const Member& member = members_[index];
    if (member.problem.empty()) continue;
    return PatchFileError{.reason = member.problem,
                          .element = std::nullopt,
                          .member = std::string(stringValue(static_cast<Key>(index))),
                          .byteOffset = member.byteOffset};
  }
  return route_;
}

}  // namespace tolvane
