// What hostile recordings can cost: memory that is constant whatever they declare, temporary space
// of their own length and 16 MiB, and as many file-system calls as bytes, never more than in
// proportion.

#include <malloc.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <vector>

#include "ReliabilityTest.h"
#include "support/FileCalls.h"

namespace {

std::atomic<std::size_t> g_live{0};
std::atomic<std::size_t> g_peak{0};

void* Allocate(std::size_t size) {
  void* const block = std::malloc(size);
  const std::size_t live = g_live += ::malloc_usable_size(block);
  for (std::size_t peak = g_peak; live > peak && !g_peak.compare_exchange_weak(peak, live);) {
  }
  return block;
}

void Release(void* block) {
  g_live -= ::malloc_usable_size(block);
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
    if (call.name == "write" && ::fstat(call.descriptor, &status) == 0) {
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

struct Shape {
  const char* name;
  std::string begin;  // zeros follow, up to the length
};

std::vector<Shape> Shapes(std::size_t length) {
  NA_INFO record = SampleRecord();
  const std::string unsealed = Payload(record);
  record.dwSigned = 1;
  const std::string sealed = Payload(record);
  // All that stands before the audio, for this many bytes of it.
  const auto head = [](std::size_t audioBytes, const std::string& payload) {
    return Wave()
        .Chunk("eyre", std::string(8, '\1'))
        .Chunk("fmt ", Format(100, 1, 4))
        .Chunk("ALCH", payload)
        .Chunk("fact", Le32(4711))
        .ChunkClaiming("data", static_cast<unsigned>(audioBytes), "")
        .Bytes();
  };
  const Wave formatOf4G = Wave()
                              .Chunk("ALCH", sealed)
                              .Chunk("eyre", std::string(8, '\1'))
                              .ChunkClaiming("fmt ", 0xFFFFFFFF, Format(100, 1, 4));
  const std::string longChunk = "long" + Le32(4084) + std::string(4084, 'x');
  return {
      {"AudioOf4G", head(0xFFFFFFFF, sealed)},
      {"AudioOf2G", head(0x7FFFFFFF, sealed)},
      {"UnsealedAudioOf2G", head(0x7FFFFFFF - 3170, unsealed)},
      {"UnsealedLacks16M", head(length - 3174 + 16 * kMebibyte, unsealed)},
      {"UnsealedLacks17M", head(length + 17 * kMebibyte, unsealed)},
      {"ShortRecordLacks16M", head(length - 85 + 16 * kMebibyte, "x")},
      {"AllAudioThere", head(length - 3170, sealed)},
      {"UnsealedAllAudioThere", head(length - 3170, unsealed)},
      {"ListOf4G", Wave().ChunkClaiming("LIST", 0xFFFFFFFF, "").Bytes()},
      {"RecordOf4G", Wave().ChunkClaiming("ALCH", 0xFFFFFFFF, "").Bytes()},
      {"FormatOf4G", formatOf4G.Bytes()},
      {"Zeros", Wave().Bytes()},
      {"ZerosBehindRecord", Wave().Chunk("ALCH", sealed).Bytes()},
      {"TinyChunks", Wave().Raw(Repeated("tiny" + Le32(1) + "x", length - 12)).Bytes()},
      {"ChunksAcrossBlocks", Wave().Raw(Repeated(longChunk, length - 12)).Bytes()},
  };
}

class BudgetTest : public ReliabilityTest {
 protected:
  struct Operation {
    const char* name;
    std::function<void()> run;
  };

  // What it costs for a recording of this shape and length.
  Cost Measure(const Operation& operation, const Shape& shape, std::size_t length) {
    StartAgain(shape.begin);
    std::filesystem::resize_file(m_path, length);
    const Meter meter;
    operation.run();
    return meter.Read();
  }

  const Operation m_operations[6] = {{"Seal", [this] { Seal(); }},
                                     {"SealGsm", [this] { Seal(kGsm); }},
                                     {"Verify", [this] { Verify(); }},
                                     {"IsSealed", [this] { IsPresent(); }},
                                     {"Properties", [this] { ReadProperties(); }},
                                     {"Examine", [this] { Examine(); }}};
};

TEST_F(BudgetTest, HostileRecordingsCostNoMoreThanTheirLength) {
  Counts counts{"operations on hostile recordings"};
  const std::vector<Shape> shapes = Shapes(kLength);
  const std::vector<Shape> longer = Shapes(2 * kLength);
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    for (const Operation& operation : m_operations) {
      SCOPED_TRACE(std::string(operation.name) + " of " + shapes[i].name);
      const Cost once = Measure(operation, shapes[i], kLength);
      const Cost twice = Measure(operation, longer[i], 2 * kLength);
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
