// What an examination finds, and that it never differs from verification.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "EngineTest.h"

namespace corvo_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Verdict = RecordingVerdict;

class ExamineTest : public SealedTest {
 protected:
  ExamineTest() : SealedTest(40) {}

  using SealedTest::Examine;
  RecordingExamination Examine(const std::string& bytes) {
    Record(bytes);
    return Examine();
  }
};

std::vector<std::string> Chunks(const RecordingExamination& found) {
  static const char* const kTaken[] = {"-", "rebuilt", "record", "fact value", "audio"};
  std::vector<std::string> chunks;
  for (int i = 0; i < found.chunkCount; ++i) {
    const RecordingChunk& chunk = found.chunks[i];
    chunks.push_back(std::string(chunk.id, 4) + " " + std::to_string(chunk.offset) + " " +
                     std::to_string(chunk.presentSize) + " of " +
                     std::to_string(chunk.declaredSize) + " " +
                     kTaken[static_cast<int>(chunk.taken)]);
  }
  return chunks;
}

std::string Departures(const RecordingExamination& found) {
  std::string departures;
  for (int i = 0; i < found.departureCount; ++i) {
    const LayoutDeparture& departure = found.departures[i];
    departures += std::to_string(departure.offset) + "+" + std::to_string(departure.size) + " " +
                  departure.field + "; ";
  }
  return departures;
}

TEST_F(ExamineTest, GivesTheVerdictAndItsReason) {
  const std::string& sealed = m_sealed;
  const std::string smallEyre =
      Wave().Chunk("ALCH", Payload(RecordOf(sealed))).Chunk("eyre", "7 bytes").Bytes();
  const struct {
    const char* departures;
    std::string bytes;
    Verdict verdict;
    const char* reason;
  } rows[] = {
      {"", sealed, Verdict::kOk, ""},
      {"3210+3 behind the audio; ", sealed + "xyz", Verdict::kOk, ""},
      {"4+4 RIFF size; ", With(sealed, 4, "\1"), Verdict::kOk, ""},
      {"36+16 format block; ", With(sealed, 40, "\1"), Verdict::kOk, ""},
      {"", With(sealed, 3200, "\1\2"), Verdict::kBroken,
       "its digest is not the one that was sealed"},
      {"", With(sealed, 298, "\2"), Verdict::kUnsealed, "it isn't marked as sealed"},
      {"3190+20 audio that the file lacks; ", sealed.substr(0, 3190), Verdict::kMalformed,
       "it lacks 20 of its 40 bytes of audio"},
      {"4+4 RIFF size; 3210+4294967255 audio that the file lacks; ",
       With(sealed, 3166, "\xFF\xFF\xFF\xFF"), Verdict::kMalformed,
       "it declares more audio than any sealed recording holds"},
      {"3150+8 \"fact\" chunk header; ", With(sealed, 3150, "fuct"), Verdict::kMalformed,
       "it has no \"data\" chunk where one belongs"},
      {"12+8 \"eyre\" chunk header; ", With(sealed, 16, std::string(4, '\0')), Verdict::kMalformed,
       "its \"eyre\" chunk is empty"},
      {"12+8 \"eyre\" chunk header; ", smallEyre, Verdict::kMalformed,
       "its \"eyre\" chunk of 7 bytes is too small"},
      {"36+16 format block; ", With(sealed, 38, "\2"), Verdict::kMalformed,
       "it declares 2 channels instead of 1"},
      {"36+16 format block; ", With(sealed, 36, "\1"), Verdict::kMalformed,
       "it declares audio format 1 instead of 100"},
      {"", With(sealed, 52, "ALCX"), Verdict::kMalformed,
       "it has no \"ALCH\" chunk where one belongs"},
      {"", "", Verdict::kMalformed, "it is no WAVE file"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.reason);
    const RecordingExamination found = Examine(row.bytes);
    EXPECT_EQ(found.verdict, row.verdict);
    EXPECT_EQ(found.reason, row.reason);
    EXPECT_EQ(Departures(found), row.departures);
    EXPECT_EQ(Verify(), row.verdict == Verdict::kOk);
    EXPECT_EQ(Recorded(), row.bytes);
  }
  EXPECT_THAT(TemporaryFiles(), ElementsAre());
}

