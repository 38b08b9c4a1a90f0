#include "matrix/route_key.h"

namespace tolvane {

std::string routeKey(std::int64_t input, std::int64_t output) {
  std::string key = std::to_string(input);
  key += ',';
  key += std::to_string(output);
  return key;
}

}  // namespace tolvane
