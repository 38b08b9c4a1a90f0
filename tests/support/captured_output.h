#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tolvane::test {

/// The lines of a text, without their line feeds. A last line without one gets " (unfinished line)" appended.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  if (!text.empty() && text.back() != '\n') lines.back() += " (unfinished line)";
  return lines;
}

/// What `action` writes to standard output, line by line.
inline std::vector<std::string> outputLinesOf(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return linesOf(testing::internal::GetCapturedStdout());
}

}  // namespace tolvane::test
