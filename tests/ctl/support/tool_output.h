// What other programs print, for comparison.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace tolvane::test {

/// The lines that the shell command prints.
[[nodiscard]] std::vector<std::string> linesOf(const std::string& command);

/// Lines that begin with a blank, below the line before them that does not; all without blanks around.
[[nodiscard]] std::map<std::string, std::vector<std::string>> indentedLinesOf(const std::string& command);

}  // namespace tolvane::test