TEST_F(ExamineTest, MapsTheChunksAsTheLibraryReadsThem) {
  EXPECT_THAT(Chunks(Examine()),
              ElementsAre("RIFF 0 4 of 3202 rebuilt", "eyre 12 8 of 8 rebuilt",
                          "fmt  28 16 of 16 rebuilt", "ALCH 52 3090 of 3090 record",
                          "fact 3150 4 of 4 fact value", "data 3162 40 of 40 audio"));

  // A record behind the audio, an "eyre" chunk that holds a chunk, and one that the file cuts.
  const std::string eyre(8, 'e');
  const std::string odd = Wave()
                              .Chunk("eyre", eyre + "LIST" + Le32(2) + "ab")
                              .Chunk("fmt ", Format(100, 1, 2))
                              .Chunk("fact", Le32(7))
                              .Chunk("data", Audio(5))
                              .Chunk("ALCH", Payload(SampleRecord()))
                              .ChunkClaiming("note", 900, "short")
                              .Bytes();
  const RecordingExamination found = Examine(odd);
  EXPECT_THAT(Chunks(found), ElementsAre(HasSubstr("RIFF 0 4"), "eyre 12 8 of 18 rebuilt",
                                         "LIST 28 2 of 2 -", "fmt  38 16 of 16 rebuilt",
                                         "fact 62 4 of 4 fact value", "data 74 5 of 5 audio",
                                         "ALCH 87 3090 of 3090 record", "note 3185 5 of 900 -"));
  EXPECT_EQ(found.factValue, 7u);
  EXPECT_EQ(found.factOffset, 70);
  EXPECT_EQ(found.audioOffset, 82);
}

// More chunks than are kept, and sizes that lead beyond the end.
TEST_F(ExamineTest, EndsOnHostileChunks) {
  Wave many;
  for (int i = 0; i < 500; ++i) many.Chunk("tiny", "");
  const RecordingExamination found = Examine(many.Chunk("ALCH", Payload(SampleRecord())).Bytes());
  EXPECT_EQ(found.chunkCount, RecordingExamination::kMostChunks);
  EXPECT_TRUE(found.moreChunks);
  EXPECT_TRUE(found.hasRecord);
  EXPECT_EQ(found.recordOffset, 12 + 500 * 8);
  EXPECT_EQ(found.verdict, Verdict::kUnsealed);
  EXPECT_EQ(Examine("RIFF    WAVEhuge\xFF\xFF\xFF\xFF").verdict, Verdict::kMalformed);
}

// Holes are read as empty chunks: nobody must wait for the way through gigabytes of them.
TEST_F(ExamineTest, RefusesAtOnceWhatIsLongerThanSealedRecordings) {
  for (const std::uintmax_t size : {0x7FFFFFFFull, 0x80000000ull, 1ull << 36}) {
    std::filesystem::resize_file(m_path, size);
    const RecordingExamination found = Examine();
    EXPECT_EQ(found.verdict == Verdict::kOk, size == 0x7FFFFFFF);
    EXPECT_EQ(Verify(), size == 0x7FFFFFFF);
    if (size == 0x7FFFFFFF) continue;
    EXPECT_EQ(found.reason, "it is longer than any sealed recording");
    EXPECT_EQ(found.fileSize, static_cast<LONGLONG>(size));
  }
}

TEST_F(ExamineTest, DigestOfAnotherLengthExplainsAGrownRecording) {
  const std::string grown = With(m_sealed, 3166, Le32(45)) + "extra";
  const RecordingExamination found = Examine(grown);
  ASSERT_EQ(found.verdict, Verdict::kBroken);
  unsigned char digest[kDigestSize];
  const int descriptor = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
  VerifyRecording engine;
  ASSERT_TRUE(engine.ComputeDigest(descriptor, found.record, found.factValue, 3170, 40, digest));
  EXPECT_TRUE(std::equal(digest, digest + kDigestSize, found.storedDigest));
  EXPECT_FALSE(engine.ComputeDigest(descriptor, found.record, 0, 3170, 46, digest));
  EXPECT_EQ(::lseek(descriptor, 0, SEEK_CUR), 0);
  ::close(descriptor);
}

TEST_F(ExamineTest, TellsWhatCannotBeRead) {
  RecordingExamination found;
  for (const auto& [path, reason] :
       {std::pair(ScratchPath("rec/missing.wav"), "No such file or directory"),
        std::pair(ScratchPath("rec"), "it is not a regular file"),
        std::pair("/" + std::string(MAX_PATH, 'x'), "File name too long")}) {
    VerifyRecording().Examine(path.c_str(), found);
    EXPECT_EQ(found.verdict, Verdict::kUnreadable);
    EXPECT_EQ(found.reason, reason);
  }
  VerifyRecording().Examine(-1, found);
  EXPECT_EQ(found.reason, "Bad file descriptor");
}

}  // namespace
}  // namespace corvo_test
