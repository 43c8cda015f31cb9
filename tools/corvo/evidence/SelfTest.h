#ifndef TOOLS_CORVO_EVIDENCE_SELFTEST_H
#define TOOLS_CORVO_EVIDENCE_SELFTEST_H

#include <string>
#include <vector>

namespace corvo {

// A published digest, and what this program computes for the same message.
struct KnownAnswer {
  std::string algorithm;
  std::string message;  // described
  std::string published;
  std::string computed;

  bool Passed() const { return published == computed; }
};

// Runs SHA-1 and SHA-256 over the messages of FIPS 180.
std::vector<KnownAnswer> RunSelfTest();

}  // namespace corvo

#endif
