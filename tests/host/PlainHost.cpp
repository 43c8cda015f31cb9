// A host process that supplies nothing: the library loads and works, and its services do nothing.
//
//   RECORDING LIBRARY     an unsealed recording; the library to load, where it isn't linked

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "Checks.h"
#include "Library.h"
#include "support/Scratch.h"

using corvo_test::ScratchPath;

namespace {

constexpr DWORD kFailure = 0x00270002;  // the trace starts, and writes it by default
constexpr unsigned kNobody = 65534;

// The library keeps its settings in the machine's own /etc here: they must not be touched.
bool GiveUpRoot() {
  return ::geteuid() != 0 || (::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  host_test::Checks checks;
  const Library library = OpenLibrary(argv[2]);
  if (!GiveUpRoot()) return 2;
  const std::string recording = ScratchPath("a.wav");
  const std::string tree = ScratchPath("tree");
  const std::string output = ScratchPath("output");
  std::filesystem::create_directory(tree);
  std::filesystem::copy_file(argv[1], recording);

  if (std::freopen(output.c_str(), "w", stdout) == nullptr) return 2;
  library.debug(kFailure, "%s", "Hello");
  checks.Expect("an unsealed recording", !library.isSignaturePresent(recording.c_str()));
  std::fflush(stdout);
  checks.Expect("ConsolePrint prints nothing", std::filesystem::file_size(output) == 0);
  checks.Expect("RemoveDirectoryTree says yes", library.deletePath(tree.c_str(), true));
  checks.Expect("RemoveDirectoryTree removes nothing", std::filesystem::exists(tree));
  checks.Expect("settings directory", library.settingsDirectory() == std::string("/etc"));
  checks.Expect("marker", library.releaseMarker() == std::string("/opt/Tolva/KMR_release"));
  return checks.Failures();
}
