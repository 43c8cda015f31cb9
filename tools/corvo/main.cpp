// The corvo command.

#include "tools/corvo/CommandLine.h"

int main(int argc, char** argv) {
  return corvo::RunCommandLine(argc, argv);
}
