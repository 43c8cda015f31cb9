#ifndef LARKSPURCOMMON_FILEHANDLERREPORT_H
#define LARKSPURCOMMON_FILEHANDLERREPORT_H

namespace file_layer {

// Logs the failure of an operation that has no object to keep it as last error. False.
bool ReportFailure(const char* label, int error, const char* doing, const char* path);

}  // namespace file_layer

#endif
