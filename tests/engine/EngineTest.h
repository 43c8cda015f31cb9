#ifndef TESTS_ENGINE_ENGINETEST_H
#define TESTS_ENGINE_ENGINETEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LarkspurCommon/Aregistry.h"
#include "Recordings.h"
#include "engine/CorvoVerifiedRecording.h"
#include "support/Scratch.h"
#include "support/TraceLog.h"

namespace corvo_test {

constexpr unsigned short kGsm = 16;
constexpr unsigned short kG726 = 0;

// The first text of every failure line.
const std::string kSealing =
    "bool VerifyRecording::CreateSignature(const TCHAR*, UWORD, LONGLONG*, LONGLONG*) - ";
const std::string kVerifying = "bool VerifyRecording::VerifySignature(const TCHAR*) - ";
const std::string kAsking = "bool VerifyRecording::IsSignaturePresent(const TCHAR*) - ";

inline std::string TemporaryDirectory() {
  return ScratchPath("bin/tempfiles");
}

inline void EmptyTemporaryDirectory() {
  RemoveTree(TemporaryDirectory());
  MakeDirectory(TemporaryDirectory());
}

inline std::vector<std::string> TemporaryFiles() {
  return ListDirectory(TemporaryDirectory());
}

// The only one there is, as a path.
inline std::string TemporaryFile() {
  EXPECT_EQ(TemporaryFiles().size(), 1u);
  return TemporaryDirectory() + "/" + TemporaryFiles().at(0);
}

// One recording, in a directory of its own, and what the library does with it.
class EngineTest : public testing::Test {
 protected:
  EngineTest() {
    RemoveTree(ScratchPath("rec"));
    MakeDirectory(ScratchPath("rec"));
    VMRegistry::global();  // what its start traces is no test's concern
    EmptyTemporaryDirectory();
  }

  void Record(const std::string& bytes) { WriteFile(m_path, bytes); }
  std::string Recorded() const { return ReadFile(m_path); }

  // From time 0 for 65.9 seconds.
  bool Seal(unsigned short codec = kG726) {
    m_start = 0;
    m_end = 659'000'000;
    return CreateSignature(m_path.c_str(), codec, &m_start, &m_end);
  }
  bool Verify() const { return VerifySignature(m_path.c_str()); }
  bool IsPresent() const { return IsSignaturePresent(m_path.c_str()); }
  bool ReadProperties() const {
    char properties[2048];
    return GetRecordingProperty(m_path.c_str(), properties);
  }
  RecordingExamination Examine() const {
    RecordingExamination found;
    VerifyRecording().Examine(m_path.c_str(), found);
    return found;
  }

  const std::string m_path = ScratchPath("rec/a.wav");
  const std::string m_quoted = "\"" + m_path + "\"";
  long long m_start = 0;
  long long m_end = 0;
};

// With a recording that was just sealed.
class SealedTest : public EngineTest {
 protected:
  explicit SealedTest(std::size_t audioBytes = 2500)
      : m_original(G726Recording(Audio(audioBytes))) {
    Record(m_original);
    EXPECT_TRUE(Seal());
    m_sealed = Recorded();
  }

  const std::string m_original;
  std::string m_sealed;
};

// Every engine failure line the trace has recorded.
inline std::vector<std::string> Failures(const TraceLog& trace) {
  return trace.Texts(0x27, '2');
}

}  // namespace corvo_test

#endif
