// Any bytes as a text file, read in lines of any length, against the definition of a line; and any
// text written and read back.

#include <algorithm>
#include <vector>

#include "LarkspurCommon/FileHandler.h"
#include "Target.h"
#include "TextLines.h"
#include "support/Scratch.h"

namespace {

// The end of the file shows only in a read that delivers nothing.
void ReadLines(const std::string& path, const std::string& bytes, Input lengths) {
  TFileHandler file;
  Require(file.Open(path.c_str(), OFM_READWRITE, NLM_TEXT, false, false), "the file opens");
  constexpr int kMostAsked = 100;  // a question for the position is dear
  int asked = 0;
  std::size_t at = 0;
  std::string expected;
  do {
    Require(!file.EndOfFile(), "no end before it was read");
    const DWORD length = lengths.Empty() ? 1024 : 2 + lengths.Byte();
    std::vector<char> buffer(length, 'x');  // of this size, for a sanitizer to guard
    DWORD count = 0;
    Require(file.Read(buffer.data(), length, &count), "a read works");
    expected = TakeLine(bytes, at, length - 1);
    Require(std::string(buffer.data(), count) == expected, "the line");
    Require(buffer[count] == '\0', "the terminator");
    if (asked++ < kMostAsked) Require(file.GetFilePosition() == at, "the position behind the line");
  } while (!expected.empty());
  Require(file.EndOfFile() && !file.FailedSinceOpen(), "the end, and no failure");
}

// A text of bytes, with CR LF for each LF.
std::string Written(const std::string& text) {
  std::string written;
  for (const char ch : text) written += ch == '\n' ? std::string("\r\n") : std::string(1, ch);
  return written;
}

void WriteText(const std::string& path, const std::string& bytes) {
  using namespace corvo_test;
  const std::string text = bytes.substr(0, bytes.find('\0'));
  TFileHandler file;
  Require(file.Open(path.c_str(), OFM_WRITE, NLM_TEXT, true, false), "the file opens for writing");
  Require(file.Write(text.c_str(), 0) == !text.empty(), "only an empty text isn't written");
  file.Close();
  Require(ReadFile(path) == Written(text), "each line feed is written as CR LF");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = corvo_test::ScratchPath("text");
  Input input(data, size);
  const std::string lengths = input.Text();
  const std::string bytes = input.RestWithRun();
  corvo_test::WriteFile(path, bytes);
  ReadLines(path, bytes,
            Input(reinterpret_cast<const std::uint8_t*>(lengths.data()), lengths.size()));
  WriteText(path, bytes);
  return 0;
}
