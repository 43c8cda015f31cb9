// The power goes after any file-system call of a sealing: then any write that was not flushed, and
// any change of a directory that was not flushed, may be missing from the disk. In every disk that
// may be left, the recording is whole under its own name or, sealed, in the temporary directory.

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <map>
#include <optional>

#include "ReliabilityTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

using Inode = unsigned long long;

// The bytes behind each name; nothing where they may be torn.
using Disk = std::map<std::string, std::optional<std::string>>;

std::string DirectoryOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

// What the disk surely holds, and what is on its way there. Names are as the calls give them.
class DiskModel : public FileCallObserver {
 public:
  // The `failingFlush`th flush, from 1, fails; 0: none.
  DiskModel(Replacement replacement_, int failingFlush)
      : FileCallObserver(replacement_), m_flushesLeft(failingFlush) {}

  bool HasFailed() const { return m_flushesLeft < 0; }

  // What is on the disk at the start.
  void Add(const std::string& path) {
    const Inode inode = Identify(path);
    m_names[path] = inode;
    m_files[inode] = ReadFile(path);
  }

  // Calls `look` with each disk that a power cut now may leave.
  template <class Look>
  void ForEachDisk(Look look) const {
    const std::size_t subsets = std::size_t{1} << m_pending.size();
    for (std::size_t kept = 0; kept < subsets; ++kept) {
      std::map<std::string, Inode> names = m_names;
      for (std::size_t i = 0; i < m_pending.size(); ++i) {
        if ((kept >> i & 1) != 0) Apply(m_pending[i], names);
      }
      Disk disk;
      for (const auto& [name, inode] : names) disk[name] = m_files.at(inode);
      look(disk);
    }
  }

  Fate Before(const FileCall& call) override {
    if (call.name != "fsync" || m_flushesLeft <= 0 || --m_flushesLeft != 0) return {};
    m_flushesLeft = -1;
    return {EIO};
  }

  void After(const FileCall& call, bool succeeded) override {
    const std::string name = succeeded ? call.name : "";
    if (name == "create" || name == "mkostemp") {
      const Inode inode = Identify(call.path);
      m_files[inode] = std::nullopt;
      m_pending.push_back({"", call.path, inode});
    } else if (name == "rename" || name == "renameat2") {
      m_pending.push_back({call.path, call.target, Identify(call.target)});
    } else if (name == "unlink") {
      m_pending.push_back({call.path, "", 0});
    } else if (name == "write" || name == "ftruncate") {
      m_files[Identify(call.Path())] = std::nullopt;
    } else if (name == "fsync") {
      Flush(call.Path());
    }
    Look();
  }

  // Called after each call.
  std::function<void()> Look = [] {};

 private:
  // A name that goes, one that comes, or both at once.
  struct Change {
    std::string removed;
    std::string added;
    Inode inode;
  };

  static void Apply(const Change& change, std::map<std::string, Inode>& names) {
    if (!change.removed.empty()) names.erase(change.removed);
    if (!change.added.empty()) names[change.added] = change.inode;
  }

  static Inode Identify(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_ino;
  }

  // A directory's flush writes every change of a name in it, and what came with it.
  void Flush(const std::string& path) {
    if (!std::filesystem::is_directory(path)) {
      m_files[Identify(path)] = ReadFile(path);
      return;
    }
    const auto isIn = [&](const std::string& name) {
      return !name.empty() && Identify(DirectoryOf(name)) == Identify(path);
    };
    std::vector<Change> left;
    for (const Change& change : m_pending) {
      if (isIn(change.removed) || isIn(change.added)) {
        Apply(change, m_names);
      } else {
        left.push_back(change);
      }
    }
    m_pending.swap(left);
  }

  int m_flushesLeft;
  std::map<std::string, Inode> m_names;
  std::map<Inode, std::optional<std::string>> m_files;  // as flushed last
  std::vector<Change> m_pending;
};

class PowerCutTest : public ReliabilityTest {
 protected:
  // Whether a name leads to the whole recording.
  bool Holds(const Disk& disk) const {
    const std::string prefix = TemporaryDirectory() + "/QRT";
    return std::any_of(disk.begin(), disk.end(), [&](const auto& entry) {
      const auto& [name, bytes] = entry;
      if (name == m_path) return bytes == m_original || bytes == m_sealed;
      return name.compare(0, prefix.size(), prefix) == 0 && bytes == m_sealed;
    });
  }

  bool HoldsSealed(const Disk& disk) const {
    const auto recording = disk.find(m_path);
    return recording != disk.end() && recording->second == m_sealed;
  }

  // Seals while the power goes after each call. Gives whether a flush has failed.
  bool SealWhilePowerGoes(Counts& counts, Replacement replacement, int failingFlush) {
    SCOPED_TRACE("failing flush " + std::to_string(failingFlush));
    StartAgain(m_original);
    DiskModel model(replacement, failingFlush);
    model.Add(m_path);
    model.Look = [&] {
      ++counts.strikes;
      model.ForEachDisk([&](const Disk& disk) {
        counts.Check(Holds(disk), "no name leads to the whole recording");
      });
    };
    if (Seal() && !model.HasFailed()) {
      model.ForEachDisk([&](const Disk& disk) {
        counts.Check(HoldsSealed(disk), "true, but a power cut undoes it");
      });
    }
    return model.HasFailed();
  }
};

TEST_F(PowerCutTest, EveryDiskThatMayBeLeftHoldsTheRecording) {
  Counts counts{"power cuts in sealing"};
  for (const Replacement replacement : kReplacements) {
    SCOPED_TRACE(replacement == Replacement::kMove ? "moved" : "copied");
    EXPECT_FALSE(SealWhilePowerGoes(counts, replacement, 0));
    for (int flush = 1; SealWhilePowerGoes(counts, replacement, flush); ++flush) {
    }
  }
}

}  // namespace
}  // namespace corvo_test
