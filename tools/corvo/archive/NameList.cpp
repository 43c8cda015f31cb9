// Reads lists of names.

#include "tools/corvo/archive/NameList.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

constexpr std::size_t kReadSize = 65536;
constexpr int kLookMilliseconds = 200;  // whether to stop

GivenName FromLine(const std::string& line) {
  if (line.empty() || line[0] != '\\') return {line, {}};
  const std::optional<std::string> name = UnescapeName(line.substr(1));
  if (!name) return {line, "the line begins with a backslash, but is not an escaped name"};
  return {*name, {}};
}

}  // namespace

NameList::NameList(const std::string& file, bool zeroSeparated)
    : m_file(file), m_zeroSeparated(zeroSeparated) {
  if (file == "-") return;
  m_opened = Descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!m_opened.IsOpen()) throw InputError(NameInLine(file), ErrorText(errno));
}

bool NameList::MustStop() const {
  return m_isStopped || NotedSignal() != 0;
}

// Waits for input. False: stopped.
bool NameList::Await(int descriptor) const {
  pollfd wanted{descriptor, POLLIN, 0};
  while (!MustStop()) {
    if (::poll(&wanted, 1, kLookMilliseconds) > 0) return true;
  }
  return false;
}

NameList::Fill NameList::ReadMore() {
  const int descriptor = m_opened.IsOpen() ? m_opened.Number() : STDIN_FILENO;
  if (!Await(descriptor)) return Fill::kEnd;
  m_buffer.erase(0, std::exchange(m_at, 0));
  const std::size_t old = m_buffer.size();
  m_buffer.resize(old + kReadSize);
  const ssize_t count = ::read(descriptor, &m_buffer[old], kReadSize);
  m_buffer.resize(old + static_cast<std::size_t>(count > 0 ? count : 0));
  if (count < 0) return Fill::kError;
  return count == 0 ? Fill::kEnd : Fill::kMore;
}

// The rest of the buffer holds no whole name: at the list's end it is one without a separator.
bool NameList::TakeText(std::string& text) {
  text = m_buffer.substr(m_at);
  m_at = m_buffer.size();
  return !text.empty() && !MustStop();
}

bool NameList::Next(GivenName& given) {
  if (m_ended) return false;
  const char separator = m_zeroSeparated ? '\0' : '\n';
  std::size_t stop = m_buffer.find(separator, m_at);
  while (stop == std::string::npos) {
    const std::size_t searched = m_buffer.size() - m_at;
    const Fill fill = ReadMore();
    m_ended = fill != Fill::kMore;
    if (fill == Fill::kError) {
      given = {m_file, "the list of names can't be read further: " + ErrorText(errno), true};
      return true;
    }
    if (m_ended) {
      std::string text;
      if (!TakeText(text)) return false;
      given = m_zeroSeparated ? GivenName{text, {}} : FromLine(text);
      return true;
    }
    stop = m_buffer.find(separator, m_at + searched);
  }
  const std::string text = m_buffer.substr(m_at, stop - m_at);
  m_at = stop + 1;
  given = m_zeroSeparated ? GivenName{text, {}} : FromLine(text);
  return true;
}

}  // namespace corvo
