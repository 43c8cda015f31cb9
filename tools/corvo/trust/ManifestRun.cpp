// Files as manifests see them.

#include "tools/corvo/trust/ManifestRun.h"

#include <errno.h>
#include <sys/stat.h>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/FileDigest.h"
#include "tools/corvo/archive/Names.h"

namespace corvo {
namespace {

constexpr std::size_t kHereLength = 2;  // of "./"

}  // namespace

ListedDirectory::ListedDirectory(const std::string& directory) : m_prefix(directory) {
  const std::optional<FileState> state = StateOf(directory);
  if (!state) throw InputError(NameInLine(directory), ErrorText(errno));
  if (!S_ISDIR(state->mode)) throw InputError(NameInLine(directory), "is not a directory");
  if (m_prefix.back() != '/') m_prefix += '/';
}

InputPlan ListedDirectory::Inputs() const {
  InputPlan plan;
  plan.names = {m_prefix};
  return plan;
}

std::string ListedDirectory::NameOf(const std::string& path) const {
  return "./" + path.substr(m_prefix.size());
}

std::string ListedDirectory::PathOf(const std::string& name) const {
  return m_prefix + name.substr(kHereLength);
}

bool DigestUnchanged(const RecordingFile& file, std::string& digest, std::string& refusal) {
  refusal = file.Refusal();
  if (!file.File().IsOpen()) return false;
  const int error = DigestFile(file.File(), file.State()->size, digest);
  if (error == 0 && file.IsUnchanged()) return true;
  refusal = error == 0 ? "it changed while it was read" : ErrorText(error);
  return false;
}

}  // namespace corvo
