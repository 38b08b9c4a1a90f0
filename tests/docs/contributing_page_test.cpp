// docs/contributing.md lists the steps of scripts/check, in their order.
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

std::string textOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string between(const std::string& text, const std::string& first, const std::string& last) {
  const std::size_t begin = text.find(first);
  if (begin == std::string::npos) return {};
  const std::size_t end = text.find(last, begin + first.size());
  return text.substr(begin + first.size(), end - begin - first.size());
}

std::vector<std::string> stepsOfTheScript() {
  std::istringstream words(between(textOf(TOLVANE_SCRIPTS "/check"), "|| steps=(", ")"));
  return {std::istream_iterator<std::string>(words), {}};
}

std::vector<std::string> stepsOfThePage() {
  std::istringstream table(between(textOf(TOLVANE_DOCS "/contributing.md"), "| step |", "\n\n"));
  std::vector<std::string> steps;
  for (std::string line; std::getline(table, line);) {
    if (line.starts_with("| `")) steps.push_back(between(line, "`", "`"));
  }
  return steps;
}

TEST(ContributingPage, ListsTheStepsOfTheCheck) {
  EXPECT_THAT(stepsOfThePage(), testing::ElementsAreArray(stepsOfTheScript()));
  EXPECT_FALSE(stepsOfThePage().empty());
}

}  // namespace
}  // namespace tolvane::test
