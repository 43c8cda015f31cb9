// Restores and removes what a crash has left. At every instant the recording has a whole file.

#include "tools/corvo/recovery/Recover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "engine/CorvoVerifiedRecording.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/PartFile.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/archive/Blocks.h"
#include "tools/corvo/archive/FileDigest.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ReadOnly.h"
#include "tools/corvo/recovery/Leftover.h"

namespace corvo {
namespace {

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw InputError(NameInLine(path), reason);
}

[[noreturn]] void FailWithError(const std::string& path, int error) {
  Fail(path, ErrorText(error));
}

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Has a file or directory on disk. Some file systems flush no directories, and say so.
void Flush(const std::string& path) {
  const Descriptor file = OpenReadOnly(path, 0);
  if (!file.IsOpen()) FailWithError(path, errno);
  if (::fsync(file.Number()) != 0 && errno != EINVAL) FailWithError(path, errno);
}

// The leftover, if it is one that may be touched.
Leftover Take(const std::string& path) {
  if (!IsLeftoverName(path)) Fail(path, "is not named as the library's temporary files are");
  Leftover leftover = ExamineLeftover(path);
  if (!leftover.IsReadable()) Fail(path, leftover.found.reason);
  if (leftover.IsRecent()) {
    Fail(path, "changed less than " + std::to_string(kRecentMinutes) +
                   " minutes ago: a server may still be at work on it");
  }
  return leftover;
}

// The file that was examined, and no other that has taken its name since.
Descriptor OpenUnchanged(const Leftover& leftover) {
  Descriptor file = OpenReadOnly(leftover.path, O_NOFOLLOW);
  if (!file.IsOpen()) FailWithError(leftover.path, errno);
  const auto state = StateOf(file);
  if (!state || !(*state == leftover.state)) Fail(leftover.path, "has changed meanwhile");
  return file;
}

void Unlink(const std::string& path) {
  if (::unlink(path.c_str()) != 0) FailWithError(path, errno);
  Flush(DirectoryOf(path));
}

bool CanOnlyBeCopied(int error) {
  return error == EXDEV || error == EPERM || error == EMLINK || error == EOPNOTSUPP;
}

void WriteAll(const Descriptor& file, const unsigned char* bytes, std::size_t count,
              const std::string& path) {
  while (count > 0) {
    const ssize_t written = ::write(file.Number(), bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) FailWithError(path, errno);
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

// Permissions, and the owner where that may be set.
void GiveAttributes(const Descriptor& from, const Descriptor& to, const std::string& path) {
  struct statx status;
  constexpr unsigned kWanted = STATX_MODE | STATX_UID | STATX_GID;
  if (::statx(from.Number(), "", AT_EMPTY_PATH, kWanted, &status) != 0) FailWithError(path, errno);
  if (::fchmod(to.Number(), status.stx_mode & 0777) != 0) FailWithError(path, errno);
  if (::fchown(to.Number(), status.stx_uid, status.stx_gid) != 0 && errno != EPERM) {
    FailWithError(path, errno);
  }
}

// What was copied must verify, with the same digest, as it is read back.
void CheckCopy(const std::string& path, const Leftover& original) {
  const Descriptor file = OpenReadOnly(path, 0);
  RecordingExamination found;
  VerifyRecording().Examine(file.Number(), found);
  if (found.verdict != RecordingVerdict::kOk || found.fileSize != original.found.fileSize ||
      std::memcmp(found.storedDigest, original.found.storedDigest, kDigestSize) != 0) {
    Fail(path, "the copy is not what was copied");
  }
}

void CopyTo(const std::string& target, const Leftover& leftover, const Descriptor& from) {
  PartFile part(target);
  {
    const Descriptor to(::open(part.Path().c_str(), O_WRONLY | O_CLOEXEC));
    if (!to.IsOpen()) FailWithError(part.Path(), errno);
    const auto write = [&](const unsigned char* bytes, unsigned count) {
      WriteAll(to, bytes, count, part.Path());
    };
    const int error = ReadBlocks(from, 0, leftover.found.fileSize, write);
    if (error != 0) FailWithError(leftover.path, error);
    GiveAttributes(from, to, part.Path());
  }
  CheckCopy(part.Path(), leftover);
  part.Publish(false);
}

// One name after the other: a link never replaces a file, and both lead to the recording until the
// new one is on disk.
void PutInPlace(const Leftover& leftover, const std::string& target) {
  const Descriptor file = OpenUnchanged(leftover);
  if (::fsync(file.Number()) != 0) FailWithError(leftover.path, errno);
  if (::link(leftover.path.c_str(), target.c_str()) == 0) {
    Flush(DirectoryOf(target));
  } else if (CanOnlyBeCopied(errno)) {
    CopyTo(target, leftover, file);
  } else {
    FailWithError(target, errno);
  }
}

std::string Sha256(const std::string& path, long long size) {
  std::string hex;
  const Descriptor file = OpenReadOnly(path, 0);
  if (!file.IsOpen()) FailWithError(path, errno);
  if (const int error = DigestFile(file, size, hex); error != 0) FailWithError(path, error);
  return hex;
}

}  // namespace

void RestoreLeftover(const std::string& path, const std::string& recording) {
  const Leftover leftover = Take(path);
  if (!leftover.IsComplete()) Fail(path, "is no complete recording: " + leftover.found.reason);
  if (StateOfLinkItself(recording)) {
    Fail(recording, "exists already: nothing is put in its place");
  }
  PutInPlace(leftover, NewFile(recording, true));
  Unlink(path);
}

void RemoveLeftover(const std::string& path) {
  const Leftover leftover = Take(path);
  if (leftover.IsComplete()) {
    Fail(path, "is a complete recording, perhaps the only copy: it is not removed");
  }
  OpenUnchanged(leftover);
  Unlink(path);
}

void RemoveDuplicate(const std::string& path, const std::string& recording) {
  const Leftover leftover = Take(path);
  const auto other = StateOf(recording);
  if (!other) FailWithError(recording, errno);
  if (other->IsFile(leftover.state)) Fail(recording, "is the same file, not another copy");
  const long long size = leftover.found.fileSize;
  if (other->size != size || Sha256(recording, size) != Sha256(path, size)) {
    Fail(recording, "holds other bytes than " + NameInLine(path));
  }
  Flush(recording);
  Flush(DirectoryOf(recording));
  OpenUnchanged(leftover);
  Unlink(path);
}

}  // namespace corvo
