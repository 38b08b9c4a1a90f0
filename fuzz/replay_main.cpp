// Runs a fuzz target over stored inputs, for compilers without a fuzzer. Arguments: files, or folders of
// files.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

void replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  // Named before the run, so that it is the last line of a run that crashes.
  std::fprintf(stderr, "%s\n", path.c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

std::size_t replayAll(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) {
    replay(path);
    return 1;
  }
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    replay(entry.path());
    ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) count += replayAll(argv[i]);
  std::printf("%zu inputs replayed\n", count);
  return count == 0 ? 1 : 0;
}
