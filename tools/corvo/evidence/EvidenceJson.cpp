// Evidence as JSON.

#include "tools/corvo/evidence/EvidenceJson.h"

#include <nlohmann/json.hpp>

#include "tools/corvo/Hex.h"
#include "tools/corvo/Utf8.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/evidence/Visible.h"
#include "tools/corvo/evidence/Wording.h"

namespace corvo {
namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

template <class Value>
Json If(bool known, const Value& value) {
  return known ? Json(value) : Json(nullptr);
}

Json Chunks(const RecordingExamination& found) {
  Json chunks = Json::array();
  for (int i = 0; i < found.chunkCount; ++i) {
    const RecordingChunk& chunk = found.chunks[i];
    chunks.push_back({{"id", Visible(std::string(chunk.id, sizeof chunk.id))},
                      {"offset", chunk.offset},
                      {"declaredSize", chunk.declaredSize},
                      {"presentSize", chunk.presentSize},
                      {"digestTakes", DigestInputWord(chunk.taken)}});
  }
  return chunks;
}

Json Departures(const RecordingExamination& found) {
  Json departures = Json::array();
  for (int i = 0; i < found.departureCount; ++i) {
    const LayoutDeparture& departure = found.departures[i];
    departures.push_back(
        {{"offset", departure.offset}, {"size", departure.size}, {"field", departure.field}});
  }
  return departures;
}

Json Explanations(const RecordingEvidence& evidence) {
  Json explanations = Json::array();
  for (const Explanation& explanation : evidence.explanations) {
    explanations.push_back({{"kind", explanation.kind},
                            {"computed", explanation.expert},
                            {"meaning", explanation.plain}});
  }
  return explanations;
}

Json Coverage(const RecordingEvidence& evidence) {
  Json ranges = Json::array();
  for (const CoveredRange& range : evidence.coverage) {
    ranges.push_back({{"offset", range.offset},
                      {"size", range.size},
                      {"seal", ProtectionWord(range.protection)},
                      {"what", range.what}});
  }
  return ranges;
}

Json Metadata(const RecordingEvidence& evidence) {
  Json items = Json::array();
  for (const Item& item : evidence.metadata) {
    items.push_back(
        {{"name", item.name}, {"meaning", ItemLabel(item)}, {"value", Visible(item.value)}});
  }
  return items;
}

Json WaveformObject(const RecordingEvidence& evidence) {
  if (!evidence.waveform) return nullptr;
  Json columns = Json::array();
  for (const Waveform::Column& column : evidence.waveform->columns) {
    columns.push_back({column.least, column.greatest});
  }
  return {{"codec", "g726"},
          {"samples", evidence.waveform->samples},
          {"secondsPerRow", evidence.waveform->secondsPerRow},
          {"columnsPerRow", Waveform::kColumnsPerRow},
          {"leastAndGreatest", columns}};
}

Json Audio(const RecordingExamination& found) {
  if (!found.hasAudio) return nullptr;
  return {{"offset", found.audioOffset},
          {"size", found.audioSize},
          {"missing", found.missingAudio},
          {"factValue", found.factValue}};
}

Json Recording(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  const bool escaped = !IsUtf8(evidence.name);
  return {{"name", escaped ? EscapeName(evidence.name) : evidence.name},
          {"escaped", escaped},
          {"verdict", VerdictWord(found.verdict)},
          {"reason", OrNull(Visible(found.reason))},
          {"statement", PlainVerdict(evidence)},
          {"explanations", Explanations(evidence)},
          {"size", If(!evidence.modified.empty(), found.fileSize)},
          {"modified", OrNull(evidence.modified)},
          {"statusChanged", OrNull(evidence.statusChanged)},
          {"sha256", OrNull(evidence.sha256)},
          {"startTime", OrNull(evidence.startTime)},
          {"storedDigest", If(evidence.StoresDigest(), Hex(found.record.bySignature, kDigestSize))},
          {"computedDigest", If(found.hasDigest, Hex(found.computedDigest, kDigestSize))},
          {"audio", Audio(found)},
          {"coverage", Coverage(evidence)},
          {"metadata", Metadata(evidence)},
          {"chunks", Chunks(found)},
          {"moreChunks", found.moreChunks},
          {"departures", Departures(found)},
          {"waveform", WaveformObject(evidence)}};
}

Json Tool(const ReportingTool& tool) {
  Json answers = Json::array();
  for (const KnownAnswer& answer : tool.selfTest) {
    answers.push_back({{"algorithm", answer.algorithm},
                       {"message", answer.message},
                       {"published", answer.published},
                       {"computed", answer.computed}});
  }
  return {{"version", tool.version},
          {"programBuildId", OrNull(tool.programBuildId)},
          {"libraryBuildId", OrNull(tool.libraryBuildId)},
          {"selfTestPassed", tool.Passed()},
          {"selfTest", answers}};
}

}  // namespace

std::string ReportJson(const EvidenceReport& report) {
  Json recordings = Json::array();
  for (const RecordingEvidence& evidence : report.recordings) {
    recordings.push_back(Recording(evidence));
  }
  const Json object = {{"time", report.time},
                       {"tool", Tool(report.tool)},
                       {"recordings", recordings},
                       {"waveform", WaveformNote(report.waveformAsked)},
                       {"method", Method()},
                       {"limits", Limits()},
                       {"withoutThisProgram", WithoutThisProgram()},
                       {"commands", CommandsWithoutThisProgram()}};
  return object.dump(2) + '\n';
}

std::string RecordingJson(const RecordingEvidence& evidence) {
  return Recording(evidence).dump() + '\n';
}

}  // namespace corvo
