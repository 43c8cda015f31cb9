// Splitting paths, finding them on the disk and telling bare names, through the host's calls.

#include "LarkspurCommon/FileHandlerPaths.h"

#include <cstring>

#include "LarkspurCommon/FileHandler.h"
#include "platform/Win32Compat.h"

namespace file_layer {
namespace {

bool IsEmpty(const char* path) {
  return path == nullptr || *path == '\0';
}

}  // namespace

bool IsNowhere(const char* path) {
  constexpr std::size_t kWithoutSeparator = sizeof kNowhere - 2;
  return path != nullptr && std::strncmp(path, kNowhere, kWithoutSeparator) == 0;
}

PathParts::PathParts(const char* path)
    : m_fit(_splitpath_s(path, m_drive, sizeof m_drive, m_directory, sizeof m_directory, m_name,
                         sizeof m_name, m_extension, sizeof m_extension) == 0) {
}

tstring PathParts::Directory() const {
  return tstring::FromFormat("%s%s", m_drive, m_directory);
}

tstring PathParts::Name() const {
  return tstring::FromFormat("%s%s", m_name, m_extension);
}

// The host's lookup is never given what may not fit its buffer.
FoundPath::FoundPath(const char* path)
    : m_text(),
      m_exists(!IsEmpty(path) && std::strlen(path) < sizeof m_text &&
               FindFileIgnoreCase(m_text, path, true)) {
}

tstring ResolveBareName(const char* path) {
  if (IsEmpty(path)) return {};  // it would stand for the program's directory itself
  const PathParts parts(path);
  if (!parts.Fit()) return {};
  return parts.IsBareName() ? GetFullPathRelativeToCorvoPath(path, nullptr) : tstring(path);
}

}  // namespace file_layer
