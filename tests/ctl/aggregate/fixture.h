// A fixture for tolvanectl on a private sound server with two cards and without a user configuration.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/pipewire_server.h"

namespace tolvane::test {

class AggregateTest : public testing::Test {
 protected:
  static Finished run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "aggregate");
    return runProgram(arguments);
  }

  /// Writes the aggregates file without tolvanectl.
  void writeFile(const std::string& text) const {
    std::filesystem::create_directories(folder());
    writeText(file(), text);
  }

  [[nodiscard]] std::string folder() const { return server_.configFolder() + "/tolvane"; }
  [[nodiscard]] std::string file() const { return folder() + "/aggregates.json"; }
  [[nodiscard]] std::vector<std::string> namesInFolder() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  PipeWireServer server_{
      {{.name = "first", .inputs = 4, .outputs = 2, .description = "First Card", .cardId = 901},
       {.name = "second", .inputs = 2, .outputs = 3, .description = "Second Card", .cardId = 902}}};
};

}  // namespace tolvane::test
