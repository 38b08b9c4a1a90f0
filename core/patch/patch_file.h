// The patch file: UTF-8 JSON, one array of objects with the members "inputChannel", "outputChannel"
// (integers, zero-based), "gain" (number) and "active" (true or false), all required, others ignored.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "core/patch/patch_connection.h"

namespace tolvane {

/// What is wrong with a patch, and where.
struct PatchFileError {
  std::string reason;                     // "expected an integer, found a string"
  std::optional<std::size_t> element;     // zero-based index in the array
  std::string member;                     // the member's key; empty if the error concerns no member
  std::optional<std::size_t> byteOffset;  // zero-based; see decodePatch

  /// The whole error in one line, without a line feed: "element 3, member \"gain\", byte 57: expected ...".
  [[nodiscard]] std::string message() const;
};

using PatchDecodeResult = Result<std::vector<PatchConnection>, PatchFileError>;
using PatchEncodeResult = Result<std::string, PatchFileError>;

/// Reads the routes from the text of a patch file. Returns all of them or an error. Any 64-bit channel
/// number, duplicate routes and any finite gain are accepted. Members may come in any order, with any white
/// space. If an object repeats a member, the last one counts. Unknown members may hold any JSON, with numbers
/// of any size and nesting of any depth. A gain becomes the float nearest to its text. A byte order mark
/// before the array is skipped. The process locale has no effect.
///
/// Errors: text that is not UTF-8 JSON, a NUL byte, a top level that is not an array, an element that is not
/// an object, a missing member, a member of the wrong type, an integer beyond 64 bits, a gain beyond 32-bit
/// float. The byte offset is that of the first byte of the wrong value, or of the element that lacks a
/// member. In text that is not JSON it is the first byte that breaks the syntax, or the text's length if the
/// text ends too early. Throws nothing but std::bad_alloc. [not-io]
[[nodiscard]] PatchDecodeResult decodePatch(std::string_view text);

/// Writes the text of a patch file: compact, with members in field order. Each gain has the shortest decimal
/// form that reads back as the same float. Error: a gain that is not finite. [not-io]
[[nodiscard]] PatchEncodeResult encodePatch(std::span<const PatchConnection> connections);

}  // namespace tolvane
