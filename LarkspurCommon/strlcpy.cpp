// Declared here anew and without the C library's headers: where those declare a function of this
// name and these parameters, a definition would be taken for that one's and lose its C++ name,
// which hosts link to.

#include "platform/Export.h"

CORVO_API unsigned int strlcpy(char* dst, char const* src, unsigned int size) noexcept;

unsigned int strlcpy(char* dst, char const* src, unsigned int size) noexcept {
  const auto length = static_cast<unsigned int>(__builtin_strlen(src));
  if (size == 0) return length;
  const unsigned int copied = length < size ? length : size - 1;
  __builtin_memcpy(dst, src, copied);
  dst[copied] = '\0';
  return length;
}
