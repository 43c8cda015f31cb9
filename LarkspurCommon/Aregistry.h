#ifndef LARKSPURCOMMON_AREGISTRY_H
#define LARKSPURCOMMON_AREGISTRY_H

#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"

// The configuration of the server process. Its present form has no settings file: every directory
// lies below the running program's. Any thread.
class CORVO_API VMRegistry {
 public:
  static VMRegistry* global();  // lives until the process ends

  VMRegistry(const VMRegistry&) = delete;
  VMRegistry& operator=(const VMRegistry&) = delete;

  tstring TempDirectory() const;  // made when missing
  tstring DBDirectory() const;
  tstring LoggingDirectory() const;
  bool LogFileErrorsToFile() const;

 private:
  VMRegistry() = default;
};

#endif
