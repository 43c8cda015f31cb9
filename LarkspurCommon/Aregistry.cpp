// The server's configuration, and its answers to the file layer.

#include "LarkspurCommon/Aregistry.h"

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileLayerSettings.h"

VMRegistry* VMRegistry::global() {
  static VMRegistry* const registry = new VMRegistry;  // never destroyed: the host may log at exit
  return registry;
}

tstring VMRegistry::TempDirectory() const {
  tstring directory = GetFullPathRelativeToCorvoPath("tempfiles", nullptr);
  if (!TFileHandler::FileExists(directory.c_str())) {
    TFileHandler::CreateDirectory(directory.c_str());
  }
  return directory;
}

tstring VMRegistry::DBDirectory() const {
  tstring directory = GetFullPathRelativeToCorvoPath(nullptr, nullptr);
  if (directory.size() > 1) directory.pop_back();  // its final separator
  return directory;
}

tstring VMRegistry::LoggingDirectory() const {
  return GetFullPathRelativeToCorvoPath("logs", nullptr);
}

bool VMRegistry::LogFileErrorsToFile() const {
  return false;
}

tstring FileLayerTempDirectory() {
  return VMRegistry::global()->TempDirectory();
}

tstring FileLayerDatabaseDirectory() {
  return VMRegistry::global()->DBDirectory();
}

tstring FileLayerLoggingDirectory() {
  return VMRegistry::global()->LoggingDirectory();
}

bool FileLayerLogsErrorsToFile() {
  return VMRegistry::global()->LogFileErrorsToFile();
}
