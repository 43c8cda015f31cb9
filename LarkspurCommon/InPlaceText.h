#ifndef LARKSPURCOMMON_INPLACETEXT_H
#define LARKSPURCOMMON_INPLACETEXT_H

#include <string>

// A file of lines that is rewritten in place must not be cut first: until the new lines stand, a
// full disk or a crash would leave none. So the new text is written over the old one, as long as
// that, before the file is cut: line ends take the place of what is to go, and empty lines mean
// nothing to whoever reads the file meanwhile.
inline std::string& PadWithLineEnds(std::string& text, std::size_t size) {
  if (text.size() < size) text.resize(size, '\n');
  return text;
}

#endif
