// Runs a fuzz target over the inputs that are given, without a fuzzer: so every compiler, target
// and sanitizer meets what the fuzzer has found.
//   replay_NAME FILE-OR-DIRECTORY...

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

#include "Target.h"
#include "support/Scratch.h"

namespace {

// In memory of exactly its size, so that a sanitizer sees the first byte read past its end.
void Replay(const std::string& path) {
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  Require(corvo_test::Exists(path), "it is there");
  const std::string bytes = corvo_test::ReadFile(path);
  const auto input = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), input.get());
  LLVMFuzzerTestOneInput(input.get(), bytes.size());
}

void ReplayAll(const std::string& given) {
  if (!std::filesystem::is_directory(given)) return Replay(given);
  const auto names = corvo_test::ListDirectory(given);
  Require(!names.empty(), "there is something to replay");
  for (const std::string& name : names) Replay(given + "/" + name);
}

}  // namespace

int main(int count, char** given) {
  try {
    Require(count > 1, "there is something to replay");
    for (int i = 1; i < count; ++i) ReplayAll(given[i]);
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return 1;
  }
}
