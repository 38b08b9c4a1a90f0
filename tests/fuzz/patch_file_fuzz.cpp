// Decodes arbitrary bytes as a patch file. Decoded routes must survive encoding and decoding unchanged. An
// error must have a printable message and a byte offset within the text.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "core/patch/patch_file.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void checkError(const tolvane::PatchFileError& error, std::size_t size) {
  const std::string message = error.message();
  require(!error.reason.empty() && error.byteOffset && *error.byteOffset <= size);
  require(std::all_of(message.begin(), message.end(), [](char byte) { return byte >= ' ' && byte <= '~'; }));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto routes = tolvane::decodePatch({reinterpret_cast<const char*>(bytes), size});
  if (!routes) {
    checkError(routes.error(), size);
    return 0;
  }
  const auto text = tolvane::encodePatch(routes.value());
  require(static_cast<bool>(text));
  const auto again = tolvane::decodePatch(text.value());
  require(again && again.value() == routes.value());
  return 0;
}
