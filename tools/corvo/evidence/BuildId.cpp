// Reads the build-id notes of what runs in this process.

#include "tools/corvo/evidence/BuildId.h"

#include <elf.h>
#include <link.h>

#include <cstring>

#include "tools/corvo/Hex.h"

namespace corvo {
namespace {

constexpr char kLibrary[] = "libCorvoVerifiedRecording.so";

struct Search {
  bool library;  // or the program, which the loader lists without a name
  std::string id;
};

std::size_t Padded(std::size_t size) {
  return (size + 3) / 4 * 4;
}

// From one segment of notes.
std::string FindBuildId(const unsigned char* notes, std::size_t size) {
  while (size >= sizeof(ElfW(Nhdr))) {
    ElfW(Nhdr) note;
    std::memcpy(&note, notes, sizeof note);
    const std::size_t description = sizeof note + Padded(note.n_namesz);
    const std::size_t whole = description + Padded(note.n_descsz);
    if (whole > size) break;
    if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == sizeof ELF_NOTE_GNU &&
        std::memcmp(notes + sizeof note, ELF_NOTE_GNU, sizeof ELF_NOTE_GNU) == 0) {
      return Hex(notes + description, note.n_descsz);
    }
    notes += whole;
    size -= whole;
  }
  return {};
}

int Visit(dl_phdr_info* object, std::size_t, void* context) {
  Search& search = *static_cast<Search*>(context);
  const bool wanted = search.library ? std::strstr(object->dlpi_name, kLibrary) != nullptr
                                     : *object->dlpi_name == '\0';
  if (!wanted) return 0;
  for (int i = 0; i < object->dlpi_phnum && search.id.empty(); ++i) {
    const ElfW(Phdr)& segment = object->dlpi_phdr[i];
    if (segment.p_type != PT_NOTE) continue;
    const auto* const notes = reinterpret_cast<const unsigned char*>(  // NOLINT(*-no-int-to-ptr)
        object->dlpi_addr + segment.p_vaddr);  // the loader gives addresses as numbers
    search.id = FindBuildId(notes, segment.p_memsz);
  }
  return 1;
}

std::string Find(bool library) {
  Search search{library, {}};
  ::dl_iterate_phdr(Visit, &search);
  return search.id;
}

}  // namespace

std::string ProgramBuildId() {
  return Find(false);
}

std::string LibraryBuildId() {
  return Find(true);
}

}  // namespace corvo
