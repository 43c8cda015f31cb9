// Records trace lines through the narrow output hook.

#include "support/TraceLog.h"

#include <cstdlib>
#include <mutex>

#include "LarkspurCommon/debug.h"

namespace corvo_test {
namespace {

std::mutex g_mutex;
std::vector<TraceLine> g_lines;

// "16/11 17:58:18.123 Recorder (27,2) 1a2b,b7f4d6c0,06789: text\n"
TraceLine Parse(const std::string& line) {
  const std::size_t open = line.find('(');
  const std::size_t comma = line.find(',', open);
  const std::size_t colon = line.find(": ", comma);
  if (colon == std::string::npos) return {0, '?', line};
  TraceLine parsed{};
  parsed.id = static_cast<unsigned>(std::strtoul(line.c_str() + open + 1, nullptr, 16));
  parsed.level = line[comma + 1];
  parsed.text = line.substr(colon + 2);
  if (!parsed.text.empty() && parsed.text.back() == '\n') parsed.text.pop_back();
  return parsed;
}

void Record(const char* line, unsigned int length) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_lines.push_back(Parse(std::string(line, length)));
}

}  // namespace

TraceLog::TraceLog() {
  Clear();
  InitDebug(nullptr, nullptr, nullptr);  // before the level: it enables every ID
  SetDebugFilterLevel(DFL_EVERYTHING);
  SetDebugHooks(nullptr, Record);
}

TraceLog::~TraceLog() {
  SetDebugHooks(nullptr, nullptr);
}

std::vector<TraceLine> TraceLog::Lines() const {
  const std::lock_guard<std::mutex> lock(g_mutex);
  return g_lines;
}

std::vector<std::string> TraceLog::Texts() const {
  std::vector<std::string> texts;
  for (const TraceLine& line : Lines()) texts.push_back(line.text);
  return texts;
}

std::vector<std::string> TraceLog::Texts(unsigned id, char level) const {
  std::vector<std::string> texts;
  for (const TraceLine& line : Lines()) {
    if (line.id == id && line.level == level) texts.push_back(line.text);
  }
  return texts;
}

void TraceLog::Clear() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_lines.clear();
}

}  // namespace corvo_test
