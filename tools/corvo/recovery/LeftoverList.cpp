// Lists what a crash has left in a temporary directory.

#include "tools/corvo/recovery/LeftoverList.h"

#include <dirent.h>
#include <errno.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>
#include <memory>
#include <vector>

#include "platform/Win32Compat.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Metadata.h"
#include "tools/corvo/UtcTime.h"
#include "tools/corvo/archive/ExaminationJson.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/evidence/Visible.h"
#include "tools/corvo/recovery/Leftover.h"

namespace corvo {
namespace {

constexpr int kNameWidth = 12;

constexpr LeftoverKind kKinds[] = {LeftoverKind::kComplete, LeftoverKind::kDamaged,
                                   LeftoverKind::kIncomplete, LeftoverKind::kUnreadable};

struct Counts {
  std::array<unsigned long long, std::size(kKinds)> of{};
  unsigned long long all = 0;
  unsigned long long recent = 0;

  void Add(const Leftover& leftover) {
    ++all;
    ++of[static_cast<std::size_t>(leftover.kind)];
    if (leftover.isRecent) ++recent;
  }
};

// A server's settings may spell a directory with either separator, and in any letter case.
std::string SpelledOnDisk(const std::string& directory) {
  char found[MAX_PATH];
  if (StateOf(directory) || !FindFileIgnoreCase(found, directory.c_str(), false)) return directory;
  return found;
}

// Whatever else stands under such a name isn't from sealing.
std::vector<std::string> FindPaths(const std::string& directory) {
  const std::string prefix = directory.back() == '/' ? directory : directory + '/';
  const std::unique_ptr<DIR, int (*)(DIR*)> opened(::opendir(directory.c_str()), ::closedir);
  if (opened == nullptr) throw InputError(NameInLine(directory), ErrorText(errno));
  std::vector<std::string> paths;
  errno = 0;
  while (const dirent* const entry = ::readdir(opened.get())) {
    const std::string path = prefix + entry->d_name;
    if (IsLeftoverName(path)) {
      const std::optional<FileState> state = StateOfLinkItself(path);
      if (!state && errno != ENOENT) throw InputError(NameInLine(path), ErrorText(errno));
      if (state && S_ISREG(state->mode)) paths.push_back(path);
    }
    errno = 0;
  }
  if (errno != 0) throw InputError(NameInLine(directory), ErrorText(errno));
  std::sort(paths.begin(), paths.end());
  return paths;
}

bool IsSet(const Item& item) {
  const bool isSeal = item.name == "dwSigned";  // the kind tells more
  return !isSeal && !item.value.empty() && item.value != "0" && item.value != "0.0.0.0";
}

std::vector<Item> SetItems(const Leftover& leftover) {
  std::vector<Item> items;
  if (!leftover.found.hasRecord) return items;
  for (const Item& item : SealedItems(leftover.found.record)) {
    if (IsSet(item)) items.push_back({item.name, Visible(item.value)});
  }
  return items;
}

std::string StartOf(const Leftover& leftover) {
  const LONGLONG start = leftover.found.startTime;
  return start > 0 ? UtcTextOfTicks(start) : std::string();
}

void PrintFact(const std::string& name, const std::string& value) {
  std::cout << "    " << std::left << std::setw(kNameWidth) << name << std::right << ' ' << value
            << '\n';
}

void PrintText(const Leftover& leftover) {
  const std::string start = StartOf(leftover);
  std::cout << NameInLine(leftover.path) << ": " << Describe(leftover) << '\n';
  PrintFact("size", std::to_string(leftover.state.size));
  PrintFact("written", UtcText(leftover.state.modified));
  if (!start.empty()) PrintFact("start", start);
  for (const Item& item : SetItems(leftover)) PrintFact(item.name, item.value);
}

void PrintText(const Counts& counts) {
  std::cout << counts.all << (counts.all == 1 ? " leftover: " : " leftovers: ");
  for (const LeftoverKind kind : kKinds) {
    std::cout << counts.of[static_cast<std::size_t>(kind)] << ' ' << KindWord(kind) << ", ";
  }
  std::cout << counts.recent << " of them recent\n";
}

void PrintJson(const Leftover& leftover) {
  const std::string start = StartOf(leftover);
  const std::string reason = leftover.found.reason;
  Json object;
  AddName(object, leftover.path);
  object["kind"] = KindWord(leftover.kind);
  object["recent"] = leftover.isRecent;
  object["verdict"] = VerdictWord(leftover.found.verdict);
  object["reason"] = ValueOrNull(!reason.empty(), reason);
  object["size"] = leftover.state.size;
  object["modified"] = UtcText(leftover.state.modified);
  object["start_time"] = ValueOrNull(!start.empty(), start);
  AddDigests(object, leftover.found);
  AddAudio(object, leftover.found);
  object["metadata"] = Json::array();
  for (const Item& item : SetItems(leftover)) {
    object["metadata"].push_back({{"name", item.name}, {"value", item.value}});
  }
  std::cout << object.dump() << '\n';
}

void PrintJson(const Counts& counts) {
  Json totals = {{"leftovers", counts.all}};
  for (const LeftoverKind kind : kKinds) {
    totals[KindWord(kind)] = counts.of[static_cast<std::size_t>(kind)];
  }
  totals["recent"] = counts.recent;
  std::cout << Json{{"totals", totals}}.dump() << '\n';
}

Outcome OutcomeOf(const Leftover& leftover) {
  if (leftover.kind == LeftoverKind::kUnreadable) return Outcome::kBadInput;
  const bool isWork = leftover.isRecent && leftover.kind == LeftoverKind::kIncomplete;
  return isWork ? Outcome::kFine : Outcome::kRefused;
}

// A server's files come and go.
bool HasGone(const std::optional<Leftover>& leftover) {
  return !leftover ||
         (leftover->kind == LeftoverKind::kUnreadable && !StateOfLinkItself(leftover->path));
}

}  // namespace

Outcome ListLeftovers(const LeftoverListPlan& plan) {
  Counts counts;
  Outcome worst = Outcome::kFine;
  for (const std::string& path : FindPaths(SpelledOnDisk(plan.directory))) {
    const std::optional<Leftover> leftover = LookAt(path, plan.olderThan);
    if (HasGone(leftover)) continue;
    counts.Add(*leftover);
    worst = std::max(worst, OutcomeOf(*leftover));
    plan.json ? PrintJson(*leftover) : PrintText(*leftover);
  }
  plan.json ? PrintJson(counts) : PrintText(counts);
  return worst;
}

}  // namespace corvo
