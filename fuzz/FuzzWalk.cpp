// Any bytes as a recording, read by the chunk search, the record's reader and the walkers, against
// a walk through the same bytes in memory.

#include <algorithm>
#include <cstring>
#include <utility>

#include "Target.h"
#include "engine/CorvoVerifiedRecording.h"
#include "support/Scratch.h"

namespace {

constexpr char kEarlier[] = "an earlier failure";
constexpr unsigned char kUntouched = 0xA5;

// A recording's bytes, and the refusal that the way through them ends with.
class Model {
 public:
  Model(const std::string& bytes, std::string path) : m_bytes(bytes), m_path(std::move(path)) {}

  std::size_t at = 0;
  std::string refusal = kEarlier;

  std::string Take(std::size_t count) {
    const std::string taken = m_bytes.substr(std::min(at, m_bytes.size()), count);
    at += taken.size();
    return taken;
  }

  // Zero where the file ends before.
  unsigned TakeNumber(std::size_t width) {
    unsigned value = 0;
    const std::string taken = Take(width);
    for (std::size_t i = taken.size(); i > 0; --i) {
      value = value << 8 | static_cast<unsigned char>(taken[i - 1]);
    }
    return value;
  }

  bool Refuse(const std::string& why) {
    refusal = why + " in WAVE file \"" + m_path + "\"";
    return false;
  }

  bool TakeRiff(unsigned& riffSize) {
    at = 0;
    if (Take(4) != "RIFF") return Refuse("Invalid WAVE file (no RIFF found)");
    riffSize = TakeNumber(4);
    return Take(4) == "WAVE" || Refuse("Invalid WAVE file (no WAVE chunk found)");
  }

  // To the first chunk of this name, whatever its size. False: there is none.
  bool Find(const char* id, unsigned& size) {
    size = 0;
    while (at + 8 <= m_bytes.size()) {
      const std::string found = Take(4);
      const unsigned declared = TakeNumber(4);
      if (found == id) return size = declared, true;
      at += std::min<std::size_t>(declared, m_bytes.size() - at);
    }
    at = m_bytes.size();
    return Refuse("Failed to locate CHUNK \"" + std::string(id) + "\"");
  }

  bool FindOf(const char* id, unsigned least, unsigned& size) {
    if (!Find(id, size) || size == 0) return false;
    return size >= least ||
           Refuse("Invalid WAVE file (fmt chunk is too small (" + std::to_string(size) + " < 16))");
  }

  bool TakeFormat(unsigned wantedTag, unsigned& rate, unsigned& bits) {
    unsigned size = 0;
    if (!FindOf("fmt ", 16, size)) return false;
    const unsigned tag = TakeNumber(2);
    const unsigned channels = TakeNumber(2);
    const unsigned samples = TakeNumber(4);
    TakeNumber(4);
    TakeNumber(2);
    const unsigned width = TakeNumber(2);
    if (channels != 1) return RefuseFile(" is stereo which is not supported");
    if (tag != wantedTag)
      return RefuseFile(" has format " + std::to_string(tag) + " which is not supported");
    rate = samples;
    bits = width;
    at += std::min<std::size_t>(size - 16, m_bytes.size() - at);
    return true;
  }

 private:
  bool RefuseFile(const std::string& why) {
    refusal = "WAVE file \"" + m_path + "\"" + why;
    return false;
  }

  const std::string& m_bytes;
  const std::string m_path;
};

// One step: the engine with an open file, and the model with the same bytes.
struct Step {
  Step(TFileHandler& opened, const std::string& bytes)
      : file(opened), model(bytes, opened.GetPathname()) {
    engine.m_lastError = kEarlier;
  }

  // What a step that gave `size` must have left.
  void Finish(unsigned long size, unsigned expected) {
    Require(size == expected, "the size of the chunk that was found");
    Require(engine.m_lastError == model.refusal, "the refusal");
    if (size != 0) Require(file.GetFilePosition() == model.at, "the position at the payload");
    Require(!file.FailedSinceOpen(), "nothing but the end stops a walk");
  }

