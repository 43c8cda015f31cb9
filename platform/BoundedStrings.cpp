// The bounded text functions and fopen_s, each of which a host may replace.

#include <errno.h>
#include <stdarg.h>
#include <string.h>

#include <algorithm>
#include <string>

#include "platform/Win32Compat.h"

namespace {

constexpr size_t kWholeText = _TRUNCATE - 1;  // as a count: more than any text has

template <class Char>
int Emptied(Char* out, int error) {
  out[0] = Char();
  return error;
}

// At most `count` characters of `text`, and a terminator, into `out`; all that fits for _TRUNCATE.
template <class Char>
int CopyBounded(Char* out, size_t size, const Char* text, size_t count) {
  using Traits = std::char_traits<Char>;
  if (out == nullptr || size == 0) return EINVAL;
  if (text == nullptr) return Emptied(out, EINVAL);
  // Looks no further than it must: a text that is copied by count needn't be terminated.
  const size_t look = std::min(count, size);
  const Char* const end = Traits::find(text, look, Char());
  const size_t length = end == nullptr ? look : static_cast<size_t>(end - text);
  const bool fits = length < size;
  if (!fits && count != _TRUNCATE) return Emptied(out, ERANGE);
  const size_t copied = fits ? length : size - 1;
  Traits::move(out, text, copied);
  out[copied] = Char();
  return fits ? 0 : STRUNCATE;
}

}  // namespace

int strcpy_s(char* out, size_t size, const char* text) {
  return CopyBounded(out, size, text, kWholeText);
}

int strcat_s(char* out, size_t size, const char* text) {
  if (out == nullptr || size == 0) return EINVAL;
  const size_t length = ::strnlen(out, size);
  // An output that isn't terminated leaves no room, which CopyBounded refuses.
  const int error = CopyBounded(out + length, size - length, text, kWholeText);
  return error == 0 ? 0 : Emptied(out, error);
}

int strncpy_s(char* out, size_t size, const char* text, size_t count) {
  return CopyBounded(out, size, text, count);
}

int wcsncpy_s(wchar_t* out, size_t size, const wchar_t* text, size_t count) {
  return CopyBounded(out, size, text, count);
}

int sprintf_s(char* out, size_t size, const char* format, ...) {
  if (out == nullptr || size == 0) return -1;
  va_list arguments;
  va_start(arguments, format);
  const int length = format == nullptr ? -1 : ::vsnprintf(out, size, format, arguments);
  va_end(arguments);
  return length >= 0 && static_cast<size_t>(length) < size ? length : Emptied(out, -1);
}

int fopen_s(FILE** file, const char* path, const char* mode) {
  if (file == nullptr) return EINVAL;
  *file = nullptr;
  if (path == nullptr || mode == nullptr) return EINVAL;
  *file = ::fopen(path, mode);
  return *file == nullptr ? errno : 0;
}
