// The patch file: UTF-8 JSON, one array of objects with the members "inputChannel", "outputChannel"
// (integers, zero-based), "gain" (number) and "active" (true or false), all required, others ignored.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/patch_connection.h"
#include "core/result.h"

namespace tolvane {

/// What is wrong with a patch, and where.
struct PatchFileError {
  std::string reason;                     // "expected an integer, found a string"
  std::optional<std::size_t> element;     // zero-based index in the array
  std::string member;                     // the member's key; empty when it is not about one
  std::optional<std::size_t> byteOffset;  // zero-based; see decodePatch

  /// All of it in one line, without a line feed: "element 3, member \"gain\", byte 57: expected ...".
  [[nodiscard]] std::string message() const;
};

using PatchDecodeResult = Result<std::vector<PatchConnection>, PatchFileError>;
using PatchEncodeResult = Result<std::string, PatchFileError>;

/// The routes in the text of a patch file, all of them or none: no range, duplicate or gain check. Member
/// order and white space are free; of equal members in one object the last holds; unknown members may hold
/// any JSON, numbers of any size and nesting of any depth included. A gain is the float nearest to its text.
/// Errors: text that is not UTF-8 JSON, a NUL byte, a top level that is not an array, an element that is not
/// an object, a missing member, a member of the wrong type, an integer beyond 64 bits, a gain beyond 32-bit
/// float. The error's byte offset is that of the first byte of the wrong value, or of the element that lacks
/// a member; in text that is not JSON, of the byte at which it ceases to be (the text's length when it ends
/// too early). A byte order mark before the array is skipped. The process's locale does not matter. Throws
/// nothing but std::bad_alloc. [not-io]
[[nodiscard]] PatchDecodeResult decodePatch(std::string_view text);

/// The text of a patch file: compact, members in field order, each gain in the shortest decimal form that
/// reads back as the same float. Error: a gain that is not finite. [not-io]
[[nodiscard]] PatchEncodeResult encodePatch(std::span<const PatchConnection> connections);

}  // namespace tolvane
