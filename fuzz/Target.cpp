// The parts that targets share, and the host that they run in: it neither pauses nor waits for the
// disk, since neither is what is looked for.

#include "Target.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "platform/Win32Types.h"

extern "C" void Sleep(DWORD) {
}

extern "C" int fsync(int) {
  return 0;
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Not so: %s\n", what);
  std::abort();
}

void UseUtf8() {
  Require(std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr, "the system has C.UTF-8");
}

unsigned Input::Byte() {
  if (m_left == 0) return 0;
  --m_left;
  return *m_data++;
}

unsigned Input::Number() {
  const unsigned low = Byte();
  return low | Byte() << 8;
}

unsigned Input::UpTo(unsigned most) {
  return Number() % (most + 1);
}

unsigned long long Input::Long() {
  unsigned long long value = 0;
  for (int i = 0; i < 4; ++i) value = value << 16 | Number();
  return value;
}

std::string Input::Bytes(std::size_t count) {
  count = std::min(count, m_left);
  std::string bytes(reinterpret_cast<const char*>(m_data), count);
  m_data += count;
  m_left -= count;
  return bytes;
}

std::string Input::Text() {
  const std::string bytes = Bytes(Byte());
  return bytes.substr(0, bytes.find('\0'));
}

std::string Input::Rest() {
  return Bytes(m_left);
}

std::string Input::RestWithRun() {
  constexpr unsigned kLongest = 20'000;
  const bool hasRun = Byte() % 4 == 3;  // seldom: long files take their time
  if (!hasRun) return Rest();
  const unsigned count = UpTo(kLongest);
  const unsigned at = Number();
  const char byte = static_cast<char>(Byte());
  std::string bytes = Rest();
  return bytes.insert(std::min<std::size_t>(at, bytes.size()), count, byte);
}
