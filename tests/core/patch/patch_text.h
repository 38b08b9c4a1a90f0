// Texts of patch files for tests.
#pragma once

#include <string>
#include <string_view>

namespace tolvane::test {

/// A patch of one route with these members' values, in field order and without white space.
inline std::string onePatch(std::string_view input, std::string_view output, std::string_view gain,
                            std::string_view active) {
  std::string text = R"([{"inputChannel":)";
  text.append(input).append(R"(,"outputChannel":)").append(output);
  text.append(R"(,"gain":)").append(gain).append(R"(,"active":)").append(active);
  return text + "}]";
}

/// The same with this gain, from input 0 to output 1, active.
inline std::string patchWithGain(std::string_view gain) {
  return onePatch("0", "1", gain, "true");
}

/// The same with this input channel, to output 1 with gain 1.0, active.
inline std::string patchWithInput(std::string_view input) {
  return onePatch(input, "1", "1.0", "true");
}

}  // namespace tolvane::test
