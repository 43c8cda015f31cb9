// What a report says in words.

#include "tools/corvo/evidence/Wording.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "tools/corvo/evidence/Visible.h"

namespace corvo {
namespace {

constexpr int kMostNamed = 4;  // of the parts in a warning; the chunk map has them all

std::string Named(const RecordingExamination& found, const RecordingChunk& chunk) {
  const RecordingChunk* const end = found.chunks + found.chunkCount;
  const bool another = std::any_of(found.chunks, end, [&](const RecordingChunk& other) {
    return other.taken != DigestInput::kNothing &&
           std::equal(std::begin(chunk.id), std::end(chunk.id), std::begin(other.id));
  });
  return std::string(another ? "another " : "") + '"' +
         Visible(std::string(chunk.id, sizeof chunk.id)) + "\" (" +
         std::to_string(chunk.presentSize) + " bytes at offset " + std::to_string(chunk.offset) +
         ")";
}

}  // namespace

std::string PlainVerdict(const RecordingEvidence& evidence) {
  switch (evidence.found.verdict) {
    case RecordingVerdict::kOk:
      return "The seal is intact. What it covers (the sound, its length and the details of the "
             "call) has not been changed since the recording was last sealed.";
    case RecordingVerdict::kBroken:
      return "The seal is broken. What is found in this file and what its seal says don't agree: "
             "something that the seal covers, the seal itself, or the markings that lead to them "
             "were changed after sealing.";
    case RecordingVerdict::kUnsealed:
      return "This recording isn't marked as sealed.";
    case RecordingVerdict::kMalformed:
      return evidence.IsSealed()
                 ? "The seal can't be confirmed. The recording is marked as sealed, but it is not "
                   "built as sealing builds it: part of it is missing, was changed or was added."
                 : "This file is not a recording of this system, or so damaged that it can't be "
                   "recognised as one.";
    case RecordingVerdict::kUnreadable:
      return "This file could not be read. Nothing can be said about it.";
    case RecordingVerdict::kChanged:
      return "This file was being changed while it was examined. Nothing can be said about it; "
             "examine a copy that nobody writes to.";
  }
  return {};
}

std::string Warning(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  if (!evidence.DigestsAgree()) return {};
  std::string parts;
  int count = 0;
  for (int i = 0; i < found.chunkCount; ++i) {
    if (found.chunks[i].taken != DigestInput::kNothing || ++count > kMostNamed) continue;
    parts += (parts.empty() ? "" : ", ") + Named(found, found.chunks[i]);
  }
  if (count == 0) return {};
  if (count > kMostNamed || found.moreChunks) parts += ", and more";
  return "Warning: the file also holds what the seal doesn't cover: " + parts +
         ". Other programs may play or show that instead of what was sealed, or along with it.";
}

std::vector<std::string> Method() {
  return {
      "When a recording is sealed, a fingerprint of 20 bytes is computed over its sound and the "
      "details of the call by the published method SHA-1 (FIPS 180) and stored in the recording. "
      "Where a file holds such a fingerprint, and all that it is computed over was found, it was "
      "computed anew for this report from the file as it is now, and both were compared byte by "
      "byte. If as much as one bit that the seal covers were different, the fingerprints would "
      "differ.",
      "The fingerprint is taken over a header of 3170 bytes, built anew in a fixed layout from "
      "the recording's record (with the mark \"sealed\" and the fingerprint itself as zeros), its "
      "fact value and the length of its audio, followed by the audio.",
      "The files were opened for reading only and were not changed. The SHA-256 digest of each "
      "whole file that could be read identifies exactly what was examined: the same digest means "
      "the same content."};
}

std::vector<std::string> Limits() {
  return {
      "The fingerprint uses no secret key. Whoever may write to the file and knows the method can "
      "change the recording and seal it again; this check would then find the new seal intact. "
      "Of what it covers, and of nothing else in the file, an intact seal excludes accidental "
      "damage and changes by those who did not seal again. "
      "Who had access to the file since it was made must be shown by other means, such as "
      "custody records or a signed list of digests kept elsewhere.",
      "A file may hold further parts, such as a second sound, that can be added or changed without "
      "breaking the seal. This program finds the sealed ones as sealing does; a player may choose "
      "others. The report warns of such parts where it finds them.",
      "SHA-1 is no longer considered safe against someone who prepares two different recordings "
      "with the same fingerprint before sealing. No way is known to make a different recording "
      "for the fingerprint of a given one.",
      "The seal says nothing about what happened before sealing: who spoke, when the call took "
      "place, and whether the sound was complete. The times of the file come from the file "
      "system, whose modification time can be set to any value, and the start time in the "
      "recording is not covered by the seal."};
}

std::vector<std::string> WithoutThisProgram() {
  return {
      "For a file exactly as sealing wrote it these commands, as GNU/Linux systems have them, "
      "compute the fingerprint and show the stored one: both lines must begin with the same 40 "
      "digits. The command \"corvo recipe FILE\" prints such commands for any sealed recording, by "
      "its own positions."};
}

const char* CommandsWithoutThisProgram() {
  return "{ head -c 20 FILE; head -c 8 /dev/zero; tail -c +29 FILE | head -c 270\n"
         "  head -c 84 /dev/zero; tail -c +383 FILE; } | sha1sum\n"
         "tail -c +303 FILE | head -c 20 | od -An -v -tx1 | tr -d ' \\n'; echo";
}

const char* WaveformNote(bool asked) {
  return asked ? "Decoded as G.726 at 16 kbit/s because the user said that it is such audio. The "
                 "file can't tell: a recording sealed as GSM carries the same header, and its "
                 "picture would be noise."
               : "No picture of the sound is drawn. A sealed recording always declares G.726 "
                 "audio, even where it holds GSM audio, so the kind of sound can't be known from "
                 "the file. It is drawn when the user states it (--codec g726).";
}

std::string DigestStatement(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  if (!found.hasRecord) {
    return "The parts of the file lead to no record, and so to no stored fingerprint.";
  }
  if (!evidence.StoresDigest()) {
    return "The record that the parts of the file lead to holds no fingerprint.";
  }
  if (found.hasDigest) return evidence.DigestsAgree() ? "equal" : "DIFFERENT";
  if (!found.hasAudio)
    return "not computed for the verdict: the parts of the file lead to no audio of this system";
  if (found.missingAudio == 0)
    return "not computed for the verdict: the file is longer than any sealed recording";
  return "not computed for the verdict: the file lacks " + std::to_string(found.missingAudio) +
         " of its " + std::to_string(found.audioSize) + " bytes of audio";
}

std::string CoverageTitle(const RecordingEvidence& evidence) {
  return evidence.DigestsAgree() ? "What the seal covers in this file"
                                 : "What a seal would cover in this file";
}

std::string CoverageNote(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  if (found.moreChunks) {
    return "There is no map: the file has more than the " +
           std::to_string(RecordingExamination::kMostChunks) + " parts that are listed.";
  }
  if (!found.hasRecord || !found.hasAudio) {
    return std::string("There is no map: the parts of the file lead to no ") +
           (found.hasRecord ? "audio." : "record.");
  }
  if (evidence.coverage.empty()) {
    return "There is no map: the ways to record and audio read the same bytes as different parts.";
  }
  const std::string standing =
      evidence.DigestsAgree()   ? ""
      : evidence.StoresDigest() ? "The seal of this file could not be confirmed: the map doesn't "
                                  "show what is unchanged. "
                                : "This file holds no fingerprint: nothing in it is protected. ";
  return standing +
         "A change of \"covered\" bytes breaks an intact seal. \"Fixed\" ones lead to the others: "
         "a "
         "change of them does so too or makes the recording unrecognisable, unless it leads to the "
         "same bytes. What is \"not covered\" can be changed without breaking the seal.";
}

std::string ItemLabel(const Item& item) {
  if (item.name == "szMaker") return "Maker";
  if (item.name == "szDuration") return "Duration, written when sealing";
  if (item.name == "dwIPAddress") return "Network address";
  if (item.name == "dwSigned") return "Marked as sealed";
  const std::size_t digits = item.name.find_first_of("0123456789");
  return "Call detail " + std::to_string(std::stoi(item.name.substr(digits)));
}

const char* DigestInputWord(DigestInput taken) {
  switch (taken) {
    case DigestInput::kNothing:
      return "nothing";
    case DigestInput::kRebuilt:
      return "constants in its place";
    case DigestInput::kRecord:
      return "record without its seal";
    case DigestInput::kFactValue:
      return "its first four bytes";
    case DigestInput::kAudio:
      return "audio and its size";
  }
  return "";
}

}  // namespace corvo
