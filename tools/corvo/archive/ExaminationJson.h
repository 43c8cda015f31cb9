#ifndef TOOLS_CORVO_ARCHIVE_EXAMINATIONJSON_H
#define TOOLS_CORVO_ARCHIVE_EXAMINATIONJSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "engine/Examination.h"

namespace corvo {

// The members that every JSON object about a recording shares, in their order. What isn't known is
// null.

using Json = nlohmann::ordered_json;

template <class Value>
Json ValueOrNull(bool known, const Value& value) {
  return known ? Json(value) : Json();
}

// "name": as it is or, where "escaped" is true because it is no UTF-8, as EscapeName gives it.
void AddName(Json& object, const std::string& name);

// "stored_digest", as the record holds it, and "computed_digest".
void AddDigests(Json& object, const RecordingExamination& found);

// "audio_offset", "audio_size" and "audio_missing".
void AddAudio(Json& object, const RecordingExamination& found);

// "departures": null unless the recording is marked as sealed and was compared with the layout.
void AddDepartures(Json& object, const RecordingExamination& found);

}  // namespace corvo

#endif
