// Puts evidence in the order in which it is read: first what it means, then what it rests on.

#include "tools/corvo/evidence/EvidencePage.h"

#include "tools/corvo/Hex.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/evidence/Figures.h"
#include "tools/corvo/evidence/Visible.h"
#include "tools/corvo/evidence/Wording.h"

namespace corvo {
namespace {

constexpr std::size_t kDigestGroup = 8;  // hex digits that an eye can compare at once

std::string Grouped(std::string text) {
  for (std::size_t at = kDigestGroup; at < text.size(); at += kDigestGroup + 1) {
    text.insert(at, " ");
  }
  return text;
}

std::string Bytes(LONGLONG count) {
  return std::to_string(count) + " bytes";
}

Facts Identity(const RecordingEvidence& evidence) {
  Facts facts{{{"Name", VisibleOnPage(evidence.name)}}};
  if (evidence.modified.empty()) return facts;
  facts.rows.insert(facts.rows.end(), {{"Size", Bytes(evidence.found.fileSize)},
                                       {"Modification time (file system)", evidence.modified},
                                       {"Status change (file system)", evidence.statusChanged},
                                       {"SHA-256 of the file", evidence.sha256}});
  if (!evidence.startTime.empty()) {
    facts.rows.emplace_back("Start time (not covered)", evidence.startTime);
  }
  return facts;
}

std::vector<Block> DigestBlocks(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  const std::string statement = DigestStatement(evidence);
  if (!evidence.StoresDigest()) return {Paragraph{statement}};
  Facts facts{{{"Stored in the recording", Grouped(Hex(found.record.bySignature, kDigestSize))}}};
  if (found.hasDigest) {
    facts.rows.emplace_back("Computed from it now",
                            Grouped(Hex(found.computedDigest, kDigestSize)));
  }
  facts.rows.emplace_back(found.hasDigest ? "Comparison" : "Computed from it now", statement);
  return {facts};
}

std::vector<Block> Explanations(const RecordingEvidence& evidence) {
  std::vector<Block> blocks;
  for (const Explanation& explanation : evidence.explanations) {
    blocks.push_back(Paragraph{explanation.plain});
    blocks.push_back(Paragraph{"For the expert: " + explanation.expert + ".", Paragraph::kNote});
  }
  return blocks;
}

Table ChunkMap(const RecordingExamination& found) {
  Table table{{"Offset", "Size", "Part", "What the digest takes"}, {}};
  for (int i = 0; i < found.chunkCount; ++i) {
    const RecordingChunk& chunk = found.chunks[i];
    std::string size = std::to_string(chunk.declaredSize);
    const bool cut = i != 0 && chunk.presentSize < LONGLONG{chunk.declaredSize};
    if (cut) size += ", here " + std::to_string(chunk.presentSize);
    table.rows.push_back({std::to_string(chunk.offset), size,
                          '"' + Visible(std::string(chunk.id, sizeof chunk.id)) + '"',
                          DigestInputWord(chunk.taken)});
  }
  return table;
}

Table Departures(const RecordingExamination& found) {
  Table table{{"Offset", "Size", "What differs"}, {}};
  for (int i = 0; i < found.departureCount; ++i) {
    const LayoutDeparture& departure = found.departures[i];
    table.rows.push_back(
        {std::to_string(departure.offset), std::to_string(departure.size), departure.field});
  }
  return table;
}

Table Coverage(const std::vector<CoveredRange>& ranges) {
  Table table{{"From byte", "Bytes", "Seal", "What"}, {}};
  for (const CoveredRange& range : ranges) {
    table.rows.push_back({std::to_string(range.offset), std::to_string(range.size),
                          ProtectionWord(range.protection), range.what});
  }
  return table;
}

Table Metadata(const std::vector<Item>& items) {
  Table table{{"No.", "Field", "Meaning", "Value"}, {}};
  for (const Item& item : items) {
    table.rows.push_back({std::to_string(table.rows.size() + 1), item.name, ItemLabel(item),
                          VisibleOnPage(item.value)});
  }
  return table;
}

void AddStructure(const RecordingExamination& found, Part& part) {
  if (found.chunkCount != 0) {
    Section& section =
        part.sections.emplace_back(Section{"Parts of the file (chunk map)", {ChunkMap(found)}});
    if (found.moreChunks) section.blocks.push_back(Paragraph{"More parts follow."});
  }
  if (found.departureCount != 0) {
    part.sections.push_back({"Where it is not as sealing writes it", {Departures(found)}});
  }
}

Section CoverageSection(const RecordingEvidence& evidence) {
  const std::string title = CoverageTitle(evidence);
  const Paragraph note{CoverageNote(evidence), Paragraph::kNote};
  if (evidence.coverage.empty()) return {title, {note}};
  return {title, {DrawCoverage(evidence.coverage, title), note, Coverage(evidence.coverage)}};
}

Section SoundSection(const RecordingEvidence& evidence, bool asked) {
  Section section{"The sound", {}};
  if (evidence.waveform) section.blocks.push_back(DrawWaveform(*evidence.waveform));
  section.blocks.push_back(Paragraph{WaveformNote(asked), Paragraph::kNote});
  return section;
}

// What both the report and the inspection show.
void AddFindings(const RecordingEvidence& evidence, Part& part) {
  const RecordingExamination& found = evidence.found;
  if (found.verdict != RecordingVerdict::kOk) {
    part.sections.push_back({"What can be said about the cause", Explanations(evidence)});
  }
  part.sections.push_back({"The file", {Identity(evidence)}});
  part.sections.push_back({"Fingerprint of the seal (SHA-1)", DigestBlocks(evidence)});
}

void AddWarning(const RecordingEvidence& evidence, Part& part) {
  const std::string warning = Warning(evidence);
  if (!warning.empty()) part.lead.push_back(Paragraph{warning, Paragraph::kBad});
}

Part RecordingPart(const RecordingEvidence& evidence, bool waveformAsked) {
  const RecordingExamination& found = evidence.found;
  const bool good = found.verdict == RecordingVerdict::kOk;
  Part part{"Recording " + VisibleOnPage(evidence.name), {}, {}};
  part.lead.push_back(Paragraph{PlainVerdict(evidence), good ? Paragraph::kGood : Paragraph::kBad});
  AddWarning(evidence, part);
  std::string verdict = std::string("Verdict: ") + VerdictWord(found.verdict);
  if (!good) verdict += " (" + Visible(found.reason) + ")";
  part.lead.push_back(Paragraph{verdict});
  if (good && found.departureCount != 0) {
    part.lead.push_back(Paragraph{
        "Outside what the seal covers, this file is not as sealing writes it: see \"Where it "
        "is not as sealing writes it\" below."});
  }
  if (!evidence.IsConclusive()) return part;
  AddFindings(evidence, part);
  part.sections.push_back(CoverageSection(evidence));
  if (found.hasAudio) part.sections.push_back(SoundSection(evidence, waveformAsked));
  if (!evidence.metadata.empty()) {
    part.sections.push_back({"Details of the call", {Metadata(evidence.metadata)}});
  }
  AddStructure(found, part);
  return part;
}

std::vector<Block> Paragraphs(const std::vector<std::string>& texts) {
  std::vector<Block> blocks;
  blocks.reserve(texts.size());
  for (const std::string& text : texts) blocks.push_back(Paragraph{text});
  return blocks;
}

std::vector<Block> ToolBlocks(const ReportingTool& tool) {
  const auto known = [](const std::string& id) { return id.empty() ? "not recorded" : id; };
  Table answers{{"Method", "Message", "Result", "Computed"}, {}};
  for (const KnownAnswer& answer : tool.selfTest) {
    answers.rows.push_back({answer.algorithm, answer.message,
                            answer.Passed() ? "as published" : "WRONG", Grouped(answer.computed)});
  }
  return {
      Facts{{{"Program", "corvo " + tool.version},
             {"Build-id of the program", known(tool.programBuildId)},
             {"Build-id of its library", known(tool.libraryBuildId)}}},
      Paragraph{tool.Passed() ? "Before this report was written, the program computed these "
                                "digests whose values FIPS 180 publishes, all correctly."
                              : "The self-test FAILED: nothing in this report may be relied on.",
                tool.Passed() ? Paragraph::kPlain : Paragraph::kBad},
      answers};
}

Part AppendixPart(const EvidenceReport& report) {
  std::vector<Block> commands = Paragraphs(WithoutThisProgram());
  commands.push_back(Paragraph{CommandsWithoutThisProgram(), Paragraph::kCommand});
  return {"How this was found, and what it means",
          {},
          {{"Method", Paragraphs(Method())},
           {"Limits", Paragraphs(Limits())},
           {"Checking it without this program", commands},
           {"The program and its self-test", ToolBlocks(report.tool)}}};
}

Table Overview(const std::vector<RecordingEvidence>& recordings) {
  Table table{{"Verdict", "In words", "Recording"}, {}};
  for (const RecordingEvidence& evidence : recordings) {
    const std::string warning = Warning(evidence);
    table.rows.push_back({VerdictWord(evidence.found.verdict),
                          PlainVerdict(evidence) + (warning.empty() ? "" : ' ' + warning),
                          VisibleOnPage(evidence.name)});
  }
  return table;
}

}  // namespace

Page ReportPage(const EvidenceReport& report) {
  Page page{"Report on the seal of recordings", {}, {}};
  page.lead.push_back(
      Paragraph{"Written at " + report.time.text +
                (report.time.isGiven ? " (UTC, a time given by SOURCE_DATE_EPOCH)" : " (UTC)") +
                " by corvo " + report.tool.version + "."});
  if (!report.tool.Passed()) {
    page.lead.push_back(Paragraph{"The program's self-test failed: nothing here may be relied on.",
                                  Paragraph::kBad});
  }
  if (report.recordings.size() > 1) page.lead.push_back(Overview(report.recordings));
  for (const RecordingEvidence& evidence : report.recordings) {
    page.parts.push_back(RecordingPart(evidence, report.waveformAsked));
  }
  page.parts.push_back(AppendixPart(report));
  return page;
}

Page InspectionPage(const RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  Part part{VisibleOnPage(evidence.name) + ": " + VerdictWord(found.verdict), {}, {}};
  if (!found.reason.empty()) part.title += " (" + Visible(found.reason) + ")";
  if (evidence.IsConclusive()) {
    AddWarning(evidence, part);
    AddFindings(evidence, part);
    AddStructure(found, part);
    if (!evidence.metadata.empty()) {
      part.sections.push_back({"Record", {Metadata(evidence.metadata)}});
    }
  }
  return {{}, {}, {part}};
}

}  // namespace corvo
