#ifndef FUZZ_TARGET_H
#define FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>
#include <string>

// What every fuzz target is made of. A target is one source with LLVMFuzzerTestOneInput: libFuzzer
// calls it with bytes of its own making, Replay.cpp with those of files.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process with `what` on the standard error stream unless it holds.
void Require(bool holds, const char* what);

// Makes text conversions work in UTF-8, for the whole process.
void UseUtf8();

// The bytes of an input, taken from the front as what a target needs. Past the end all is zero and
// empty, so every input means something.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

  bool Empty() const { return m_left == 0; }
  unsigned Byte();                       // 0 to 255
  unsigned Number();                     // two bytes, the least first
  unsigned UpTo(unsigned most);          // 0 to `most`, which is at most 65535; two bytes
  unsigned long long Long();             // eight bytes
  std::string Bytes(std::size_t count);  // fewer where there are no more
  std::string Text();                    // a byte tells its length; ends at its first NUL
  std::string Rest();
  // The rest, now and then with a run of one byte put in: so small inputs make files that no cache
  // holds.
  std::string RestWithRun();

 private:
  const std::uint8_t* m_data;
  std::size_t m_left;
};

#endif
