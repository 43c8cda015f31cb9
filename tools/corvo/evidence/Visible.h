#ifndef TOOLS_CORVO_EVIDENCE_VISIBLE_H
#define TOOLS_CORVO_EVIDENCE_VISIBLE_H

#include <string>

namespace corvo {

// Text from a file as valid UTF-8 that shows all it holds: what would be invisible, reorder the
// text around it or isn't UTF-8 becomes "\x0a", byte by byte, and a backslash "\\".
std::string Visible(const std::string& bytes);

// The same for pages, which drop spaces at either end or behind another: those become "\x20".
std::string VisibleOnPage(const std::string& bytes);

}  // namespace corvo

#endif
