// Runs a fuzz target over the inputs that are given, without a fuzzer: so every compiler, target
// and sanitizer meets what the fuzzer has found.
//   replay_NAME FILE-OR-DIRECTORY...

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "Target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsIn(const fs::path& given) {
  if (!fs::is_directory(given)) return {given};
  std::vector<fs::path> inputs;
  for (const fs::directory_entry& entry : fs::directory_iterator(given)) {
    inputs.push_back(entry.path());
  }
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

// In memory of exactly its size, so that a sanitizer sees the first byte read past its end.
void Replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  Require(file.is_open(), path.c_str());
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const auto input = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), input.get());
  LLVMFuzzerTestOneInput(input.get(), bytes.size());
}

int ReplayAll(int count, char** given) {
  std::size_t replayed = 0;
  for (int i = 1; i < count; ++i) {
    for (const fs::path& path : InputsIn(given[i])) {
      std::printf("%s\n", path.c_str());
      std::fflush(stdout);
      Replay(path);
      ++replayed;
    }
  }
  if (replayed != 0) return 0;
  std::fputs("There is nothing to replay\n", stderr);
  return 1;
}

}  // namespace

int main(int count, char** given) {
  try {
    return ReplayAll(count, given);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return 1;
  }
}
