#ifndef LARKSPURCOMMON_INPLACETEXT_H
#define LARKSPURCOMMON_INPLACETEXT_H

#include <string>

// Gives a file of lines, open for writing, other lines in the place of what it holds. It isn't cut
// first: until the new lines stand, a full disk or a crash would leave none. So the new text is
// written over the old one, as long as that, before the file is cut: line ends take the place of
// what is to go, and empty lines mean nothing to whoever reads the file meanwhile. False, and
// errno: it couldn't all be done; where the disk was full, the file is as it was, if the file
// system can keep room. The descriptor's position isn't used. Throws std::bad_alloc.
bool ReplaceInPlace(int descriptor, std::string text);

#endif
