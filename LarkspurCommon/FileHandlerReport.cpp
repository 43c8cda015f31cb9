// How operations on files by name tell what failed.

#include "LarkspurCommon/FileHandlerReport.h"

#include "LarkspurCommon/FileHandler.h"

bool file_layer::ReportFailure(const char* label, int error, const char* doing, const char* path) {
  tstring text;
  LogFileError(2, "%s - Error %lu (%s) %s \"%s\".", label, static_cast<unsigned long>(error),
               text.GetErrorText(error).c_str(), doing, path);
  return false;
}
