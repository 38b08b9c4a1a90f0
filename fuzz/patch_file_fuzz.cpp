// Decodes arbitrary bytes as a patch file. Decoded routes must survive encoding and decoding unchanged. An
// error must have a printable message and a byte offset within the text.
#include <algorithm>
#include <cstdint>

#include "core/patch/patch_file.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

void checkError(const PatchFileError& error, std::size_t size) {
  const std::string message = error.message();
  require(!error.reason.empty() && error.byteOffset && *error.byteOffset <= size);
  require(std::all_of(message.begin(), message.end(), [](char byte) { return byte >= ' ' && byte <= '~'; }));
}

void decodeAndEncode(std::string_view given) {
  const auto routes = decodePatch(given);
  if (!routes) return checkError(routes.error(), given.size());
  const auto text = encodePatch(routes.value());
  require(static_cast<bool>(text));
  const auto again = decodePatch(text.value());
  require(again && again.value() == routes.value());
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::decodeAndEncode({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
