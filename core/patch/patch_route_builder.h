// Builds one route of a patch file, member by member.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "core/patch/patch_file.h"

namespace tolvane {

/// A value other than a number, true or false. Only its name in error messages is kept.
struct OtherJsonValue {
  const char* name;  // "a string"
};

/// A number, kept as its text.
struct JsonNumber {
  std::string_view text;
};

using JsonValue = std::variant<OtherJsonValue, JsonNumber, bool>;

/// "expected an integer, found a string". [any-thread]
[[nodiscard]] std::string mismatch(const char* wanted, const JsonValue& value);

/// Takes the members of one JSON object in any order and checks them when the object ends. If a member is
/// repeated, the last one counts, so a right value may still replace a wrong one. The calling thread must use
/// the C locale. [not-io]
class PatchRouteBuilder {
 public:
  using Key = PatchConnection::CodingKeys;

  /// Starts a new object, which begins at this byte, and forgets the previous one.
  void begin(std::size_t byteOffset);

  /// Sets a member's value, which begins at this byte.
  void set(Key key, const JsonValue& value, std::size_t byteOffset);

  /// Returns the route, or an error for the first member in field order that is missing or wrong. The error
  /// names no element.
  [[nodiscard]] Result<PatchConnection, PatchFileError> finish() const;

 private:
  struct Member {
    std::string problem = "missing";  // empty: the route holds the member's value
    std::size_t byteOffset = 0;
  };

  std::string take(Key key, const JsonValue& value);

  PatchConnection route_;
  std::array<Member, 4> members_;
};

}  // namespace tolvane
