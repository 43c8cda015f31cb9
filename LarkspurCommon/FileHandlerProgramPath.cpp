// The rule by which the file layer and the configuration find their files: beside the program.

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "platform/Win32Compat.h"

using file_layer::kNowhere;

namespace {

constexpr char kLabel[] = "tstring GetFullPathRelativeToCorvoPath(const TCHAR*, const TCHAR*)";

bool IsSeparator(char ch) {
  return ch == '\\' || ch == '/';
}

}  // namespace

tstring file_layer::ProgramDirectory() {
  char program[MAX_PATH];
  char drive[_MAX_DRIVE];
  char directory[_MAX_DIR];
  if (GetModuleFileName(nullptr, program, sizeof program) == 0 ||
      _splitpath_s(program, drive, sizeof drive, directory, sizeof directory, nullptr, 0, nullptr,
                   0) != 0) {
    return kNowhere;
  }
  tstring result = tstring::FromFormat("%s%s", drive, directory);
  if (result.empty()) return kNowhere;
  if (!IsSeparator(result.back())) result += '\\';
  return result;
}

tstring GetFullPathRelativeToCorvoPath(const char* name, const char* extension) {
  tstring path = file_layer::AtBoundary(kLabel, __LINE__, tstring(kNowhere),
                                        [] { return file_layer::ProgramDirectory(); });
  if (name == nullptr || *name == '\0') return path;
  path += IsSeparator(*name) ? name + 1 : name;
  if (extension == nullptr) return path;
  if (*extension != '.') path += '.';
  path += extension;
  return path;
}
