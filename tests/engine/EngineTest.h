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

// One recording, in a directory of its own, and the four functions on it.
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

  const std::string m_path = ScratchPath("rec/a.wav");
  const std::string m_quoted = "\"" + m_path + "\"";
  long long m_start = 0;
  long long m_end = 0;
};

// Every engine failure line the trace has recorded.
inline std::vector<std::string> Failures(const TraceLog& trace) {
  return trace.Texts(0x27, '2');
}

}  // namespace corvo_test

#endif
