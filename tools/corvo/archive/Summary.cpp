// Puts the results of several runs together.

#include "tools/corvo/archive/Summary.h"

#include <algorithm>
#include <iostream>
#include <list>
#include <optional>
#include <set>

#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ResultFile.h"

namespace corvo {
namespace {

struct Source {
  ResultPlace place;
  const ResultFile* file;
};

class Summary {
 public:
  explicit Summary(const PrintPlan& plan) : m_plan(plan) {}

  void Add(const std::string& path) {
    const ResultFile& file = m_files.emplace_back(path);
    for (const ResultPlace& place : file.Places()) m_sources.push_back({place, &file});
    LookAtTotals(file);
    LookAtOptions(file);
  }

  Outcome Print() {
    const auto isEarlier = [](const Source& a, const Source& b) {
      return a.place.input < b.place.input;
    };
    std::stable_sort(m_sources.begin(), m_sources.end(), isEarlier);
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
      if (i != 0 && m_sources[i].place.input == m_sources[i - 1].place.input) {
        CountDouble(m_sources[i]);
      } else {
        PrintOne(m_sources[i]);
      }
    }
    LookForGap(m_totals.seen.count + 1);
    RunTotals ofEverything = m_totals;
    ofEverything.options.shard = {};
    ofEverything.seen.names = m_seen ? m_seen->names : 0;
    corvo::Print(m_plan, ofEverything);
    TellWhatIsAmiss();
    return std::max(m_totals.counts.Worst(), m_outcome);
  }

 private:
  void Tell(const std::string& what) {
    m_outcome = Outcome::kBadInput;
    std::cerr << "corvo: " << what << '\n';
  }

  void LookAtTotals(const ResultFile& file) {
    const std::string name = NameInLine(file.Path());
    if (!file.Totals()) return Tell(name + ": its run didn't come to its end");
    const SeenInputs& seen = file.Totals()->seen;
    if (!m_seen) m_seen = seen;
    if (seen.count != m_seen->count) {
      Tell(name + ": its run saw " + std::to_string(seen.count) + " inputs, another " +
           std::to_string(m_seen->count));
    } else if (!(seen == *m_seen)) {
      Tell(name + ": its run saw other inputs");
    }
    m_totals.seen.count = std::max(m_totals.seen.count, seen.count);
  }

  void LookAtOptions(const ResultFile& file) {
    if (!file.Options()) return;
    const RunOptions& options = *file.Options();
    RunOptions expected = m_shards.empty() ? options : m_totals.options;
    expected.shard.index = options.shard.index;
    if (!(options == expected)) Tell(NameInLine(file.Path()) + ": its run had other options");
    m_totals.options = expected;
    m_shards.insert(options.shard.index);
  }

  void LookForGap(unsigned long long next) {
    if (next <= m_expected) return;
    if (m_missing == 0) m_firstMissing = m_expected;
    m_missing += next - m_expected;
  }

  void PrintOne(const Source& source) {
    LookForGap(source.place.input);
    m_expected = source.place.input + 1;
    const Result result = source.file->Read(source.place);
    m_totals.counts.Add(result.verdict);
    m_totals.seen.count = std::max(m_totals.seen.count, result.input);
    corvo::Print(m_plan, result);
  }

  void CountDouble(const Source& source) {
    if (m_doubles++ == 0) m_firstDouble = &source;
  }

  void TellMissingShards() {
    Shard shard = m_totals.options.shard;
    if (shard.IsEverything()) return;
    for (shard.index = 1; shard.index <= shard.count; ++shard.index) {
      if (m_shards.count(shard.index) == 0) Tell("shard " + shard.Text() + " is missing");
    }
  }

  void TellWhatIsAmiss() {
    TellMissingShards();
    if (m_missing != 0) {
      Tell("missing inputs: " + std::to_string(m_missing) + ", the first is number " +
           std::to_string(m_firstMissing));
    }
    if (m_doubles != 0) {
      Tell("inputs that are there twice: " + std::to_string(m_doubles) + ", the first is number " +
           std::to_string(m_firstDouble->place.input) + " in " +
           NameInLine(m_firstDouble->file->Path()));
    }
    if (m_totals.seen.count == 0) Tell("nothing to check");
  }

  const PrintPlan& m_plan;
  std::list<ResultFile> m_files;
  std::vector<Source> m_sources;
  RunTotals m_totals;
  std::optional<SeenInputs> m_seen;  // by the first run that came to its end
  std::set<unsigned> m_shards;       // that are there
  unsigned long long m_expected = 1;
  unsigned long long m_missing = 0;
  unsigned long long m_firstMissing = 0;
  unsigned long long m_doubles = 0;
  const Source* m_firstDouble = nullptr;
  Outcome m_outcome = Outcome::kFine;
};

}  // namespace

Outcome Summarize(const std::vector<std::string>& files, const PrintPlan& plan) {
  Summary summary(plan);
  for (const std::string& file : files) summary.Add(file);
  return summary.Print();
}

}  // namespace corvo
