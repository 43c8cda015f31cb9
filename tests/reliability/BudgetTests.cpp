// What hostile recordings can cost: memory that is constant whatever they declare, temporary space
// of their own length and 16 MiB, and as many file-system calls as bytes, never more than in
// proportion.

#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

#include "FileCalls.h"
#include "ReliabilityTest.h"

namespace {

std::atomic<std::size_t> g_live{0};
std::atomic<std::size_t> g_peak{0};

constexpr std::size_t kSizeField = alignof(std::max_align_t);

void* Allocate(std::size_t size) {
  auto* const block = static_cast<char*>(std::malloc(size + kSizeField));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &size, sizeof size);
  const std::size_t live = g_live += size;
  for (std::size_t peak = g_peak; live > peak && !g_peak.compare_exchange_weak(peak, live);) {
  }
  return block + kSizeField;
}

void Release(void* memory) {
  if (memory == nullptr) return;
  char* const block = static_cast<char*>(memory) - kSizeField;
  std::size_t size;
  std::memcpy(&size, block, sizeof size);
  g_live -= size;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* const memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
  return ::operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  Release(memory);
}
void operator delete[](void* memory) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  Release(memory);
}

namespace corvo_test {
namespace {

constexpr std::size_t kMebibyte = 1024 * 1024;
constexpr std::size_t kMostMemory = 160 * 1024;  // the largest block is 128 KiB

struct Cost {
  std::size_t calls = 0;
  std::size_t temporary = 0;  // the largest file
  std::size_t memory = 0;
};

class Meter : public FileCallObserver {
 public:
  Meter() {
    m_before = g_live;
    g_peak = g_live.load();
  }

  void After(const FileCall& call, bool) override {
    ++m_cost.calls;
    struct stat status {};
    if (std::strcmp(call.name, "write") == 0 && ::fstat(call.descriptor, &status) == 0) {
      m_cost.temporary = std::max(m_cost.temporary, static_cast<std::size_t>(status.st_size));
    }
  }

  Cost Read() const {
    Cost cost = m_cost;
    cost.memory = g_peak - m_before;
    return cost;
  }

 private:
  Cost m_cost;
  std::size_t m_before;
};

// Recordings of about so many bytes that mean harm, or seem to.
const struct {
  const char* name;
  std::function<std::string(std::size_t)> make;
} kRecordings[] = {
    {"a plain one", [](std::size_t size) { return G726Recording(Audio(size)); }},
    {"empty chunks alone",
     [](std::size_t size) { return Wave().Raw(std::string(size, '\0')).Bytes(); }},
    {"chunks of one byte",
     [](std::size_t size) {
       Wave wave;
       for (std::size_t i = 0; i < size / 9; ++i) wave.Chunk("LIST", "x");
       return wave.Bytes();
     }},
    {"a chunk without end before the record",
     [](std::size_t size) {
       return Wave().ChunkClaiming("LIST", 0xFFFFFFFF, std::string(size, 'x')).Bytes();
     }},
    {"a record without end",
     [](std::size_t size) {
       return Wave().ChunkClaiming("ALCH", 0xFFFFFFFF, std::string(size, '\1')).Bytes();
     }},
    {"16 MiB less audio than declared",
     [](std::size_t size) {
       std::string bytes = G726Recording(Audio(size));
       return With(bytes, bytes.rfind("data") + 4, Le32(size + 16 * kMebibyte));
     }},
    {"2 GiB of audio declared",
     [](std::size_t size) {
       std::string bytes = G726Recording(Audio(size));
       return With(bytes, bytes.rfind("data") + 4, Le32(0x7FFFFFFF));
     }},
};

// Marked as sealed, so that verification doesn't stop at once.
std::string Marked(const std::string& bytes) {
  const std::size_t record = bytes.find("ALCH");
  if (record == std::string::npos) return bytes;
  return With(bytes, record + offsetof(NA_INFO, dwSigned), Le32(1));
}

class BudgetTest : public ReliabilityTest {
 protected:
  template <class Operation>
  Cost Measure(const std::string& bytes, Operation operate) {
    StartAgain(bytes);
    const Meter meter;
    operate();
    return meter.Read();
  }
};

TEST_F(BudgetTest, HostileRecordingsCostNoMoreThanTheirLength) {
  Counts counts{"operations on hostile recordings"};
  char properties[2048];
  RecordingExamination found;
  const struct {
    const char* name;
    bool marked;
    std::function<void()> operate;
  } operations[] = {
      {"seal", false, [&] { Seal(); }},
      {"seal as GSM", false, [&] { Seal(kGsm); }},
      {"verify", true, [&] { Verify(); }},
      {"examine", true, [&] { VerifyRecording().Examine(m_path.c_str(), found); }},
      {"tell properties", true, [&] { GetRecordingProperty(m_path.c_str(), properties); }},
  };
  for (const auto& recording : kRecordings) {
    const std::string once = recording.make(kMebibyte);
    const std::string twice = recording.make(2 * kMebibyte);
    for (const auto& operation : operations) {
      SCOPED_TRACE(std::string(operation.name) + ": " + recording.name);
      const Cost less = Measure(operation.marked ? Marked(once) : once, operation.operate);
      const Cost more = Measure(operation.marked ? Marked(twice) : twice, operation.operate);
      ++counts.strikes;
      counts.Check(more.memory <= kMostMemory,
                   "it takes " + std::to_string(more.memory) + " bytes");
      counts.Check(more.temporary <= twice.size() + 16 * kMebibyte,
                   "the temporary file is too long");
      counts.Check(more.calls <= 2 * less.calls + 10,
                   std::to_string(less.calls) + " calls become " + std::to_string(more.calls));
    }
  }
}

}  // namespace
}  // namespace corvo_test
