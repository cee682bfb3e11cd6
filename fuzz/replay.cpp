#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs the fuzz target on each file of a folder, and on every prefix of the small ones.
int main(int count, char** arguments) {
  constexpr std::size_t kSmall = 2048;
  if (count != 2) {
    std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", arguments[0]);
    return 2;
  }
  std::size_t replayed = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1], error)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::fprintf(stderr, "%s\n", entry.path().filename().c_str());
    for (std::size_t size = bytes.size() <= kSmall ? 0 : bytes.size(); size <= bytes.size(); ++size) {
      // A copy of exactly that size, so that a sanitizer detects a read past its end.
      const std::vector<std::uint8_t> input(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
      LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    ++replayed;
  }
  if (replayed == 0) std::fprintf(stderr, "no inputs in %s\n", arguments[1]);
  return replayed == 0 ? 1 : 0;
}
