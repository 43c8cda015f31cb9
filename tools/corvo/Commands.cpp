// What the command does with recordings, and what it says about it.

#include "tools/corvo/Commands.h"

#include <iomanip>
#include <iostream>

#include "engine/RecordingSeal.h"
#include "tools/corvo/Hex.h"
#include "tools/corvo/HostServices.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Metadata.h"
#include "tools/corvo/Recording.h"
#include "tools/corvo/Times.h"

namespace corvo {
namespace {

constexpr std::size_t kPropertyTextSize = 2048;
constexpr int kNameWidth = 12;

Outcome Say(const std::string& name, const std::string& text, Outcome outcome) {
  std::cout << name << ": " << text << '\n';
  return outcome;
}

Outcome SayRefused(const Recording& recording, const std::string& text) {
  return Say(recording.name, text + InUsersWords(recording, TakeReason()), Outcome::kRefused);
}

long long StartOf(const Recording& recording, const SealPlan& plan, const SealableAudio& audio) {
  if (plan.start) return *plan.start;
  if (audio.start) return *audio.start;
  throw InputError(recording.name, "doesn't tell its start time: give --start");
}

long long EndAfter(long long start, const Recording& recording, const SealPlan& plan,
                   const SealableAudio& audio) {
  if (plan.end && *plan.end < start) throw InputError(recording.name, "would end before its start");
  if (plan.end) return *plan.end;
  const long long duration = plan.duration.value_or(audio.duration);
  if (duration > kLatestTime - start) throw InputError(recording.name, "would never end");
  return start + duration;
}

// Texts may hold anything; a line stays a line.
std::string OneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    line += byte >= 0x20 && byte != 0x7F ? std::string(1, c) : EscapedByte(c);
  }
  return line;
}

void PrintLines(const Recording& recording) {
  std::cout << recording.name << ":\n";
  int number = 0;
  for (const Item& item : SealedItems(recording.record)) {
    std::cout << std::setw(4) << ++number << ' ' << std::left << std::setw(kNameWidth) << item.name
              << std::right << ' ' << OneLine(item.value) << '\n';
  }
}

void PrintRaw(const Recording& recording) {
  char text[kPropertyTextSize];
  GetRecordingProperty(recording.path.c_str(), text);
  std::cout << text << '\n';
}

}  // namespace

Outcome Seal(const std::string& name, const SealPlan& plan) {
  const Recording recording = FindRecording(name);
  if (IsSignaturePresent(recording.path.c_str())) {
    return Say(name, "sealed already", Outcome::kFine);
  }
  const SealableAudio audio = FindAudio(recording, plan.codec);
  long long start = StartOf(recording, plan, audio);
  long long end = EndAfter(start, recording, plan, audio);
  TakeReason();
  if (CreateSignature(recording.path.c_str(), audio.codec, &start, &end)) {
    return Say(name, "sealed", Outcome::kFine);
  }
  return SayRefused(recording, "NOT SEALED: ");
}

Outcome ShowStatus(const std::string& name) {
  const Recording recording = FindRecording(name);
  if (IsSignaturePresent(recording.path.c_str())) return Say(name, "sealed", Outcome::kFine);
  return Say(name, "not sealed", Outcome::kRefused);
}

Outcome ShowProperties(const std::string& name, bool raw) {
  const Recording recording = FindRecording(name);
  if (!IsSignaturePresent(recording.path.c_str())) {
    return Say(name, "not sealed: it has no properties", Outcome::kRefused);
  }
  if (raw) {
    PrintRaw(recording);
  } else {
    PrintLines(recording);
  }
  return Outcome::kFine;
}

}  // namespace corvo
