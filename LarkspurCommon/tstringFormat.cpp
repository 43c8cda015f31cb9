// printf-style formatting and the system's error texts. Neither throws to its caller.

#include <cxxabi.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "LarkspurCommon/Contain.h"
#include "LarkspurCommon/tstring.h"

namespace {

// A pass uses its arguments up, so each gets a copy of its own.
__attribute__((format(printf, 3, 0))) int PrintPass(char* out, std::size_t size, char const* format,
                                                    va_list args) {
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(out, size, format, copy);
  va_end(copy);
  return length;
}

// What the first pass makes of a text. Nearly all fit; longer ones get the exact size, since
// counting overflow costs microseconds for each kilobyte.
struct ShortText {
  char text[4096];
  bool isLeft = false;  // there was no memory for the rest
};

// Sets `out` to the formatted text only after the last pass, as arguments may point into it. A
// negative result is vsnprintf's refusal.
__attribute__((format(printf, 3, 0))) int PrintText(std::string& out, ShortText& first,
                                                    char const* format, va_list args) {
  const int length = PrintPass(first.text, sizeof first.text, format, args);
  if (length < 0) return length;
  const auto size = static_cast<std::size_t>(length);
  if (size < sizeof first.text) {
    out.assign(first.text, size);
    return length;
  }
  std::string text;
  first.isLeft = true;
  text.resize(size);
  first.isLeft = false;
  const int again = PrintPass(text.data(), size + 1, format, args);
  if (again < 0) return again;
  text.resize(std::min(size, static_cast<std::size_t>(again)));  // the locale may have changed
  out.swap(text);
  return again;
}

template <class Work>
void GuardFormatting(char const* function, char const* format, Work work) {
  try {
    work();
  } catch (abi::__forced_unwind&) {  // a cancelled thread: swallowed, glibc aborts the host
    throw;
  } catch (std::exception const& e) {
    tstring::TraceAndBreak("%s: STL Exception %s processing [%s]\n", function, e.what(), format);
  } catch (...) {
    tstring::TraceAndBreak("%s: An exception has occurred whilst processing [%s]\n", function,
                           format);
  }
}

}  // namespace

tstring& tstring::FormatV(char const* format, va_list args) {
  if (format == nullptr) return *this;
  ShortText first;
  GuardFormatting("tstring::FormatV", format, [&] {
    const int result = PrintText(*this, first, format, args);
    if (result >= 0) return;
    Trace("%s: The following error %d was returned from _vsntprintf (errno=%d) for [%s]\n",
          "tstring::FormatV", result, errno, format);
    clear();
  });
  // Only now: `format` may point into the text, too. What this throws has been reported.
  if (first.isLeft) Contain([&] { assign(first.text, sizeof first.text - 1); });
  return *this;
}

tstring& tstring::AppendFormatV(char const* format, va_list args) {
  tstring text;
  text.FormatV(format, args);
  GuardFormatting("tstring::AppendFormatV", format, [&] { append(text); });
  return *this;
}

tstring& tstring::Format(char const* format, ...) {
  va_list args;
  va_start(args, format);
  FormatV(format, args);
  va_end(args);
  return *this;
}

tstring& tstring::AppendFormat(char const* format, ...) {
  va_list args;
  va_start(args, format);
  AppendFormatV(format, args);
  va_end(args);
  return *this;
}

tstring tstring::FromFormat(char const* format, ...) {
  tstring result;
  va_list args;
  va_start(args, format);
  result.FormatV(format, args);
  va_end(args);
  return result;
}

tstring& tstring::GetErrorText(long error) {
  try {
    char buffer[4096];
    assign(::strerror_r(static_cast<int>(error), buffer, sizeof buffer));
    TrimLeft();
    TrimRight();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (std::exception const& e) {
    TraceAndBreak("%s: STL Exception %s\n", "tstring::GetErrorText", e.what());
  } catch (...) {
    TraceAndBreak("%s: An exception has occurred\n", "tstring::GetErrorText");
  }
  return *this;
}
