#ifndef TOOLS_CORVO_HEX_H
#define TOOLS_CORVO_HEX_H

#include <cstddef>
#include <string>

namespace corvo {

// Two lower-case digits a byte, with nothing between.
std::string Hex(const unsigned char* bytes, std::size_t size);

// "\x0a", as a byte stands in a text that can't hold it.
std::string EscapedByte(char byte);

}  // namespace corvo

#endif
