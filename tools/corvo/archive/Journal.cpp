// Keeps what an interrupted run has found.

#include "tools/corvo/archive/Journal.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <filesystem>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

constexpr std::chrono::seconds kFlushInterval{5};  // so much work a power failure may cost

}  // namespace

Journal::Journal(const std::string& path, const RunOptions& options)
    : m_path(path), m_options(options) {
  Open();
  TakeUp();
}

void Journal::Open() {
  m_file = Descriptor(::open(m_path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  if (!m_file.IsOpen()) throw InputError(NameInLine(m_path), ErrorText(errno));
  if (::flock(m_file.Number(), LOCK_EX | LOCK_NB) != 0) {
    throw InputError(NameInLine(m_path),
                     errno == EWOULDBLOCK ? "another run is using it" : ErrorText(errno));
  }
}

// What stands in it must be a journal before a byte of it is changed.
void Journal::TakeUp() {
  const std::string head = JsonLine(m_options) + '\n';
  m_old.emplace(m_path);
  if (m_old->Options() && !(*m_old->Options() == m_options)) {
    throw InputError(NameInLine(m_path), "is the journal of a run with other options");
  }
  const bool isNew = m_old->WholeSize() == 0;
  if (!m_old->Options() && !(isNew && head.compare(0, m_old->Rest().size(), m_old->Rest()) == 0)) {
    throw InputError(NameInLine(m_path), "is no journal");
  }
  if (!m_old->Rest().empty() && ::ftruncate(m_file.Number(), m_old->WholeSize()) != 0) {
    throw InputError(NameInLine(m_path), ErrorText(errno));
  }
  m_isFinished = m_old->Totals().has_value();
  if (isNew) Begin(head);
}

// A new file is there after a power failure only when its directory is on disk, too. Not all
// directories can be opened and flushed; then that much is left to chance.
void Journal::Begin(const std::string& head) {
  Write(head);
  Flush();
  const std::filesystem::path directory = std::filesystem::path(m_path).parent_path();
  const Descriptor opened = OpenReadOnly(directory.empty() ? "." : directory.native(), O_DIRECTORY);
  if (opened.IsOpen()) ::fsync(opened.Number());
}

std::optional<Result> Journal::Find(const Input& input) const {
  const std::vector<ResultPlace>& places = m_old->Places();
  const auto place = std::lower_bound(
      places.begin(), places.end(), input.number,
      [](const ResultPlace& p, unsigned long long number) { return p.input < number; });
  if (place == places.end() || place->input != input.number) return std::nullopt;
  std::optional<Result> old = m_old->TryRead(*place);
  if (!old) return std::nullopt;
  if (old->name != input.name) {
    throw InputError(NameInLine(m_path),
                     "belongs to other inputs: number " + std::to_string(input.number) + " was " +
                         NameInLine(old->name) + " and is " + NameInLine(input.name));
  }
  if (OutcomeOf(old->verdict) == Outcome::kBadInput) return std::nullopt;
  return old;
}

void Journal::Write(const std::string& line) {
  const ssize_t count = ::write(m_file.Number(), line.data(), line.size());
  if (count == static_cast<ssize_t>(line.size())) return;
  throw InputError(NameInLine(m_path), count < 0 ? ErrorText(errno) : ErrorText(ENOSPC));
}

void Journal::Flush() {
  if (::fdatasync(m_file.Number()) != 0 && errno != EINVAL && errno != EROFS) {
    throw InputError(NameInLine(m_path), ErrorText(errno));
  }
  m_flushed = std::chrono::steady_clock::now();
}

void Journal::Add(const Result& result) {
  Write(result.json + '\n');
  m_isFinished = false;
  if (std::chrono::steady_clock::now() - m_flushed >= kFlushInterval) Flush();
}

void Journal::Finish(const RunTotals& totals) {
  if (m_isFinished && m_old->Totals()->seen == totals.seen) return;
  Write(JsonLine(totals) + '\n');
  m_isFinished = true;
  Flush();
}

}  // namespace corvo
