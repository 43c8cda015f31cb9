// Evidence as JSON.

#include "tools/corvo/evidence/EvidenceJson.h"

#include "tools/corvo/archive/ExaminationJson.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/evidence/Visible.h"
#include "tools/corvo/evidence/Wording.h"

namespace corvo {
namespace {

Json TextOrNull(const std::string& text) {
  return ValueOrNull(!text.empty(), text);
}

Json Chunks(const RecordingExamination& found) {
  Json chunks = Json::array();
  for (int i = 0; i < found.chunkCount; ++i) {
    const RecordingChunk& chunk = found.chunks[i];
    chunks.push_back({{"id", Visible(std::string(chunk.id, sizeof chunk.id))},
                      {"offset", chunk.offset},
                      {"declared_size", chunk.declaredSize},
                      {"present_size", chunk.presentSize},
                      {"digest_takes", DigestInputWord(chunk.taken)}});
  }
  return chunks;
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
          {"seconds_per_row", evidence.waveform->secondsPerRow},
          {"columns_per_row", Waveform::kColumnsPerRow},
          {"least_and_greatest", columns}};
}

Json Recording(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  Json object;
  AddName(object, evidence.name);
  object["verdict"] = VerdictWord(found.verdict);
  object["reason"] = TextOrNull(Visible(found.reason));
  object["statement"] = PlainVerdict(evidence);
  object["warning"] = TextOrNull(Warning(evidence));
  object["explanations"] = Explanations(evidence);
  object["size"] = ValueOrNull(!evidence.modified.empty(), found.fileSize);
  object["modified"] = TextOrNull(evidence.modified);
  object["status_changed"] = TextOrNull(evidence.statusChanged);
  object["sha256"] = TextOrNull(evidence.sha256);
  object["start_time"] = TextOrNull(evidence.startTime);
  AddDigests(object, found);
  object["comparison"] = ValueOrNull(evidence.IsConclusive(), DigestStatement(evidence));
  AddAudio(object, found);
  object["fact_value"] = ValueOrNull(found.hasAudio, found.factValue);
  object["coverage"] = Coverage(evidence);
  object["coverage_note"] = ValueOrNull(evidence.IsConclusive(), CoverageNote(evidence));
  object["metadata"] = Metadata(evidence);
  object["chunks"] = Chunks(found);
  object["more_chunks"] = found.moreChunks;
  AddDepartures(object, found);
  object["waveform"] = WaveformObject(evidence);
  return object;
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
          {"program_build_id", TextOrNull(tool.programBuildId)},
          {"library_build_id", TextOrNull(tool.libraryBuildId)},
          {"self_test_passed", tool.Passed()},
          {"self_test", answers}};
}

}  // namespace

std::string ReportJson(const EvidenceReport& report) {
  Json recordings = Json::array();
  for (const RecordingEvidence& evidence : report.recordings) {
    recordings.push_back(Recording(evidence));
  }
  const Json object = {{"time", report.time.text},
                       {"time_given", report.time.isGiven},
                       {"tool", Tool(report.tool)},
                       {"recordings", recordings},
                       {"waveform", WaveformNote(report.waveformAsked)},
                       {"method", Method()},
                       {"limits", Limits()},
                       {"without_this_program", WithoutThisProgram()},
                       {"commands", CommandsWithoutThisProgram()}};
  return object.dump(2) + '\n';
}

std::string RecordingJson(const RecordingEvidence& evidence) {
  return Recording(evidence).dump() + '\n';
}

}  // namespace corvo
