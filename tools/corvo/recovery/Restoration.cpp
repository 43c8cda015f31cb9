// Puts a sealed recording that a crash has left back in its place.

#define _TIME_BITS 64  // fstat of a file touched after 2038

#include "tools/corvo/recovery/Restoration.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "platform/Uninterrupted.h"
#include "platform/Win32Compat.h"
#include "tools/corvo/Flush.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/PartFile.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/archive/Blocks.h"
#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/FileDigest.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/recovery/Leftover.h"

namespace corvo {
namespace {

constexpr mode_t kPermissionBits = 0777;
constexpr mode_t kOwnerOnly = 077;

void Require(bool done, const std::string& path, const std::string& doing = "") {
  const int error = errno;
  if (!done) throw InputError(NameInLine(path), doing + ErrorText(error));
}

void RequireNoError(int error, const std::string& path, const std::string& doing = "") {
  if (error != 0) throw InputError(NameInLine(path), doing + ErrorText(error));
}

// False: the target is on another file system.
bool Move(const std::string& from, const std::string& target) {
  RequireNoError(FlushFile(from), from);
  const bool moved = MoveFile(from.c_str(), target.c_str()) != 0;
  if (!moved && errno == EXDEV) return false;
  Require(moved, target);
  return true;
}

void FlushBothDirectories(const std::string& from, const std::string& target) {
  constexpr char kDoing[] = "it is restored, but its directory can't be flushed to disk: ";
  RequireNoError(FlushDirectoryOf(target), target, kDoing);
  RequireNoError(FlushDirectoryOf(from), from, kDoing);
}

void WriteAll(const Descriptor& file, const unsigned char* bytes, std::size_t count,
              const std::string& target) {
  while (count > 0) {
    const ssize_t written = Uninterrupted([&] { return ::write(file.Number(), bytes, count); });
    Require(written >= 0, target);
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

void StopIfInterrupted() {
  const int signal = NotedSignal();
  if (signal != 0) throw Interrupted(signal, "interrupted: nothing is restored, nothing is lost");
}

void CopyBytes(const RecordingFile& from, const Descriptor& to, const std::string& target) {
  const int error = ReadBlocks(from.File(), 0, from.State()->size,
                               [&](const unsigned char* bytes, unsigned count) {
                                 StopIfInterrupted();
                                 WriteAll(to, bytes, count, target);
                               });
  RequireNoError(error, from.Name());
}

// The owner last: a file given away may not be ours to change.
void CopyAttributes(const RecordingFile& from, const Descriptor& to, const std::string& target) {
  struct stat status;
  Require(::fstat(from.File().Number(), &status) == 0, from.Name());
  const timespec times[] = {status.st_atim, status.st_mtim};
  Require(::fchmod(to.Number(), status.st_mode & kPermissionBits) == 0, target,
          "it can't have the same permissions: ");
  Require(::futimens(to.Number(), times) == 0, target);
  Require(::fchown(to.Number(), status.st_uid, status.st_gid) == 0, target,
          "it can't have the same owner: ");
}

std::string DigestOf(const RecordingFile& file) {
  std::string digest;
  RequireNoError(DigestFile(file.File(), file.State()->size, digest), file.Name());
  return digest;
}

void VerifyCopy(const RecordingFile& from, const std::string& path, const std::string& target) {
  const RecordingFile copy(path);
  RecordingExamination found;
  Check(copy, found);
  if (found.verdict != RecordingVerdict::kOk || DigestOf(copy) != DigestOf(from)) {
    throw InputError(NameInLine(target), "the copy isn't what was copied");
  }
}

// The part file is nobody else's to read while it is being written.
void MakeCopy(const Leftover& leftover, const std::string& target) {
  ::umask(kOwnerOnly);
  const RecordingFile from(leftover.path);
  PartFile part(target);
  {
    const Descriptor to(::open(part.Path().c_str(), O_WRONLY | O_CLOEXEC));
    Require(to.IsOpen() && from.File().IsOpen(), target);
    CopyBytes(from, to, target);
    CopyAttributes(from, to, target);
    Require(::fsync(to.Number()) == 0, target);
  }
  VerifyCopy(from, part.Path(), target);
  RequireUnchanged(leftover);
  StopIfInterrupted();
  part.Publish(false);
}

// The copy is in place and on disk.
void RemoveOriginal(const std::string& from) {
  Require(::unlink(from.c_str()) == 0, from,
          "its recording is restored, but it can't be removed: ");
  RequireNoError(FlushDirectoryOf(from), from,
                 "its recording is restored, but it may come back after a power cut: ");
}

void Put(const Leftover& leftover, const std::string& from, const std::string& target) {
  RequireUnchanged(leftover);
  if (Move(from, target)) {
    FlushBothDirectories(from, target);
  } else {
    MakeCopy(leftover, target);
    RemoveOriginal(from);
  }
}

// Whatever is there, a link that leads nowhere included.
void RefuseExisting(const std::string& target) {
  if (StateOfLinkItself(target)) {
    throw InputError(NameInLine(target), "exists already, and nothing is ever replaced");
  }
}

}  // namespace

Outcome Restore(const RestorationPlan& plan) {
  NoteInterruptions();
  const Leftover leftover = LookAtNamed(plan.file, plan.olderThan);
  const std::string name = NameInLine(plan.file);
  if (leftover.kind != LeftoverKind::kComplete || leftover.isRecent) {
    std::cout << name << ": NOT RESTORED: " << Describe(leftover) << '\n';
    return Outcome::kRefused;
  }
  RefuseExisting(plan.target);
  const std::string target = NewFile(plan.target, true);
  try {
    Put(leftover, ExistingFile(plan.file), target);
  } catch (const InputError& error) {
    const bool isThere = StateOfLinkItself(plan.file).has_value();
    throw InputError(error.what() + std::string(isThere ? "; nothing is lost: see " + name : ""));
  }
  std::cout << name << ": restored as " << NameInLine(plan.target) << '\n';
  return Outcome::kFine;
}

}  // namespace corvo
