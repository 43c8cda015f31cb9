// What a hostile recording may cost, whatever sizes it declares: memory that doesn't depend on it,
// temporary space for its own length, a header and 16 MiB, and reads in proportion to its length.
// A program of its own: it counts what the library reads, writes and allocates.

#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "EngineTest.h"
#include "platform/Win32Compat.h"

namespace {

struct Cost {
  long long reads = 0;
  long long space = 0;  // the longest that a file which was written to has become
  long long peak = 0;   // bytes allocated at once
};
Cost g_cost;
std::atomic<long long> g_allocated{0};
long long g_before = 0;  // allocated when the counting began

void BeginCounting() {
  g_cost = {};
  g_before = g_allocated;
}

void* Allocate(std::size_t size) {
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  g_allocated += static_cast<long long>(::malloc_usable_size(block));
  g_cost.peak = std::max(g_cost.peak, g_allocated - g_before);
  return block;
}

void Free(void* block) {
  g_allocated -= static_cast<long long>(::malloc_usable_size(block));
  std::free(block);
}

}  // namespace

// This test program as a host.

void* operator new(std::size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Free(block);
}

extern "C" {

ssize_t read(int fd, void* buffer, size_t size) {
  ++g_cost.reads;
  return ::syscall(SYS_read, fd, buffer, size);
}

ssize_t pread(int fd, void* buffer, size_t size, off_t offset) {
  ++g_cost.reads;
#ifdef __i386__
  return ::syscall(SYS_pread64, fd, buffer, size, static_cast<unsigned>(offset),
                   static_cast<unsigned>(offset >> 32));
#else
  return ::syscall(SYS_pread64, fd, buffer, size, offset);
#endif
}

ssize_t write(int fd, const void* buffer, size_t size) {
  const ssize_t written = ::syscall(SYS_write, fd, buffer, size);
  struct stat status;
  if (::fstat(fd, &status) == 0) g_cost.space = std::max<long long>(g_cost.space, status.st_size);
  return written;
}

int fsync(int) {
  return 0;
}

void Sleep(DWORD) {
}

}  // extern "C"

namespace corvo_test {
namespace {

constexpr std::size_t kMiB = 1024 * 1024;
constexpr std::size_t kLength = 4 * kMiB;
constexpr long long kMostReads = (2 * kLength + 16 * kMiB) / 1000;  // no steps of a few bytes
constexpr long long kMostMemory = 160 * 1024;  // the longest block that is read at once, and texts
constexpr long long kMostSpace = 3170 + 16 * kMiB;  // beyond the recording's own length

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
       return Head(static_cast<unsigned>(length - 3174 + 16 * kMiB), Payload(SampleRecord()))
           .Bytes();
     }},
    {"UnsealedLacks17M",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length + 17 * kMiB), Payload(SampleRecord())).Bytes();
     }},
    {"ShortRecordLacks16M",
     [](std::size_t length) {
       return Head(static_cast<unsigned>(length - 85 + 16 * kMiB), "x").Bytes();
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

class BudgetTest : public EngineTest {
 protected:
  // What an operation costs for a recording that begins so and is so long.
  Cost Measure(void (*run)(const char*), const std::string& begin, std::size_t length) {
    Record(begin);
    std::filesystem::resize_file(m_path, length);
    BeginCounting();
    run(m_path.c_str());
    return g_cost;
  }
};

TEST_F(BudgetTest, HoldsForEveryShapeAndOperation) {
  for (const auto& shape : kShapes) {
    for (const auto& operation : kOperations) {
      SCOPED_TRACE(std::string(operation.name) + " of " + shape.name);
      const Cost once = Measure(operation.run, shape.begin(kLength), kLength);
      const Cost twice = Measure(operation.run, shape.begin(2 * kLength), 2 * kLength);
      EXPECT_LE(twice.reads, 2 * once.reads + 8) << once.reads;
      EXPECT_LE(twice.reads, kMostReads);
      EXPECT_LE(twice.peak, kMostMemory);
      EXPECT_LE(once.space, static_cast<long long>(kLength) + kMostSpace);
      EXPECT_LE(twice.space, static_cast<long long>(2 * kLength) + kMostSpace);
      EXPECT_TRUE(TemporaryFiles().empty());
    }
  }
}

}  // namespace
}  // namespace corvo_test
