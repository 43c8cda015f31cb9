#ifndef TOOLS_CORVO_COMMANDLINE_H
#define TOOLS_CORVO_COMMANDLINE_H

namespace corvo {

// Does what the command line asks for; the result is the program's exit code: 0 all is well, 1 a
// recording is not sealed or failed, 2 the command line or a file can't be used.
int RunCommandLine(int argc, char** argv);

}  // namespace corvo

#endif
