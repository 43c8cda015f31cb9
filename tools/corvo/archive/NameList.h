#ifndef TOOLS_CORVO_ARCHIVE_NAMELIST_H
#define TOOLS_CORVO_ARCHIVE_NAMELIST_H

#include <atomic>
#include <string>

#include "tools/corvo/archive/Descriptor.h"

namespace corvo {

// A name that was given. With a refusal it can't be used: it stands there as it was given.
struct GivenName {
  std::string name;
  std::string refusal;
  bool hidesOthers = false;  // names may be missing for the same reason
};

// Names from a file or, for "-", from standard input; also from a pipe that is still being
// written. Lines end at a newline, and those that begin with a backslash are unescaped; or names
// end at zero bytes and are taken as they are.
class NameList {
 public:
  // Throws InputError when the file can't be opened.
  NameList(const std::string& file, bool zeroSeparated);

  // False at the end, and once an interruption has been noted or Stop was called. A list that can't
  // be read further is the last name, refused.
  bool Next(GivenName& given);

  void Stop() { m_isStopped = true; }  // any thread

 private:
  enum class Fill { kMore, kEnd, kError };
  bool MustStop() const;
  bool Await(int descriptor) const;
  Fill ReadMore();
  bool TakeText(std::string& text);

  std::string m_file;
  bool m_zeroSeparated;
  Descriptor m_opened;
  std::string m_buffer;
  std::size_t m_at = 0;  // behind it m_buffer is still to be taken
  bool m_ended = false;
  std::atomic<bool> m_isStopped{false};
};

}  // namespace corvo

#endif
