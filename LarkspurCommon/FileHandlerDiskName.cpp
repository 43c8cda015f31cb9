// The system's own lookup of a path on the disk, which unlike the host's also finds hidden files by
// the names that they have when shown.

#include <dirent.h>
#include <strings.h>
#include <unistd.h>

#include <cstring>
#include <cwchar>
#include <memory>
#include <string>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "platform/HoldCancellation.h"
#include "platform/Win32Compat.h"

using namespace file_layer;

namespace {

constexpr char kFromDisk[] = "static bool TFileHandler::GetFileNameFromDisk(TCHAR*, const TCHAR*)";
constexpr char kFromDiskWide[] =
    "static bool TFileHandler::GetFileNameFromDisk(wchar_t*, const wchar_t*)";

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

// The host's buffer for a directory's entries, and the entries one at a time.
class EntryBuffer {
 public:
  explicit EntryBuffer(const char* directory) : m_entry(AllocateDirEntry(directory)) {}
  ~EntryBuffer() {
    const HoldCancellation hold;
    try {
      if (m_entry != nullptr) FreeDirEntry(m_entry);
    } catch (...) {
      TraceException("FileHandler", kFromDisk, __LINE__);
    }
  }
  EntryBuffer(const EntryBuffer&) = delete;
  EntryBuffer& operator=(const EntryBuffer&) = delete;

  // The next entry's name; null at the end, after a failure and where the host gave no buffer. It
  // isn't read into that: a host without large files makes it smaller than our entries can be.
  const char* ReadName(DIR* directory) const {
    const dirent* const entry = m_entry != nullptr ? ::readdir(directory) : nullptr;
    return entry != nullptr ? entry->d_name : nullptr;
  }

 private:
  dirent* const m_entry;
};

bool Exists(const char* path) {
  return ::access(path, F_OK) == 0;
}

bool IsEqualIgnoringCase(const char* one, const char* other) {
  return ::strcasecmp(one, other) == 0;
}

// Whether an entry is what `component` means: by its name, or by the one that it has when shown.
bool Answers(const char* entry, const tstring& component) {
  return IsEqualIgnoringCase(entry, component.c_str()) ||
         (*entry == '.' && IsEqualIgnoringCase(entry + 1, component.c_str()));
}

// The first entry, in the directory's order, that answers. Empty when none does.
tstring FindEntry(const char* path, const tstring& component) {
  const Directory directory(::opendir(path));
  if (directory == nullptr) return {};
  EntryBuffer buffer(path);
  while (const char* name = buffer.ReadName(directory.get())) {
    if (Answers(name, component)) return name;
  }
  return {};
}

// An absolute path that is put together component by component.
class DiskPath {
 public:
  const char* Text() const { return m_text; }

  // Adds '/' and the component as it is spelled on the disk. False when that doesn't fit.
  bool Add(const tstring& component) {
    const std::size_t length = std::strlen(m_text);
    if (!Append(component)) return false;
    if (Exists(m_text)) return true;
    m_text[length] = '\0';
    const tstring entry = FindEntry(length == 0 ? "/" : m_text, component);
    return entry.empty() ? Append(component) : Append(entry);
  }

  // False when it doesn't fit.
  bool Append(const tstring& component) {
    return strcat_s(m_text, sizeof m_text, "/") == 0 &&
           strcat_s(m_text, sizeof m_text, component.c_str()) == 0;
  }

 private:
  char m_text[MAX_PATH] = "";
};

// Gives the components of an absolute path their spelling on the disk. A result that doesn't fit
// leaves the path as it is.
void SpellAsOnDisk(char* path) {
  constexpr char kSeparator[] = "/";
  DiskPath spelled;
  const char* end = path;
  for (const char* name = path + std::strspn(path, kSeparator); *name != '\0';
       name = end + std::strspn(end, kSeparator)) {
    end = name + std::strcspn(name, kSeparator);
    if (!spelled.Add(tstring(name, static_cast<unsigned int>(end - name)))) return;
  }
  if (*end != '\0' && !spelled.Append("")) return;  // a separator ends it
  strcpy_s(path, MAX_PATH, spelled.Text());
}

// `path` with the separators of the disk, in `out`; empty when it doesn't fit.
void ToUnixPath(char* out, const char* path) {
  if (std::strlen(path) >= MAX_PATH) {
    *out = '\0';
  } else {
    DosToUnixFileName(out, path);
  }
}

}  // namespace

bool TFileHandler::GetFileNameFromDisk(char* out, const char* path) {
  return AtBoundary(kFromDisk, __LINE__, false, [&] {
    if (path == nullptr || *path == '\0') return Exists(out);
    ToUnixPath(out, path);
    if (Exists(out)) return true;
    if (*out == '/') SpellAsOnDisk(out);
    return Exists(out);
  });
}

bool TFileHandler::GetFileNameFromDisk(wchar_t* out, const wchar_t* path) {
  return AtBoundary(kFromDiskWide, __LINE__, false, [&] {
    char found[MAX_PATH] = "";
    if (!GetFileNameFromDisk(found, tstring(path).c_str())) return false;
    std::wstring wide;
    tstring::Convert(tstring(found), wide);
    if (wide.empty()) return false;  // no text in the process's encoding
    std::wmemcpy(out, wide.c_str(), wide.size() + 1);
    return true;
  });
}
