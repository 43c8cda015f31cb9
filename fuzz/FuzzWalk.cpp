// Any bytes as a recording, read by the chunk search, the record's reader and the walkers: what
// they find is in the file and in its place, and what they refuse they say, touching nothing.

#include <algorithm>
#include <cstring>
#include <functional>

#include "Target.h"
#include "engine/CorvoVerifiedRecording.h"
#include "support/Bytes.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

constexpr char kEarlier[] = "an earlier failure";
constexpr unsigned char kUntouched = 0xA5;

// The file with these bytes, through one step after the other.
class Walked {
 public:
  explicit Walked(const std::string& bytes) : m_bytes(bytes) {
    const std::string path = ScratchPath("walked.wav");
    WriteFile(path, bytes);
    Require(m_file.Open(path.c_str(), OFM_READ, NLM_BINARY, false, false), "the file opens");
  }

  // `walk` looks for a chunk of this name and gives its size.
  void Find(const std::string& id,
            const std::function<unsigned long(VerifyRecording&, TFileHandler&)>& walk) {
    VerifyRecording engine;
    engine.m_lastError = kEarlier;
    const unsigned long size = walk(engine, m_file);
    const std::size_t at = m_file.GetFilePosition();
    Require(at <= m_bytes.size(), "the position in the file");
    Require(!m_file.FailedSinceOpen(), "nothing but the end stops a walk");
    if (size == 0) return;
    Require(engine.m_lastError == kEarlier, "no refusal of what is found");
    Require(at >= 8 && m_bytes.substr(at - 8, 8) == id + Le32(size), "the chunk at its payload");
  }

  // The first chunk of this name behind the RIFF header, if there is one.
  void Locate(const std::string& id) {
    m_file.MoveToPosition(0, 12);
    Find(id, [&](auto& engine, auto& file) { return engine.LocateChunk(file, id.c_str()); });
  }

  void ReadRecord() {
    NA_INFO record;
    std::memset(&record, kUntouched, sizeof record);
    VerifyRecording engine;
    engine.m_lastError = kEarlier;
    const bool found = engine.GetNAInfo(&record, m_file, nullptr);
    const std::string read(reinterpret_cast<const char*>(&record), sizeof record);
    if (!found) {
      Require(read == std::string(sizeof record, static_cast<char>(kUntouched)),
              "an untouched one");
      return;
    }
    std::string payload = read.substr(8);
    payload.erase(payload.find_last_not_of('\0') + 1);
    Require(engine.m_lastError == kEarlier, "no refusal of a record");
    Require(read.substr(0, 8) == "ALCH" + Le32(3090), "the record's header");
    Require(m_bytes.find(payload) != std::string::npos, "a record of the file's own bytes");
  }

 private:
  const std::string& m_bytes;
  TFileHandler m_file;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = Input(data, size).RestWithRun();
  Walked walked(bytes);
  if (bytes.size() >= 12) {
    for (const char* id : {"ALCH", "eyre", "fmt ", "fact", "data"}) walked.Locate(id);
  }
  walked.ReadRecord();

  unsigned long rate = 0;
  int width = 0;
  long long eyre = 0;
  walked.Find("data", [&](auto& e, auto& file) { return e.WalkToWAVData(file, rate, width); });
  walked.Find("data", [&](auto& e, auto& file) { return e.WalkToG726WAVData(file, rate, eyre); });
  rate = 4711, width = 4712;
  walked.Find("data", [&](auto& e, auto& file) { return e.WalkToWAVDataGSM(file, rate, width); });
  Require(rate == 4711 && width == 4712, "GSM's format is not looked at");
  return 0;
}
