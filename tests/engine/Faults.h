#ifndef TESTS_ENGINE_FAULTS_H
#define TESTS_ENGINE_FAULTS_H

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvo_test {

// The calls of the library that this test program exports its own versions of. Each does what it
// should unless a fault strikes; but fsync never waits for the disk, and Sleep doesn't sleep.
enum class Call { Read, Write, Fsync, Unlink, MoveFile, CopyFile, Sleep, Clock };

// While it lives, the `nth` (from 1) call of this kind that the thread makes is struck: `strike`
// runs first, and gives the error number that the call then fails with, or 0 for it to go on.
// Without a kind, calls of every kind but Sleep and Clock count.
class Fault {
 public:
  Fault(std::optional<Call> call, int nth, std::function<int()> strike);
  ~Fault();
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

  bool HasStruck() const;
};

// What the process believes while it is set.
extern bool g_movesFail;  // as across file systems
extern bool g_copiesFail;
extern bool g_writesAreShort;  // half of the bytes asked for

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

// The calls that decide what survives, in order, while it isn't null: "fsync PATH", "unlink PATH",
// "MoveFile", "CopyFile".
extern std::vector<std::string>* g_calls;

extern std::atomic<int> g_sleeps;  // calls of Sleep(50) so far

}  // namespace corvo_test

#endif