  TFileHandler& file;
  VerifyRecording engine;
  Model model;
};

void Locate(TFileHandler& file, const std::string& bytes, const char* id) {
  Step step(file, bytes);
  Model& model = step.model;
  unsigned expected = 0;
  file.MoveToPosition(0, 12);
  model.at = 12;
  model.Find(id, expected);
  step.Finish(step.engine.LocateChunk(file, id), expected);
}

void ReadRecord(TFileHandler& file, const std::string& bytes) {
  Step step(file, bytes);
  Model& model = step.model;
  unsigned size = 0;
  unsigned riff = 4711;
  const bool expected = model.TakeRiff(riff) && model.FindOf("ALCH", 1, size);
  NA_INFO wanted;
  std::memset(&wanted, expected ? 0 : kUntouched, sizeof wanted);
  if (expected) {
    const std::string payload = model.Take(std::min(size, 3090u));
    std::memcpy(&wanted, "ALCH\x12\x0c\0\0", 8);
    std::memcpy(wanted.szMaker, payload.data(), payload.size());
  }

  NA_INFO record;
  std::memset(&record, kUntouched, sizeof record);
  unsigned long riffSize = 4711;
  Require(step.engine.GetNAInfo(&record, file, &riffSize) == expected, "a record is found");
  Require(std::memcmp(&record, &wanted, sizeof record) == 0, "the record, or none of it");
  Require(riffSize == riff, "the RIFF size");
  Require(step.engine.m_lastError == model.refusal, "the record's refusal");
}

void WalkPcm(TFileHandler& file, const std::string& bytes) {
  Step step(file, bytes);
  Model& model = step.model;
  unsigned riff = 0, rate = 4711, bits = 4712, expected = 0;
  if (model.TakeRiff(riff) && model.TakeFormat(1, rate, bits)) model.Find("data", expected);
  unsigned long samples = 4711;
  int width = 4712;
  step.Finish(step.engine.WalkToWAVData(file, samples, width), expected);
  Require(samples == rate && width == static_cast<int>(bits), "the PCM format");
}

void WalkGsm(TFileHandler& file, const std::string& bytes) {
  Step step(file, bytes);
  Model& model = step.model;
  unsigned riff = 0, expected = 0;
  if (model.TakeRiff(riff)) model.Find("data", expected);
  unsigned long samples = 4711;
  int width = 4712;
  step.Finish(step.engine.WalkToWAVDataGSM(file, samples, width), expected);
  Require(samples == 4711 && width == 4712, "GSM's format is not looked at");
}

// Fields that the file cuts keep their values.
void WalkG726(TFileHandler& file, const std::string& bytes) {
  Step step(file, bytes);
  Model& model = step.model;
  unsigned riff = 0, size = 0, rate = 0, bits = 0, expected = 0;
  unsigned long long eyre = 4711;
  unsigned fact = 4712;
  if (model.TakeRiff(riff) && model.FindOf("eyre", 8, size)) {
    const std::string value = model.Take(8);
    if (value.size() == 8) std::memcpy(&eyre, value.data(), sizeof eyre);
    if (model.TakeFormat(100, rate, bits)) {
      model.Find("fact", size);
      const std::string count = model.Take(4);
      if (count.size() == 4) std::memcpy(&fact, count.data(), sizeof fact);
      model.Find("data", expected);
    }
  }
  unsigned long factValue = 4712;
  long long eyreValue = 4711;
  step.Finish(step.engine.WalkToG726WAVData(file, factValue, eyreValue), expected);
  Require(factValue == fact, "the fact value");
  Require(static_cast<unsigned long long>(eyreValue) == eyre, "the eyre value");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = corvo_test::ScratchPath("walked.wav");
  const std::string bytes = Input(data, size).RestWithRun();
  corvo_test::WriteFile(path, bytes);
  TFileHandler file;
  Require(file.Open(path.c_str(), OFM_READ, NLM_BINARY, false, false), "the file opens");
  if (bytes.size() >= 12) {
    for (const char* id : {"ALCH", "eyre", "fmt ", "fact", "data"}) Locate(file, bytes, id);
  }
  ReadRecord(file, bytes);
  WalkPcm(file, bytes);
  WalkGsm(file, bytes);
  WalkG726(file, bytes);
  return 0;
}
