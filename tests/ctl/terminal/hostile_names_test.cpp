// File names with control characters, and file names that look like something else as arguments.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"

namespace tolvane::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

// Contains a sequence that clears the screen, a line feed, the one-character form of ESC [ in UTF-8 and as a
// byte, DEL and a tab.
constexpr const char* kName =
    "a\033[2J\nb\xC2\x9B"
    "c\x9B"
    "d\x7F\te";
constexpr const char* kShown = R"(a\x1b[2J\nb\u009bc\x9bd\x7f\te)";

/// True if the text has no control characters except line feeds.
bool isHarmless(const std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte < 0x20 && byte != '\n') || byte == 0x7F) return false;
    if (byte >= 0x80 && byte < 0xA0 && (i == 0 || static_cast<unsigned char>(text[i - 1]) < 0xC3))
      return false;
  }
  return true;
}

class HostileNames : public testing::Test {
 protected:
  /// Also expects every line of messages to come from the program, not from a line feed in a name.
  static void expectShown(const Finished& run, int status) {
    EXPECT_EQ(run.status, status);
    EXPECT_THAT(run.out + run.err, HasSubstr(kShown));
    EXPECT_TRUE(isHarmless(run.out)) << testing::PrintToString(run.out);
    EXPECT_TRUE(isHarmless(run.err)) << testing::PrintToString(run.err);
    for (std::size_t at = run.err.find('\n'); at + 1 < run.err.size(); at = run.err.find('\n', at + 1))
      EXPECT_EQ(run.err.compare(at + 1, 12, "tolvanectl: "), 0) << testing::PrintToString(run.err);
  }
  [[nodiscard]] std::string named() const { return folder_ / kName; }
  TemporaryFolder folder_;
};

TEST_F(HostileNames, OfPatchesAreShownEscaped) {
  expectShown(runProgram({"check", named()}), 1);
  writeText(named(), "[}");
  expectShown(runProgram({"check", named()}), 3);
  writePatch(named(), std::vector<PatchConnection>(65, {0, 0, 1.0F, true}));
  const Finished run = runProgram({"check", named()});
  expectShown(run, 0);
  EXPECT_EQ(run.out.find(":\ninput"), run.out.find('\n') - 1);
}

TEST_F(HostileNames, OfSoundFilesAreShownEscaped) {
  writePatch(folder_ / "p.json", {{0, 0, 1.0F, true}});
  writeSound(folder_ / "in.wav", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  const auto render = [&](const std::string& patch, const std::string& input, const std::string& output) {
    return runProgram({"render", "--patch", patch, input, output});
  };
  expectShown(render(folder_ / "p.json", named(), folder_ / "out.wav"), 1);
  expectShown(render(folder_ / "p.json", folder_ / "in.wav", named() + "/out.wav"), 1);
  writeText(named(), "no sound");
  expectShown(render(folder_ / "p.json", named(), folder_ / "out.wav"), 1);
  expectShown(render(folder_ / "p.json", folder_ / "in.wav", named() + "/out.wav"), 1);
  writeSound(named(), {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  expectShown(render(folder_ / "p.json", named(), named()), 1);
  writePatch(named(), {});
  expectShown(render(named(), folder_ / "in.wav", folder_ / "out.wav"), 1);
}

TEST_F(HostileNames, InArgumentsAreShownEscaped) {
  writePatch(folder_ / "p.json", {});
  expectShown(runProgram({kName}), 2);
  expectShown(runProgram({"devices", "--channels", "a", kName}), 2);
  expectShown(runProgram({"run", "--patch", folder_ / "p.json", "--seconds", kName}), 2);
  const Finished device = runProgram({"run", "--patch", folder_ / "p.json", "--device", kName});
  EXPECT_EQ(device.status, 4);
  EXPECT_THAT(device.err, HasSubstr(std::string("no device is called \"") + kShown + "\""));
  EXPECT_TRUE(isHarmless(device.err));
}

TEST_F(HostileNames, InBracketsAreNoLists) {
  ChildProcess::Options options;
  options.folder = folder_.path();
  for (const char* name : {"[p]", "[a,b]", "[]", "[[p]]", "[p", "p]", "a,b", "['p']", "\"p\"", "{p}"}) {
    writePatch(folder_ / name, {});
    const Finished one = runProgram({"check", name}, options);
    EXPECT_EQ(one.status, 0) << name;
    EXPECT_EQ(one.out, std::string(name) + ":\nno routes\n");
  }
  const Finished many = runProgram({"check", "[p]", "a,b", "[a,b]"}, options);
  EXPECT_EQ(many.out, "[p]:\nno routes\na,b:\nno routes\n[a,b]:\nno routes\n");
  writeSound(folder_ / "[in]", {1, 48000, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {0.5F}});
  const Finished render =
      runProgram({"render", "--outputs", "1", "--patch", "[p]", "[in]", "[out]"}, options);
  EXPECT_EQ(render.status, 0) << render.err;
  EXPECT_EQ(readSound(folder_ / "[out]").samples, std::vector<float>{0.0F});
  const Finished device = runProgram({"run", "--patch=[p]", "--device=[a,b]"}, options);
  EXPECT_EQ(device.status, 4);
  EXPECT_THAT(device.err, HasSubstr("no device is called \"[a,b]\""));
}

TEST_F(HostileNames, ThatAreEmptyAreUsageErrors) {
  writePatch(folder_ / "p.json", {});
  const std::vector<std::vector<std::string>> all{{"run", "--patch", folder_ / "p.json", "--device", ""},
                                                  {"run", "--patch", ""},
                                                  {"check", folder_ / "p.json", ""},
                                                  {"render", "--patch", folder_ / "p.json", "", "out.wav"},
                                                  {"render", "--patch", folder_ / "p.json", "in.wav", ""},
                                                  {"aggregate", "delete", ""}};
  EXPECT_EQ(runProgram({"run", "--patch", folder_ / "p.json", "--device="}).status, 2);
  for (const auto& words : all) {
    const Finished run = runProgram(words);
    EXPECT_EQ(run.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("cannot be empty"));
    EXPECT_THAT(run.err, EndsWith("try 'tolvanectl --help'\n"));
  }
}

}  // namespace
}  // namespace tolvane::test
