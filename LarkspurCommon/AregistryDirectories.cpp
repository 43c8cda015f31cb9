// Directory settings: cutting suffixes off, and making sure that a directory is there.

#include <cctype>
#include <cerrno>
#include <cstring>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/debug.h"

namespace {

bool IsSeparator(char ch) {
  return ch == '\\' || ch == '/';
}

int Upper(char ch) {
  return std::toupper(static_cast<unsigned char>(ch));
}

bool SameInPath(char left, char right) {
  return Upper(left) == Upper(right) || (IsSeparator(left) && IsSeparator(right));
}

const char* SkipSeparators(const char* text) {
  while (IsSeparator(*text)) ++text;
  return text;
}

// But for letter case and separators.
bool SamePath(const char* left, const char* right) {
  left = SkipSeparators(left);
  right = SkipSeparators(right);
  while (*left != '\0' && *right != '\0' && Upper(*left) == Upper(*right)) {
    left = SkipSeparators(left + 1);
    right = SkipSeparators(right + 1);
  }
  return *left == '\0' && *right == '\0';
}

}  // namespace

void VMRegistry::ChopOff(tstring& text, const char* suffix) const {
  if (suffix == nullptr) return;
  const std::size_t length = std::strlen(suffix);
  if (text.size() < length) return;
  const std::size_t kept = text.size() - length;
  for (std::size_t i = 0; i < length; ++i) {
    if (!SameInPath(text[kept + i], suffix[i])) return;
  }
  text.resize(kept);
}

void VMRegistry::ValidateDirectory(const char* directory, const char* settingName) const {
  DebugA(kTraceNotice, "VMRegistry - Validating directory \"%s\"", directory);
  tstring path(directory);
  char onDisk[MAX_PATH] = "";
  if (TFileHandler::GetFileNameFromDisk(onDisk, directory) && SamePath(onDisk, directory) &&
      path != onDisk && settingName != nullptr) {
    DebugA(kTraceNotice, "VMRegistry - setting the key \"%s\" as \"%s\" ", settingName, onDisk);
    Write(m_mainKey, settingName, onDisk);
    path = onDisk;
  }
  if (TFileHandler::FileExists(path.c_str())) return;
  if (!TFileHandler::CreateDirectory(path.c_str())) {
    DebugA(kTraceError, "VMRegistry - error %ld creating directory \"%s\"",
           static_cast<long>(errno), path.c_str());
    return;
  }
  DebugA(kTraceNotice, "VMRegistry - created directory \"%s\"", path.c_str());
}
