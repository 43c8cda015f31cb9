// The list of what a crash has left, as text and as JSON.

#include "tools/corvo/recovery/LeftoverList.h"

#include <iomanip>
#include <iostream>

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

enum class State { kComplete, kIncomplete, kUnreadable };

constexpr struct {
  const char* word;
  Outcome outcome;
} kStates[] = {
    {"complete", Outcome::kRefused},
    {"incomplete", Outcome::kRefused},
    {"unreadable", Outcome::kBadInput},
};

State StateOf(const Leftover& leftover) {
  if (!leftover.IsReadable()) return State::kUnreadable;
  return leftover.IsComplete() ? State::kComplete : State::kIncomplete;
}

const auto& RowOf(State state) {
  return kStates[static_cast<int>(state)];
}

std::string Details(const Leftover& leftover) {
  std::string text =
      std::to_string(leftover.state.size) + " bytes, written " + UtcText(leftover.state.modified);
  if (leftover.IsRecent()) text += "; a server may still be at work on it";
  return text;
}

// Whose it is: the items of the metadata that are set.
void PrintItems(const Leftover& leftover) {
  std::cout << "    " << std::left << std::setw(kNameWidth) << "start" << ' '
            << UtcTextOfTicks(leftover.found.startTime) << '\n';
  for (const Item& item : SealedItems(leftover.found.record)) {
    if (item.value.empty()) continue;
    std::cout << "    " << std::setw(kNameWidth) << item.name << ' ' << Visible(item.value) << '\n';
  }
  std::cout << std::right;
}

void PrintText(const Leftover& leftover) {
  std::cout << NameInLine(leftover.path) << ": " << RowOf(StateOf(leftover)).word;
  if (!leftover.IsComplete()) std::cout << " (" << Visible(leftover.found.reason) << ')';
  std::cout << "\n    " << Details(leftover) << '\n';
  if (leftover.IsComplete()) PrintItems(leftover);
}

void PrintJson(const Leftover& leftover) {
  const bool complete = leftover.IsComplete();
  Json object;
  AddName(object, leftover.path);
  object["state"] = RowOf(StateOf(leftover)).word;
  object["verdict"] = VerdictWord(leftover.found.verdict);
  object["reason"] = ValueOrNull(!complete, Visible(leftover.found.reason));
  object["size"] = leftover.state.size;
  object["modified"] = UtcText(leftover.state.modified);
  object["recent"] = leftover.IsRecent();
  object["start_time"] = ValueOrNull(complete, UtcTextOfTicks(leftover.found.startTime));
  AddDigests(object, leftover.found);
  Json& items = object["metadata"];
  if (complete) {
    items = Json::array();
    for (const Item& item : SealedItems(leftover.found.record)) {
      items.push_back({{"name", item.name}, {"value", Visible(item.value)}});
    }
  }
  std::cout << object.dump() << '\n';
}

}  // namespace

Outcome ListLeftovers(const std::string& directory, bool json) {
  Outcome worst = Outcome::kFine;
  unsigned long long counts[std::size(kStates)] = {};
  for (const std::string& path : FindLeftovers(directory)) {
    const Leftover leftover = ExamineLeftover(path);
    (json ? PrintJson : PrintText)(leftover);
    const State state = StateOf(leftover);
    ++counts[static_cast<int>(state)];
    worst = std::max(worst, RowOf(state).outcome);
  }
  if (json) return worst;
  std::string totals;
  unsigned long long all = 0;
  for (std::size_t i = 0; i < std::size(kStates); ++i) {
    all += counts[i];
    totals += (i == 0 ? "" : ", ") + std::to_string(counts[i]) + ' ' + kStates[i].word;
  }
  std::cout << all << (all == 1 ? " leftover: " : " leftovers: ") << totals << '\n';
  return worst;
}

}  // namespace corvo
