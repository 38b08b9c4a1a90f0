#include "ctl/support/tool_output.h"

#include <array>
#include <cstdio>
#include <memory>

namespace tolvane::test {

std::vector<std::string> linesOf(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(command.c_str(), "r"), &::pclose);
  std::string text;
  std::array<char, 4096> chunk{};
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), output.get())) {
    text.append(chunk.data(), count);
  }
  std::vector<std::string> lines;
  for (std::size_t at = 0, end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    lines.push_back(text.substr(at, end - at));
  }
  return lines;
}

std::map<std::string, std::vector<std::string>> indentedLinesOf(const std::string& command) {
  std::map<std::string, std::vector<std::string>> all;
  std::string heading;
  for (const std::string& line : linesOf(command)) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string::npos) continue;
    if (begin == 0) {
      heading = line;
      all[heading];
    } else {
      all[heading].push_back(line.substr(begin));
    }
  }
  return all;
}

}  // namespace tolvane::test
