#include <cmath>

#include "base/thread_check.h"
#include "core/patch/gain_text.h"
#include "core/patch/patch_file.h"

namespace tolvane {

namespace {

using Key = PatchConnection::CodingKeys;

// A member's key and colon. `before` ends with the key's opening quote.
std::string label(const char* before, Key key) {
  return before + std::string(stringValue(key)) + "\":";
}

void appendRoute(std::string& text, const PatchConnection& route) {
  text += label("{\"", Key::inputChannel) + std::to_string(route.inputChannel);
  text += label(",\"", Key::outputChannel) + std::to_string(route.outputChannel);
  text += label(",\"", Key::gain) + gainText(route.gain);
  text += label(",\"", Key::active) + (route.active ? "true}" : "false}");
}

}  // namespace

PatchEncodeResult encodePatch(std::span<const PatchConnection> connections) {
  checkNotIo();
  std::string text = "[";
  for (std::size_t element = 0; element < connections.size(); ++element) {
    const PatchConnection& route = connections[element];
    if (!std::isfinite(route.gain)) {
      return PatchFileError{.reason = "a gain that is not finite cannot be written",
                            .element = element,
                            .member = std::string(stringValue(Key::gain)),
                            .byteOffset = std::nullopt};
    }
    if (element > 0) text += ',';
    appendRoute(text, route);
  }
  text += ']';
  return text;
}

}  // namespace tolvane
