#ifndef TOOLS_CORVO_ARCHIVE_HOSTCHECK_H
#define TOOLS_CORVO_ARCHIVE_HOSTCHECK_H

#include "tools/corvo/archive/Check.h"

namespace corvo {

// An Examiner that calls the exported VerifySignature as hosts do, and tells from its failure line
// what a false means. kUnsealed is also what has no record, and kUnreadable all that kept the
// library from comparing digests. Nothing but verdict and reason is found.
void AskLibrary(const RecordingFile& file, RecordingExamination& found);

}  // namespace corvo

#endif
