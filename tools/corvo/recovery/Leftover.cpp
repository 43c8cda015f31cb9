// Tells what a temporary file is.

#define _TIME_BITS 64  // time beyond 2038

#include "tools/corvo/recovery/Leftover.h"

#include <errno.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "platform/Uninterrupted.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/Verdicts.h"

namespace corvo {
namespace {

constexpr char kPrefix[] = "QRT";
constexpr char kExtension[] = ".tmp";
constexpr std::size_t kPrefixSize = sizeof kPrefix - 1;
constexpr std::size_t kDigits = 32;

bool IsHexDigit(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

bool IsRecent(const FileState& state, long long seconds) {
  return seconds != 0 && state.modified.seconds > ::time(nullptr) - seconds;
}

// A record whose flag alone was damaged holds a digest still.
bool HoldsSeal(const RecordingExamination& found) {
  const unsigned char* const digest = found.record.bySignature;
  return found.hasRecord &&
         (found.record.dwSigned != 0 ||
          std::any_of(digest, digest + kDigestSize, [](int byte) { return byte != 0; }));
}

// Where the way to the record is damaged, the seal still stands where sealing writes it. What
// can't be read counts as one.
bool HoldsSealInPlace(const Descriptor& file) {
  constexpr off_t kSealOffset = 298;
  unsigned char seal[4 + kDigestSize];
  const ssize_t got =
      Uninterrupted([&] { return ::pread(file.Number(), seal, sizeof seal, kSealOffset); });
  return got < 0 || std::any_of(seal, seal + got, [](int byte) { return byte != 0; });
}

LeftoverKind KindOf(const RecordingExamination& found, const Descriptor& file) {
  if (found.verdict == RecordingVerdict::kUnreadable) return LeftoverKind::kUnreadable;
  if (found.verdict == RecordingVerdict::kOk) return LeftoverKind::kComplete;
  const bool holdsSeal = found.hasRecord ? HoldsSeal(found) : HoldsSealInPlace(file);
  return holdsSeal ? LeftoverKind::kDamaged : LeftoverKind::kIncomplete;
}

// How far a copy got before it was to be sealed.
std::string Progress(const RecordingExamination& found) {
  if (found.missingAudio == 0) return "not sealed yet, with all its audio";
  const std::string there = std::to_string(found.audioSize - found.missingAudio);
  return "not sealed yet, with " + there + " of " + std::to_string(found.audioSize) +
         " bytes of audio";
}

std::string ReasonOf(const Leftover& leftover) {
  const RecordingExamination& found = leftover.found;
  if (leftover.kind == LeftoverKind::kComplete) return "sealed and intact: it may be the only copy";
  if (leftover.kind == LeftoverKind::kUnreadable) return found.reason;
  const bool isCopy = leftover.kind == LeftoverKind::kIncomplete && found.hasAudio &&
                      found.verdict == RecordingVerdict::kUnsealed;
  return isCopy ? Progress(found) : VerdictWord(found.verdict) + (": " + found.reason);
}

}  // namespace

bool IsLeftoverName(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  const std::size_t digits = std::min(name.size(), kPrefixSize + kDigits);
  return name.compare(0, kPrefixSize, kPrefix) == 0 &&
         name.compare(digits, std::string::npos, kExtension) == 0 &&
         std::all_of(name.begin() + kPrefixSize, name.begin() + static_cast<std::ptrdiff_t>(digits),
                     IsHexDigit);
}

std::optional<Leftover> LookAt(const std::string& path, long long seconds) {
  const std::optional<FileState> state = StateOfLinkItself(path);
  if (!state) return std::nullopt;
  if (!S_ISREG(state->mode)) throw InputError(NameInLine(path), "is not a regular file");
  Leftover leftover;
  leftover.path = path;
  leftover.state = *state;
  const RecordingFile file(path);
  Check(file, leftover.found);
  leftover.kind = KindOf(leftover.found, file.File());
  // What changes while it is read is in use, whatever its clock says.
  leftover.isRecent =
      IsRecent(*state, seconds) || leftover.found.verdict == RecordingVerdict::kChanged;
  return leftover;
}

Leftover LookAtNamed(const std::string& path, long long seconds) {
  if (!IsLeftoverName(path)) {
    throw InputError(NameInLine(path), "is no temporary file: its name isn't QRT…tmp");
  }
  std::optional<Leftover> leftover = LookAt(path, seconds);
  if (!leftover) throw InputError(NameInLine(path), ErrorText(errno));
  if (leftover->kind == LeftoverKind::kUnreadable) {
    throw InputError(NameInLine(path), leftover->found.reason);
  }
  return *leftover;
}

void RequireUnchanged(const Leftover& leftover) {
  if (StateOfLinkItself(leftover.path) == leftover.state) return;
  throw InputError(NameInLine(leftover.path), "it changed meanwhile");
}

const char* KindWord(LeftoverKind kind) {
  constexpr const char* kWords[] = {"complete", "damaged", "incomplete", "unreadable"};
  return kWords[static_cast<int>(kind)];
}

std::string Describe(const Leftover& leftover) {
  return KindWord(leftover.kind) + std::string(leftover.isRecent ? ", recent (" : " (") +
         ReasonOf(leftover) + ')';
}

}  // namespace corvo
