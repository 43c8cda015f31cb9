// Shows how far a run has come, and when it will be done.

#include "tools/corvo/archive/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>

#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

constexpr std::chrono::milliseconds kRedraw{200};
constexpr char kEraseLine[] = "\r\x1b[K";

std::string Bytes(double bytes) {
  static constexpr const char* kUnits[] = {"B", "kB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  while (bytes >= 1000 && unit + 1 < std::size(kUnits)) {
    bytes /= 1000;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.*f %s", unit == 0 || bytes >= 100 ? 0 : 1, bytes,
                kUnits[unit]);
  return text;
}

// "3:07:09", "7:09"
std::string Duration(double seconds) {
  const auto whole = static_cast<unsigned long long>(seconds);
  char text[48];
  if (whole >= 3600) {
    std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", whole / 3600, whole / 60 % 60,
                  whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%llu:%02llu", whole / 60, whole % 60);
  }
  return text;
}

}  // namespace

Survey::Survey(const InputPlan& plan) {
  if (plan.list.empty()) m_thread = std::thread([this, plan] { Count(plan); });
}

Survey::~Survey() {
  m_mustStop = true;
  if (m_thread.joinable()) m_thread.join();
}

void Survey::Count(const InputPlan& plan) {
  try {
    Inputs inputs(plan);
    for (Input input; inputs.Next(input);) {
      if (m_mustStop) return;
      const auto state = StateOf(input.name);
      ++m_found.files;
      if (state) m_found.bytes += state->size;
    }
    m_isDone = true;
  } catch (const std::exception&) {  // then the time left stays unknown
  }
}

Progress::Progress(const InputPlan& plan) : m_sharesTerminal(::isatty(STDOUT_FILENO) != 0) {
  if (::isatty(STDERR_FILENO) != 0) m_survey.emplace(plan);
}

void Progress::Add(long long bytes, bool isKnown) {
  ++m_done.files;
  m_done.bytes += bytes;
  if (!isKnown) m_read += bytes;
}

std::string Progress::Line(double seconds) const {
  const Amount* const all = m_survey->Found();
  std::string line = std::to_string(m_done.files);
  if (all != nullptr) line += " of " + std::to_string(all->files);
  line += " files, " + Bytes(static_cast<double>(m_done.bytes));
  if (all != nullptr) line += " of " + Bytes(static_cast<double>(all->bytes));
  const double speed = static_cast<double>(m_read) / seconds;
  line += ", " + Bytes(speed) + "/s";
  if (all != nullptr && m_read > 0) {
    const double left = static_cast<double>(std::max(all->bytes - m_done.bytes, 0LL));
    line += ", " + Duration(left / speed) + " left";
  }
  return line;
}

void Progress::Draw() {
  if (!m_survey) return;
  const Clock::time_point now = Clock::now();
  if (now - m_drawn < kRedraw) return;
  const double seconds = std::chrono::duration<double>(now - m_started).count();
  std::fprintf(stderr, "%s%s", kEraseLine, Line(std::max(seconds, 0.001)).c_str());
  m_drawn = now;
  m_isShown = true;
}

void Progress::MakeRoom() {
  if (m_sharesTerminal) Erase();
}

void Progress::Erase() {
  if (!m_isShown) return;
  std::fputs(kEraseLine, stderr);
  m_isShown = false;
}

}  // namespace corvo
