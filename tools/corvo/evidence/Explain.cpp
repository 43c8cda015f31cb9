// Why a seal doesn't hold, as far as recomputing it under other readings can tell.

#include "tools/corvo/evidence/Explain.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "LarkspurCommon/LittleEndian.h"
#include "engine/CorvoVerifiedRecording.h"

namespace corvo {
namespace {

// Where sealing puts things: docs/sealed-format.md.
constexpr std::size_t kRiffSizeOffset = 4;
constexpr std::size_t kRecordOffset = 52;
constexpr std::size_t kFactValueOffset = 3158;
constexpr std::size_t kAudioSizeOffset = 3166;
constexpr DWORD kHeaderSize = 3170;
constexpr DWORD kRiffSizeWithoutAudio = 3162;

constexpr DWORD kSamplesPerByte = 4;  // of G.726 audio with 2 bits a sample
constexpr int kFewBytes = 4;          // of a digest; that the other 16 agree by chance is excluded

// What a digest is computed over.
struct Reading {
  const NA_INFO* record;
  DWORD factValue;
  LONGLONG audioOffset;
  DWORD audioSize;
};

std::string Bytes(LONGLONG count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

class Explainer {
 public:
  Explainer(int descriptor, const RecordingExamination& found)
      : m_descriptor(descriptor), m_found(found) {}

  std::vector<Explanation> Run() {
    if (m_found.hasAudio && m_found.hasRecord) {
      if (m_found.missingAudio == 0) CompareDigests();
      if (!m_matched && HoldsStoredDigest()) TryLengths();
      if (!m_matched && HoldsStoredDigest()) TryFactValues();
    }
    if (!m_matched) TrySealedLayout();
    if (!m_matched && m_found.missingAudio != 0) TellWhatIsMissing();
    return m_explanations;
  }

 private:
  void Add(const char* kind, const std::string& expert, const std::string& plain) {
    m_explanations.push_back({kind, expert, plain});
  }
  void AddMatch(const char* kind, const std::string& expert, const std::string& plain) {
    m_matched = true;
    Add(kind, expert, plain);
  }

  static bool HoldsDigest(const NA_INFO& record) {
    const unsigned char* const stored = record.bySignature;
    return std::any_of(stored, stored + kDigestSize, [](int byte) { return byte != 0; });
  }
  bool HoldsStoredDigest() const { return HoldsDigest(m_found.record); }

  bool Matches(const Reading& reading) const {
    const LONGLONG left = m_found.fileSize - reading.audioOffset;
    if (LONGLONG{reading.audioSize} > left) return false;
    unsigned char digest[kDigestSize];
    return VerifyRecording().ComputeDigest(m_descriptor, *reading.record, reading.factValue,
                                           reading.audioOffset, reading.audioSize, digest) &&
           std::memcmp(digest, reading.record->bySignature, sizeof digest) == 0;
  }

  Reading AsFound() const {
    return {&m_found.record, m_found.factValue, m_found.audioOffset, m_found.audioSize};
  }

  void CompareDigests() {
    if (!m_found.hasDigest) return;
    int differing = 0;
    for (std::size_t i = 0; i < kDigestSize; ++i) {
      differing += m_found.storedDigest[i] != m_found.computedDigest[i] ? 1 : 0;
    }
    if (differing == 0) {
      AddMatch("flag-cleared",
               "flag cleared only: the stored digest matches; the flag at offset " +
                   std::to_string(m_found.recordOffset + LONGLONG{offsetof(NA_INFO, dwSigned)}) +
                   " is " + std::to_string(m_found.record.dwSigned) + " instead of 1",
               "The recording is what was once sealed. Only the mark that says \"sealed\" was "
               "taken away or damaged.");
    } else if (differing <= kFewBytes) {
      AddMatch(
          "digest-damaged",
          "the stored digest itself is damaged: " + std::to_string(differing) +
              " of its 20 bytes differ from the computed one",
          "The seal itself was damaged, not what it protects: " + std::to_string(20 - differing) +
              " of its 20 bytes are exactly those that this very recording yields.");
    } else if (!HoldsStoredDigest()) {
      Add("digest-erased", "the stored digest is all zeros",
          "The place of the seal's fingerprint is empty. Without it nothing can be said about "
          "changes.");
    }
  }

  // The lengths that other places of the file speak for.
  std::vector<LONGLONG> OtherLengths() const {
    const LONGLONG there = m_found.fileSize - m_found.audioOffset;
    const LONGLONG riff = m_found.chunkCount == 0 ? 0 : m_found.chunks[0].declaredSize;
    const LONGLONG size = m_found.audioSize;
    std::vector<LONGLONG> lengths;
    for (const LONGLONG length : {riff - LONGLONG{kRiffSizeWithoutAudio}, there,
                                  LONGLONG{m_found.factValue / kSamplesPerByte}, size - 1}) {
      const bool known = std::find(lengths.begin(), lengths.end(), length) != lengths.end();
      if (length >= 0 && length <= there && length != size && !known) lengths.push_back(length);
    }
    return lengths;
  }

  void TryLengths() {
    for (const LONGLONG length : OtherLengths()) {
      Reading reading = AsFound();
      reading.audioSize = static_cast<DWORD>(length);
      if (!Matches(reading)) continue;
      return AddLength(length - LONGLONG{m_found.audioSize});
    }
  }

  void AddLength(LONGLONG change) {
    if (m_found.missingAudio != 0) {
      AddMatch("audio-size-raised",
               "digest matches over the audio that is there: only its declared size is " +
                   Bytes(-change) + " too large",
               "Nothing is missing: the sealed sound is complete. Only the number in the file "
               "that says how long it is was changed.");
    } else if (change < 0) {
      AddMatch("trailing-ignored",
               "digest matches once the last " + Bytes(-change) + " of the audio are ignored",
               "The sealed sound is complete and unchanged. " + Bytes(-change) +
                   " were added behind it and counted in.");
    } else {
      AddMatch("trailing-counted",
               "digest matches once " + Bytes(change) + " more of the file are counted as audio",
               "The sealed sound is complete and unchanged. Only the number in the file that says "
               "how long it is was changed: it hides the last " +
                   Bytes(change) + ".");
    }
  }

  void TryFactValues() {
    const DWORD size = m_found.audioSize;
    for (const DWORD value : {DWORD{size * kSamplesPerByte}, DWORD{0}, size}) {
      Reading reading = AsFound();
      reading.factValue = value;
      if (value == m_found.factValue || !Matches(reading)) continue;
      return AddMatch("fact-changed",
                      "digest matches once the fact value at offset " +
                          std::to_string(m_found.factOffset) + " is " + std::to_string(value) +
                          " instead of " + std::to_string(m_found.factValue),
                      "Sound and details are what was sealed. Only a technical number, the count "
                      "of sound samples, was changed.");
    }
  }

  // Reads record, fact value and audio where sealing puts them, whatever the chunks say.
  void TrySealedLayout() {
    unsigned char header[kHeaderSize];
    if (::pread(m_descriptor, header, sizeof header, 0) != ssize_t{sizeof header}) return;
    NA_INFO record;
    std::memcpy(&record, header + kRecordOffset, sizeof record);
    if (!HoldsDigest(record)) return;
    const DWORD sizes[] = {LoadLe32(header + kAudioSizeOffset),
                           LoadLe32(header + kRiffSizeOffset) - kRiffSizeWithoutAudio,
                           static_cast<DWORD>(m_found.fileSize - LONGLONG{kHeaderSize})};
    for (const DWORD* size = std::begin(sizes); size != std::end(sizes); ++size) {
      if (std::find(std::begin(sizes), size, *size) != size) continue;  // tried already
      if (!Matches({&record, LoadLe32(header + kFactValueOffset), kHeaderSize, *size})) continue;
      return AddMatch("header-changed",
                      "digest matches when record, fact value and " + Bytes(*size) +
                          " of audio are read where sealing puts them: only the header around "
                          "them was changed",
                      "Sound and details are what was sealed. Only technical markings around "
                      "them were changed, so that the file can no longer be read by them.");
    }
  }

  void TellWhatIsMissing() {
    const std::string missing = Bytes(m_found.missingAudio);
    Add("audio-cut",
        "audio cut short by " + missing + ": " + std::to_string(m_found.audioSize) +
            " are declared, " + std::to_string(m_found.audioSize - m_found.missingAudio) +
            " are there",
        "The end of the sound is missing: " + missing +
            " fewer than the file itself declares. Whether the rest is unchanged can't be "
            "told, since the seal covers the whole.");
  }

  int m_descriptor;
  const RecordingExamination& m_found;
  bool m_matched = false;  // some reading yields the stored digest, so that the cause is known
  std::vector<Explanation> m_explanations;
};

}  // namespace

std::vector<Explanation> Explain(int descriptor, const RecordingExamination& found) {
  const bool explicable = found.verdict == RecordingVerdict::kBroken ||
                          found.verdict == RecordingVerdict::kUnsealed ||
                          found.verdict == RecordingVerdict::kMalformed;
  if (!explicable) return {};
  return Explainer(descriptor, found).Run();
}

}  // namespace corvo
