#ifndef TESTS_SUPPORT_FILECALLS_H
#define TESTS_SUPPORT_FILECALLS_H

#include <atomic>
#include <functional>
#include <string>

namespace corvo_test {

// One file-system call of the library, made by this thread.
struct FileCall {
  std::string name;
  int descriptor = -1;           // -1: it names its file
  const char* path = nullptr;    // null: it has a descriptor
  const char* target = nullptr;  // of link and rename; otherwise null

  std::string Path() const;  // of the file that it names or whose descriptor it has
};

// What becomes of a call.
struct Fate {
  int error = 0;         // fail with it; close has closed all the same
  bool isShort = false;  // move half of the bytes, where it moves any
  bool isFull = false;   // there is no room on the disk for more than its files hold
};

// How the sealed copy takes the recording's place: by a copy where no rename crosses over.
enum class Replacement { kMove, kCopy };
constexpr Replacement kReplacements[] = {Replacement::kMove, Replacement::kCopy};

// Sees every file-system call that the library makes in the thread that made the observer, while it
// lives. The observer's own calls are not seen. No call waits for the disk, seen or not.
class FileCallObserver {
 public:
  explicit FileCallObserver(Replacement replacement = Replacement::kMove);
  virtual ~FileCallObserver();
  FileCallObserver(const FileCallObserver&) = delete;
  FileCallObserver& operator=(const FileCallObserver&) = delete;

  virtual Fate Before(const FileCall&) { return {}; }
  virtual void After(const FileCall&, bool /*succeeded*/) {}

  const Replacement replacement;
};

// Strikes the `nth` call, from 1, of this name, or of any where there is none: `strike` runs, and
// tells what becomes of the call. A full disk stays full.
class Fault : public FileCallObserver {
 public:
  Fault(const char* name, int nth, std::function<Fate()> strike,
        Replacement replacement_ = Replacement::kMove)
      : FileCallObserver(replacement_), m_name(name), m_left(nth), m_strike(std::move(strike)) {}

  Fate Before(const FileCall& call) override;

  bool HasStruck() const { return !m_struck.empty(); }
  const std::string& Struck() const { return m_struck; }  // the call's name

 private:
  const std::string m_name;
  int m_left;
  const std::function<Fate()> m_strike;
  std::string m_struck;
  bool m_isFull = false;
};

// What a host's versions of these calls do first; a test's may throw, or end the thread. Sleep
// doesn't sleep.
using Hook = std::function<void()>;
extern thread_local Hook t_onSleep, t_onMoveFile, t_onClock;
extern std::atomic<int> g_sleeps;  // of 50 ms, so far

// A millisecond clock of the process's own, this much further at each look; negative: the real one.
extern int g_clockStep;

// Gives one of these another value for a scope.
template <class Value>
class While {
 public:
  While(Value& variable, Value value) : m_variable(variable), m_before(variable) {
    m_variable = value;
  }
  ~While() { m_variable = m_before; }
  While(const While&) = delete;
  While& operator=(const While&) = delete;

 private:
  Value& m_variable;
  const Value m_before;
};

}  // namespace corvo_test

#endif
