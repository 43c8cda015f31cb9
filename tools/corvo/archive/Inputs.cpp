// Walks through files, directories and lists of names.

#include "tools/corvo/archive/Inputs.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

// FNV-1a, over what was hashed before and these bytes.
std::uint64_t Hash(const std::string& bytes, std::uint64_t before) {
  std::uint64_t hash = before;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  return hash;
}

bool TakeNumber(const char*& at, const char* end, unsigned& number) {
  const auto [stop, error] = std::from_chars(at, end, number);
  at = stop;
  return error == std::errc();
}

bool IsSelfOrParent(const std::string& name) {
  return name == "." || name == "..";
}

unsigned char TypeOf(const std::string& path, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type;
  const std::optional<FileState> state = StateOfLinkItself(path);
  return state ? static_cast<unsigned char>(IFTODT(state->mode)) : entry.d_type;
}

DirectoryEntry Describe(const std::string& prefix, const dirent& entry) {
  const std::string name = entry.d_name;
  const unsigned char type = TypeOf(prefix + name, entry);
  return {type == DT_DIR ? name + '/' : name, type == DT_LNK};
}

// What is in a directory, sorted as whole paths are. Gives 0, or why there may be more of it.
int List(const std::string& prefix, std::vector<DirectoryEntry>& entries) {
  Descriptor opened = OpenReadOnly(prefix, O_DIRECTORY);
  if (!opened.IsOpen()) return errno;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::fdopendir(opened.Number()), ::closedir);
  if (directory == nullptr) return errno;
  opened.Release();
  errno = 0;
  while (const dirent* const entry = ::readdir(directory.get())) {
    if (!IsSelfOrParent(entry->d_name)) entries.push_back(Describe(prefix, *entry));
    errno = 0;
  }
  const int error = errno;
  std::sort(entries.begin(), entries.end());
  return error;
}

bool LeadsToDirectory(const std::string& path) {
  const std::optional<FileState> state = StateOf(path);
  return state && S_ISDIR(state->mode);
}

std::string RefusalOf(const GivenName& given) {
  if (!given.refusal.empty()) return given.refusal;
  if (given.name.empty()) return "the name is empty";
  return given.name.find('\0') == std::string::npos ? "" : "the name holds a zero byte";
}

}  // namespace

bool Shard::Holds(const std::string& name) const {
  return Hash(name, SeenInputs().names) % count == index - 1;
}

std::string Shard::Text() const {
  return std::to_string(index) + '/' + std::to_string(count);
}

Shard ParseShard(const std::string& text) {
  Shard shard;
  const char* at = text.data();
  const char* const end = at + text.size();
  const bool read = TakeNumber(at, end, shard.index) && at != end && *at++ == '/' &&
                    TakeNumber(at, end, shard.count) && at == end;
  if (!read || shard.index == 0 || shard.index > shard.count) {
    throw InputError("no share such as 2/4");
  }
  return shard;
}

// A zero byte separates names: no name of a file holds one.
void SeenInputs::Add(const std::string& name) {
  ++count;
  names = Hash(name + '\0', names);
}

Inputs::Inputs(const InputPlan& plan) : m_plan(plan) {
  if (!plan.list.empty()) m_list = std::make_unique<NameList>(plan.list, plan.zeroSeparated);
}

bool Inputs::Next(Input& input) {
  while (NotedSignal() == 0 && !m_isStopped && Advance(input)) {
    m_seen.Add(input.name);
    input.number = m_seen.count;
    if (input.hidesOthers && !m_plan.shard.IsEverything()) {
      m_hidden.push_back(NameInLine(input.name) + ": " + input.refusal);
    }
    if (m_plan.shard.Holds(input.name)) return true;
  }
  return false;
}

void Inputs::Stop() {
  m_isStopped = true;
  if (m_list != nullptr) m_list->Stop();
}

bool Inputs::NextGiven(GivenName& given) {
  if (m_nextName < m_plan.names.size()) {
    given = {m_plan.names[m_nextName++], {}};
    return true;
  }
  return m_list != nullptr && m_list->Next(given);
}

// Into a directory whose name ends with "/". True: it can't be read, and is an input itself.
bool Inputs::Descend(const std::string& directory, Input& input) {
  Level level{directory, {}, 0};
  const int error = List(directory, level.entries);
  m_levels.push_back(std::move(level));
  if (error == 0) return false;
  input = {0, directory, "the directory can't be read: " + ErrorText(error), true};
  return true;
}

// The next entry of the directory that is being walked. False: it was none, or a directory.
bool Inputs::TakeEntry(Input& input) {
  Level& level = m_levels.back();
  if (level.next == level.entries.size()) {
    m_levels.pop_back();
    return false;
  }
  const DirectoryEntry& entry = level.entries[level.next++];
  input = {0, level.prefix + entry.name, {}};
  if (entry.IsDirectory()) {
    const std::string directory = input.name;
    return Descend(directory, input);
  }
  if (entry.isLink && LeadsToDirectory(input.name)) {
    input.refusal = "it is a link to a directory: not followed";
  }
  return true;
}

// A name that was given. False: a directory.
bool Inputs::TakeGiven(const GivenName& given, Input& input) {
  input = {0, given.name, RefusalOf(given), given.hidesOthers};
  if (!input.refusal.empty() || !LeadsToDirectory(given.name)) return true;
  return Descend(given.name.back() == '/' ? given.name : given.name + '/', input);
}

bool Inputs::Advance(Input& input) {
  for (;;) {
    GivenName given;
    if (!m_levels.empty()) {
      if (TakeEntry(input)) return true;
    } else if (!NextGiven(given)) {
      return false;
    } else if (TakeGiven(given, input)) {
      return true;
    }
  }
}

}  // namespace corvo
