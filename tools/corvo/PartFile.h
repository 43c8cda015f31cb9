#ifndef TOOLS_CORVO_PARTFILE_H
#define TOOLS_CORVO_PARTFILE_H

#include <string>

namespace corvo {

// A file under a name of its own beside its target, until it is complete. Removed unless published.
class PartFile {
 public:
  // Makes the file, empty, beside its target. Throws InputError.
  explicit PartFile(const std::string& target);
  ~PartFile();
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  const std::string& Path() const { return m_path; }

  // Has the file on disk, then gives it its target's name, which is on disk too when this returns.
  // Throws InputError: also, unless `replace`, where a file of that name has just appeared.
  void Publish(bool replace);

 private:
  void MakeEmpty();

  std::string m_target;
  std::string m_path;  // empty once it has become the target
};

}  // namespace corvo

#endif
