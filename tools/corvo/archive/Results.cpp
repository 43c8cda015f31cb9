// The lines that a verification writes, and reads back from its journal.

#include "tools/corvo/archive/Results.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/ExaminationJson.h"
#include "tools/corvo/archive/Names.h"

namespace corvo {
namespace {

constexpr char kResultStart[] = "{\"input\":";
constexpr unsigned long long kMostInputs = 1ULL << 62;

void AddState(Json& object, const std::optional<FileState>& state) {
  const FileState known = state.value_or(FileState{});
  object["size"] = ValueOrNull(state.has_value(), known.size);
  object["inode"] = ValueOrNull(state.has_value(), known.inode);
  object["modified"] = ValueOrNull(state.has_value(), UtcText(known.modified));
  object["status_changed"] = ValueOrNull(state.has_value(), UtcText(known.statusChanged));
}

// The record's text may be any bytes.
std::string DurationText(const NA_INFO& record) {
  return EscapeName({record.szDuration, ::strnlen(record.szDuration, sizeof record.szDuration)});
}

void AddOptions(Json& object, const RunOptions& options) {
  const Shard& shard = options.shard;
  object["shard"] = shard.IsEverything() ? Json() : Json(shard.Text());
  object["strict"] = options.strict;
  object["through_host_call"] = options.throughHostCall;
}

RunOptions ReadOptions(const Json& object) {
  RunOptions options;
  const Json& shard = object.at("shard");
  if (!shard.is_null()) options.shard = ParseShard(shard.get<std::string>());
  options.strict = object.at("strict").get<bool>();
  options.throughHostCall = object.at("through_host_call").get<bool>();
  return options;
}

std::string ReadName(const Json& object) {
  std::string text = object.at("name").get<std::string>();
  if (!object.at("escaped").get<bool>()) return text;
  const std::optional<std::string> name = UnescapeName(text);
  if (!name) throw InputError("the name is not an escaped one");
  return *name;
}

RecordingVerdict ReadVerdict(const Json& object) {
  const auto verdict = ParseVerdict(object.at("verdict").get<std::string>());
  if (!verdict) throw InputError("there is no such verdict");
  return *verdict;
}

std::string StateText(const Json& size, const Json& inode, const std::string& modified,
                      const std::string& statusChanged) {
  return size.dump() + ' ' + inode.dump() + ' ' + modified + ' ' + statusChanged;
}

// A count that can be counted on: negative ones would wrap, and so would the one behind the last.
unsigned long long ReadCount(const Json& count) {
  if (!count.is_number_unsigned() || count.get<unsigned long long>() > kMostInputs) {
    throw InputError("the count is no count of inputs");
  }
  return count.get<unsigned long long>();
}

Result ReadResult(const Json& object, const std::string& line) {
  Result result;
  result.input = ReadCount(object.at("input"));
  result.name = ReadName(object);
  result.verdict = ReadVerdict(object);
  const Json& reason = object.at("reason");
  if (!reason.is_null()) result.reason = reason.get<std::string>();
  const Json& size = object.at("size");
  if (!size.is_null()) {
    result.size = size.get<long long>();
    result.state = StateText(size, object.at("inode"), object.at("modified").get<std::string>(),
                             object.at("status_changed").get<std::string>());
  }
  result.json = line;
  return result;
}

std::uint64_t ReadHash(const Json& object) {
  if (object.is_null()) return 0;
  const std::string text = object.get<std::string>();
  std::uint64_t hash = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, hash, 16);
  if (error != std::errc() || stop != end) throw InputError("the hash is not a number");
  return hash;
}

Json HashText(std::uint64_t hash) {
  if (hash == 0) return {};
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
  return text;
}

RunTotals ReadTotals(const Json& object) {
  RunTotals totals;
  totals.options = ReadOptions(object);
  totals.seen.count = ReadCount(object.at("all_inputs"));
  totals.seen.names = ReadHash(object.at("names_hash"));
  return totals;
}

ParsedLine ReadLine(const Json& object, const std::string& line) {
  if (object.contains("input")) {
    return {ParsedLine::Kind::kResult, ReadResult(object, line), {}};
  }
  if (object.contains("totals")) return {ParsedLine::Kind::kTotals, {}, ReadTotals(object)};
  return {ParsedLine::Kind::kOptions, {}, {ReadOptions(object.at("journal")), {}, {}}};
}

std::string Plural(unsigned long long count) {
  return count == 1 ? " input" : " inputs";
}

}  // namespace

std::string StateText(const FileState& state) {
  return StateText(state.size, state.inode, UtcText(state.modified), UtcText(state.statusChanged));
}

std::string TextLine(const Result& result) {
  const std::string name = NameInLine(result.name);
  if (result.verdict == RecordingVerdict::kOk) return name + ": OK";
  return name + ": FAILED (" + VerdictWord(result.verdict) + ": " + result.reason + ')';
}

std::string TextLine(const RunTotals& totals) {
  const Shard& shard = totals.options.shard;
  const unsigned long long checked = totals.counts.All();
  const std::string all = std::to_string(totals.seen.count) + Plural(totals.seen.count);
  std::string text = checked == totals.seen.count && shard.IsEverything()
                         ? all
                         : std::to_string(checked) + " of " + all;
  if (!shard.IsEverything()) text += " (shard " + shard.Text() + ')';
  return text + ": " + totals.counts.Text();
}

std::string JsonLine(const Result& result, const std::optional<FileState>& state,
                     const RecordingExamination& found) {
  Json object;
  object["input"] = result.input;
  AddName(object, result.name);
  object["verdict"] = VerdictWord(result.verdict);
  object["reason"] = ValueOrNull(!result.reason.empty(), result.reason);
  AddState(object, state);
  AddDigests(object, found);
  AddAudio(object, found);
  object["duration"] = ValueOrNull(found.hasRecord, DurationText(found.record));
  AddDepartures(object, found);
  return object.dump();
}

std::string JsonLine(const RunTotals& totals) {
  Json counts;
  counts["inputs"] = totals.counts.All();
  for (const RecordingVerdict verdict : kVerdicts) {
    counts[VerdictWord(verdict)] = totals.counts.Of(verdict);
  }
  Json object;
  object["totals"] = counts;
  object["all_inputs"] = totals.seen.count;
  object["names_hash"] = HashText(totals.seen.names);
  AddOptions(object, totals.options);
  return object.dump();
}

std::string JsonLine(const RunOptions& options) {
  Json object;
  AddOptions(object["journal"], options);
  return object.dump();
}

std::optional<ParsedLine> ParseJsonLine(const std::string& line) {
  const Json object = Json::parse(line, nullptr, false);
  if (!object.is_object()) return std::nullopt;
  try {
    return ReadLine(object, line);
  } catch (const Json::exception&) {
    return std::nullopt;
  } catch (const InputError&) {
    return std::nullopt;
  }
}

unsigned long long InputOf(const std::string& jsonLine) {
  constexpr std::size_t kStart = sizeof kResultStart - 1;
  unsigned long long number = 0;
  if (jsonLine.compare(0, kStart, kResultStart) != 0) return 0;
  std::from_chars(jsonLine.data() + kStart, jsonLine.data() + jsonLine.size(), number);
  return number > kMostInputs ? 0 : number;
}

}  // namespace corvo
