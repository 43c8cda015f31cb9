#ifndef TESTS_SUPPORT_SCRATCH_H
#define TESTS_SUPPORT_SCRATCH_H

#include <string>
#include <vector>

namespace corvo_test {

// The test process's own directory: made on first use, removed when the process ends.
const std::string& ScratchDirectory();

// A path in it. The file or directory needn't exist.
std::string ScratchPath(const std::string& name);

void MakeDirectory(const std::string& path);  // parents too; an existing one is fine
void RemoveTree(const std::string& path);     // nothing there is fine
void WriteFile(const std::string& path, const std::string& bytes);
void TouchFile(const std::string& path);  // changed last in another second than ever before
void EditFile(const std::string& path, const std::string& bytes);  // writes and touches it
std::string ReadFile(const std::string& path);                     // empty when it can't be read
bool Exists(const std::string& path);
std::vector<std::string> ListDirectory(const std::string& path);  // names, sorted

}  // namespace corvo_test

#endif
