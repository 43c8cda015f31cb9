#ifndef TOOLS_CORVO_HOSTSERVICES_H
#define TOOLS_CORVO_HOSTSERVICES_H

#include <string>
#include <vector>

namespace corvo {

// What the command tells the library as its host process: where to keep what it writes on its own
// account, which trace lines are wanted and where they go. One thread uses this; but TakeReasons
// and the library's calls may run on any.

// $XDG_STATE_HOME/corvo, or .local/state/corvo in the user's home directory. Throws InputError.
std::string DefaultHome();

// To be called before the first call into the library. Settings and temporary files stay below
// `home`, which is made if it is missing. With `trace`, every trace line goes to stderr as well.
// Throws InputError.
void SetUpHost(const std::string& home, bool trace);

// The directory of SetUpHost, and another one for the trace settings file.
std::string HomeDirectory();
void UseSettingsDirectory(const std::string& directory);

// Why the library refused this thread since the last call: its failure lines, without trace
// prefixes and the signatures of the operations that wrote them; one by one, or joined.
std::vector<std::string> TakeReasons();
std::string TakeReason();
std::string JoinReasons(const std::vector<std::string>& reasons);

}  // namespace corvo

#endif
