#ifndef TOOLS_CORVO_ARCHIVE_NAMES_H
#define TOOLS_CORVO_ARCHIVE_NAMES_H

#include <optional>
#include <string>

namespace corvo {

// File names are bytes. These write any of them as one line of text, in the manner of the checksum
// tools, and read it back exactly.

// Whether a name holds a backslash, a control character or bytes that are no UTF-8.
bool NeedsEscaping(const std::string& bytes);

// `\\`, `\n`, `\r` and otherwise `\xHH` for what needs it. Other names stay as they are.
std::string EscapeName(const std::string& bytes);

// Nothing when a backslash begins none of these.
std::optional<std::string> UnescapeName(const std::string& text);

// The name as a line begins with it: a backslash in front says that it is escaped.
std::string NameInLine(const std::string& bytes);

}  // namespace corvo

#endif
