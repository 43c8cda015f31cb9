// What hostile recordings can cost: memory that is constant whatever they declare, temporary space
// of their own length and 16 MiB, and as many file-system calls as bytes, never more than in
// proportion.

#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
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

constexpr std::size_t kLength = 2 * kMebibyte;
constexpr std::size_t kMostCalls =
    2 * (2 * kLength + 16 * kMebibyte) / 1000;             // no steps of a few bytes
constexpr std::size_t kMostSpace = 3170 + 16 * kMebibyte;  // beyond the recording's own length

std::string Repeated(const std::string& bytes, std::size_t length) {
  std::string all;
  while (all.size() + bytes.size() <= length) all += bytes;
  return all;
}

// A record that says so of itself.
std::string SealedRecord() {
  NA_INFO record = SampleRecord();
  record.dwSigned = 1;
  return Payload(record);
}

// All that stands before the audio, for this many bytes of it.
Wave Head(unsigned audioBytes, const std::string& record) {
  return Wave()
      .Chunk("eyre", std::string(8, '\1'))
      .Chunk("fmt ", Format(100, 1, 4))
      .Chunk("ALCH", record)
      .Chunk("fact", Le32(4711))
      .ChunkClaiming("data", audioBytes, "");
}

const struct {
  const char* name;
  std::string (*begin)(std::size_t length);  // zeros follow, up to the length
} kShapes[] = {
    {"AudioOf4G", [](std::size_t) { return Head(0xFFFFFFFF, SealedRecord()).Bytes(); }},
    {"AudioOf2G", [](std::size_t) { return Head(0x7FFFFFFF, SealedRecord()).Bytes(); }},
    {"UnsealedAudioOf2G",
     [](std::size_t) { return Head(0x7FFFFFFF - 3170, Payload(SampleRecord())).Bytes(); }},
    {"UnsealedLacks16M",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length - 3174 + 16 * kMebibyte), Payload(SampleRecord()))
           .Bytes();
     }},
    {"UnsealedLacks17M",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length + 17 * kMebibyte), Payload(SampleRecord())).Bytes();
     }},
    {"ShortRecordLacks16M",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length - 85 + 16 * kMebibyte), "x").Bytes();
     }},
    {"AllAudioThere",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length - 3170), SealedRecord()).Bytes();
     }},
    {"UnsealedAllAudioThere",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length - 3170), Payload(SampleRecord())).Bytes();
     }},
    {"ListOf4G", [](std::size_t) { return Wave().ChunkClaiming("LIST", 0xFFFFFFFF, "").Bytes(); }},
    {"RecordOf4G",
     [](std::size_t) { return Wave().ChunkClaiming("ALCH", 0xFFFFFFFF, "").Bytes(); }},
    {"FormatOf4G",
     [](std::size_t) {
       return Wave()
           .Chunk("ALCH", SealedRecord())
           .Chunk("eyre", std::string(8, '\1'))
           .ChunkClaiming("fmt ", 0xFFFFFFFF, Format(100, 1, 4))
           .Bytes();
     }},
    {"Zeros", [](std::size_t) { return Wave().Bytes(); }},
    {"ZerosBehindRecord", [](std::size_t) { return Wave().Chunk("ALCH", SealedRecord()).Bytes(); }},
    {"TinyChunks",
     [](std::size_t length) {
       return Wave().Raw(Repeated("tiny" + Le32(1) + "x", length - 12)).Bytes();
     }},
    {"ChunksAcrossBlocks",
     [](std::size_t length) {
       return Wave()
           .Raw(Repeated("long" + Le32(4084) + std::string(4084, 'x'), length - 12))
           .Bytes();
     }},
};

const struct {
  const char* name;
  void (*run)(const char* path);
} kOperations[] = {
    {"Seal",
     [](const char* path) {
       long long time = 0;
       CreateSignature(path, kG726, &time, &time);
     }},
    {"SealGsm",
     [](const char* path) {
       long long time = 0;
       CreateSignature(path, kGsm, &time, &time);
     }},
    {"Verify", [](const char* path) { VerifySignature(path); }},
    {"IsSealed", [](const char* path) { IsSignaturePresent(path); }},
    {"Properties",
     [](const char* path) {
       char text[2048];
       GetRecordingProperty(path, text);
     }},
    {"Examine",
     [](const char* path) {
       RecordingExamination found;
       VerifyRecording().Examine(path, found);
     }},
};

class BudgetTest : public ReliabilityTest {
 protected:
  // What an operation costs for a recording that begins so and is so long.
  Cost Measure(void (*run)(const char*), const std::string& begin, std::size_t length) {
    StartAgain(begin);
    std::filesystem::resize_file(m_path, length);
    const Meter meter;
    run(m_path.c_str());
    return meter.Read();
  }
};

TEST_F(BudgetTest, HostileRecordingsCostNoMoreThanTheirLength) {
  Counts counts{"operations on hostile recordings"};
  for (const auto& shape : kShapes) {
    for (const auto& operation : kOperations) {
      SCOPED_TRACE(std::string(operation.name) + " of " + shape.name);
      const Cost once = Measure(operation.run, shape.begin(kLength), kLength);
      const Cost twice = Measure(operation.run, shape.begin(2 * kLength), 2 * kLength);
      ++counts.strikes;
      counts.Check(twice.calls <= 2 * once.calls + 10,
                   std::to_string(once.calls) + " calls become " + std::to_string(twice.calls));
      counts.Check(twice.calls <= kMostCalls, std::to_string(twice.calls) + " calls");
      counts.Check(twice.memory <= kMostMemory, std::to_string(twice.memory) + " bytes of memory");
      counts.Check(twice.temporary <= 2 * kLength + kMostSpace, "the temporary file is too long");
      counts.Check(TemporaryFiles().empty(), "the temporary file stays");
    }
  }
}

}  // namespace
}  // namespace corvo_test
