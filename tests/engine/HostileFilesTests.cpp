// Malformed recordings through all four functions: answers, never harm. Run under the sanitizers.

#define _TIME_BITS 64  // this test's own times

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "EngineTest.h"

namespace corvo_test {
namespace {

class HostileFilesTest : public SealedTest {
 protected:
  HostileFilesTest() : SealedTest(40) {}

  // Seals, verifies, asks and reads. A recording is left as it was, or sealed.
  void PassThroughAll(const std::string& bytes) {
    Record(bytes);
    IsPresent();
    ReadProperties();
    for (const unsigned short codec : {kG726, kGsm}) {
      Record(bytes);
      const bool sealed = Seal(codec);
      EXPECT_TRUE(Recorded() == bytes || (sealed && Verify() && ReadProperties()));
      EXPECT_TRUE(TemporaryFiles().empty());
    }
  }
};

TEST_F(HostileFilesTest, EveryLengthOfASmallRecording) {
  // Inside the record one byte more or less makes no difference in kind.
  for (const std::string& bytes : {m_original, m_sealed}) {
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
      if (length > 200 && length < 3050 && length % 97 != 0) continue;
      PassThroughAll(bytes.substr(0, length));
      Record(bytes.substr(0, length));
      EXPECT_EQ(Verify(), bytes == m_sealed && length == m_sealed.size()) << length;
    }
  }
}

TEST_F(HostileFilesTest, DirectoriesAndOddPathsEndWithAnAnswer) {
  char properties[2048];
  for (const std::string& path :
       {ScratchPath("rec"), ScratchPath("rec/"), std::string(), std::string("/dev/null"),
        std::string(5000, 'p'), "/" + std::string(300, 'q')}) {
    long long start = 0, end = 0;
    EXPECT_FALSE(CreateSignature(path.c_str(), kGsm, &start, &end));
    EXPECT_FALSE(VerifySignature(path.c_str()));
    EXPECT_FALSE(IsSignaturePresent(path.c_str()));
    EXPECT_TRUE(GetRecordingProperty(path.c_str(), properties));
  }
  EXPECT_FALSE(VerifySignature(nullptr));
}

// From 2 GiB on every function refuses to open it, with the system's own error.
TEST_F(HostileFilesTest, TwoGibibytesAreTooMuchForEachFunction) {
  char properties[2048] = "not cleared";
  Record(m_original);
  std::filesystem::resize_file(m_path, 0x80000000);
  TraceLog trace;
  EXPECT_FALSE(Seal() || Verify() || IsPresent());
  EXPECT_TRUE(GetRecordingProperty(m_path.c_str(), properties));
  EXPECT_STREQ(properties, "");
  const std::string error = std::string("error \"Error 75 (") + std::strerror(EOVERFLOW) +
                            ") opening file " + m_quoted + "\" has occurred.";
  EXPECT_EQ(
      Failures(trace),
      (std::vector<std::string>{kSealing + error, kAsking + error,
                                kVerifying + "no signature found within the file " + m_quoted + ".",
                                kAsking + error}));
  std::filesystem::resize_file(m_path, m_original.size());
  EXPECT_EQ(Recorded(), m_original);
}

// A time beyond 2038 is one like any other; sealing makes a new file, at the time of now.
TEST_F(HostileFilesTest, FilesOfTheNextCenturyAreSealedAndVerified) {
  const auto age = [this] {
    const timespec times[2] = {{5'000'000'000, 0}, {5'000'000'000, 0}};
    return ::utimensat(AT_FDCWD, m_path.c_str(), times, 0);
  };
  Record(m_original);
  ASSERT_EQ(age(), 0);
  EXPECT_TRUE(Seal());
  ASSERT_EQ(age(), 0);
  EXPECT_TRUE(IsPresent() && Verify() && ReadProperties());
  EXPECT_EQ(Examine().verdict, RecordingVerdict::kOk);
}

}  // namespace
}  // namespace corvo_test
