// Reads arbitrary bytes as a control message in JSON. Each request must be read the same after encoding; a
// wrong one must have an error and an answer that is read as JSON.
#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

#include "ctl/control/json.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

using namespace ctl::control;

void checkError(const RequestError& error) {
  require(!error.text.empty());
  require(nlohmann::json::parse(encodeAnswer(error)).at("ok") == false);
}

void checkRequest(const Request& request) {
  const auto again = decodeRequests(encodeRequest(request));
  require(static_cast<bool>(again));
  require(again.value().size() == 1);
  require(static_cast<bool>(again.value()[0]));
  const Request& its = again.value()[0].value();
  require(its.id == request.id && its.gesture == request.gesture);
  // A level is written with a float's precision.
  if (!std::holds_alternative<SetGain>(request.command)) require(its.command == request.command);
}

void readAndEncode(std::string_view text) {
  const auto bundle = decodeRequests(text);
  if (!bundle) return checkError(bundle.error());
  require(!bundle.value().empty() && bundle.value().size() <= 256);
  for (const auto& request : bundle.value()) {
    if (request) {
      checkRequest(request.value());
    } else {
      checkError(request.error());
    }
  }
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::readAndEncode({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
