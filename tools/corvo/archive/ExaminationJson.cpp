// What an examination found, as members of JSON objects.

#include "tools/corvo/archive/ExaminationJson.h"

#include "engine/CorvoVerifiedRecording.h"
#include "tools/corvo/Hex.h"
#include "tools/corvo/Utf8.h"
#include "tools/corvo/archive/Names.h"

namespace corvo {
namespace {

bool IsComparedWithLayout(const RecordingExamination& found) {
  NA_INFO record = found.record;
  return found.hasRecord && found.verdict != RecordingVerdict::kUnreadable &&
         VerifyRecording().IsSignaturePresent(record);
}

}  // namespace

void AddName(Json& object, const std::string& name) {
  const bool escaped = !IsUtf8(name);
  object["name"] = escaped ? EscapeName(name) : name;
  object["escaped"] = escaped;
}

void AddDigests(Json& object, const RecordingExamination& found) {
  object["stored_digest"] =
      ValueOrNull(found.hasRecord, Hex(found.record.bySignature, kDigestSize));
  object["computed_digest"] = ValueOrNull(found.hasDigest, Hex(found.computedDigest, kDigestSize));
}

void AddAudio(Json& object, const RecordingExamination& found) {
  object["audio_offset"] = ValueOrNull(found.hasAudio, found.audioOffset);
  object["audio_size"] = ValueOrNull(found.hasAudio, found.audioSize);
  object["audio_missing"] = ValueOrNull(found.hasAudio, found.missingAudio);
}

void AddDepartures(Json& object, const RecordingExamination& found) {
  Json& list = object["departures"];
  if (!IsComparedWithLayout(found)) return;
  list = Json::array();
  for (int i = 0; i < found.departureCount; ++i) {
    const LayoutDeparture& departure = found.departures[i];
    list.push_back(
        {{"offset", departure.offset}, {"size", departure.size}, {"field", departure.field}});
  }
}

}  // namespace corvo
