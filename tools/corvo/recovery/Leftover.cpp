// What the library's temporary directory holds after a crash.

#include "tools/corvo/recovery/Leftover.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>

#include "engine/CorvoVerifiedRecording.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Names.h"

namespace corvo {
namespace {

constexpr char kPrefix[] = "QRT";
constexpr char kExtension[] = ".tmp";
constexpr std::size_t kDigits = 32;
constexpr std::size_t kPrefixLength = sizeof kPrefix - 1;
constexpr std::size_t kNameLength = kPrefixLength + kDigits + sizeof kExtension - 1;

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

void Refuse(Leftover& leftover, const std::string& reason) {
  leftover.found = {};
  leftover.found.verdict = RecordingVerdict::kUnreadable;
  leftover.found.reason = reason;
}

}  // namespace

bool Leftover::IsRecent() const {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const long long seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count();
  return state.modified.seconds > seconds - kRecentMinutes * 60;
}

bool IsLeftoverName(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.size() == kNameLength && name.compare(0, kPrefixLength, kPrefix) == 0 &&
         name.compare(kPrefixLength + kDigits, std::string::npos, kExtension) == 0 &&
         name.find_first_not_of("0123456789abcdefABCDEF", kPrefixLength) == kPrefixLength + kDigits;
}

// A link of such a name isn't the library's.
Leftover ExamineLeftover(const std::string& path) {
  Leftover leftover{path, {}, {}};
  const Descriptor file = OpenReadOnly(path, O_NOFOLLOW);
  const int error = errno;
  const auto state = file.IsOpen() ? StateOf(file) : StateOfLinkItself(path);
  if (state) leftover.state = *state;
  if (!file.IsOpen()) {
    Refuse(leftover, ErrorText(error));
  } else {
    VerifyRecording().Examine(file.Number(), leftover.found);
  }
  return leftover;
}

std::vector<std::string> FindLeftovers(const std::string& directory) {
  const Directory entries(::opendir(directory.c_str()));
  if (entries == nullptr) throw InputError(NameInLine(directory), ErrorText(errno));
  std::vector<std::string> paths;
  const std::string prefix = directory.back() == '/' ? directory : directory + "/";
  errno = 0;
  while (const dirent* const entry = ::readdir(entries.get())) {
    if (IsLeftoverName(entry->d_name)) paths.push_back(prefix + entry->d_name);
    errno = 0;
  }
  if (errno != 0) throw InputError(NameInLine(directory), ErrorText(errno));
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace corvo
