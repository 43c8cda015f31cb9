// Taking path texts apart: _splitpath_s, which a host may replace.

#include <ctype.h>
#include <errno.h>

#include <algorithm>
#include <string_view>

#include "platform/Win32Compat.h"

namespace {

struct Part {
  std::string_view text;
  char* out;
  size_t size;
};

std::string_view Drive(std::string_view path) {
  const bool given =
      path.size() > 1 && path[1] == ':' && isalpha(static_cast<unsigned char>(path[0]));
  return path.substr(0, given ? 2 : 0);
}

size_t ExtensionStart(std::string_view name) {
  const size_t leadingDots = std::min(name.find_first_not_of('.'), name.size());
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot < leadingDots ? name.size() : dot;
}

int Check(const Part& part) {
  if ((part.out == nullptr) != (part.size == 0)) return EINVAL;
  return part.out != nullptr && part.text.size() >= part.size ? ERANGE : 0;
}

void Store(const Part& part, std::string_view text) {
  if (part.size == 0 || part.out == nullptr) return;
  part.out[text.copy(part.out, text.size())] = '\0';
}

template <size_t kCount>
int StoreAllOrNone(const Part (&parts)[kCount], bool pathGiven) {
  int error = pathGiven ? 0 : EINVAL;
  for (const Part& part : parts) error = error != 0 ? error : Check(part);
  for (const Part& part : parts) Store(part, error != 0 ? std::string_view() : part.text);
  return error;
}

}  // namespace

int _splitpath_s(const char* path, char* drive, size_t driveSize, char* directory,
                 size_t directorySize, char* name, size_t nameSize, char* extension,
                 size_t extensionSize) {
  const std::string_view whole(path == nullptr ? "" : path);
  const std::string_view driveText = Drive(whole);
  const std::string_view rest = whole.substr(driveText.size());
  const size_t nameStart = rest.find_last_of("/\\") + 1;  // 0 without a separator
  const std::string_view fileName = rest.substr(nameStart);
  const size_t dot = ExtensionStart(fileName);
  const Part parts[] = {{driveText, drive, driveSize},
                        {rest.substr(0, nameStart), directory, directorySize},
                        {fileName.substr(0, dot), name, nameSize},
                        {fileName.substr(dot), extension, extensionSize}};
  return StoreAllOrNone(parts, path != nullptr);
}
