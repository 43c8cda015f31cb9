#ifndef TOOLS_CORVO_ARCHIVE_INPUTS_H
#define TOOLS_CORVO_ARCHIVE_INPUTS_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/corvo/archive/NameList.h"

namespace corvo {

// One of several machines' parts of the inputs: by a name's bytes alone, so that all machines that
// are given the same names share them without talking to each other.
struct Shard {
  unsigned index = 1;  // from 1 to count
  unsigned count = 1;

  bool IsEverything() const { return count == 1; }
  bool Holds(const std::string& name) const;
  std::string Text() const;  // "2/4"
};

// Reads "2/4". Throws InputError.
Shard ParseShard(const std::string& text);

// How many inputs there were, and a hash over their names in their order: where both are the same,
// so are the inputs, unless somebody means to deceive.
struct SeenInputs {
  unsigned long long count = 0;
  std::uint64_t names = 14695981039346656037u;  // 0: not known

  void Add(const std::string& name);
  bool operator==(const SeenInputs& other) const {
    return count == other.count && names == other.names;
  }
};

// What a command is told to work on.
struct InputPlan {
  std::vector<std::string> names;  // files and directories
  std::string list;                // more names: a file, "-", or none
  bool zeroSeparated = false;      // how they stand in it
  Shard shard;
};

struct Input {
  unsigned long long number = 0;  // from 1, counting over all shards
  std::string name;
  std::string refusal;       // why it can't be examined, where that is known already
  bool hidesOthers = false;  // a list or directory: inputs may be missing for the same reason
};

struct DirectoryEntry {
  std::string name;  // ends with "/" for directories
  bool isLink = false;

  bool IsDirectory() const { return name.back() == '/'; }
  bool operator<(const DirectoryEntry& other) const { return name < other.name; }
};

// The inputs one by one, in the order given. A directory stands for what is below it, in bytewise
// order of the whole paths: every entry that isn't a directory is one input, so nothing is skipped
// in silence. Links to files count as files; below a directory, links to directories aren't
// followed but refused, and so are names that can't be used and directories that can't be read.
class Inputs {
 public:
  // Throws InputError when the list can't be opened.
  explicit Inputs(const InputPlan& plan);

  // False: there are no more, an interruption has been noted, or Stop was called.
  bool Next(Input& input);

  // Ends a Next that waits for a list's writer, and all that follow. Any thread.
  void Stop();

  // So far, in all shards.
  const SeenInputs& Seen() const { return m_seen; }

  // Lines about lists and directories that can't be read, where there are several shards: what they
  // hide may belong to any of them, so each must tell.
  const std::vector<std::string>& Hidden() const { return m_hidden; }

 private:
  // A directory that is being walked; `prefix` ends with "/".
  struct Level {
    std::string prefix;
    std::vector<DirectoryEntry> entries;
    std::size_t next = 0;
  };

  bool Advance(Input& input);
  bool NextGiven(GivenName& given);
  bool TakeEntry(Input& input);
  bool TakeGiven(const GivenName& given, Input& input);
  bool Descend(const std::string& directory, Input& input);

  InputPlan m_plan;
  std::size_t m_nextName = 0;
  std::unique_ptr<NameList> m_list;
  std::vector<Level> m_levels;
  SeenInputs m_seen;
  std::vector<std::string> m_hidden;
  std::atomic<bool> m_isStopped{false};
};

}  // namespace corvo

#endif
