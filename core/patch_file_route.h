// One route of a patch file, gathered member by member.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "core/patch_file.h"

namespace tolvane {

/// A member's value that is no number, true or false: only what it is called in an error matters.
struct OtherJsonValue {
  const char* name;  // "a string"
};

/// A number, as its text has it.
struct JsonNumber {
  std::string_view text;
};

using JsonValue = std::variant<OtherJsonValue, JsonNumber, bool>;

/// "expected an integer, found a string". [any-thread]
[[nodiscard]] std::string mismatch(const char* wanted, const JsonValue& value);

/// Takes the members of one JSON object in any order and judges them when the object ends: of equal members
/// only the last counts, so a wrong one may still be replaced by a right one. The thread's locale is C's.
/// [not-io]
class PatchRouteBuilder {
 public:
  using Key = PatchConnection::CodingKeys;

  /// Forgets everything: a new object begins at this byte.
  void begin(std::size_t byteOffset);

  /// The member's value, which begins at this byte.
  void set(Key key, const JsonValue& value, std::size_t byteOffset);

  /// The route; or the first member, in field order, that is missing or wrong. The error names no element.
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
