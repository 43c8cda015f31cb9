// Manifests as text.

#include "tools/corvo/trust/Manifest.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <optional>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

constexpr std::size_t kDigits = 64;
constexpr char kSeparator[] = "  ";
constexpr char kHere[] = "./";
constexpr char kNoManifest[] = "none";
constexpr char kTrailerStart[] = "# files: ";
constexpr char kTrailerMiddle[] = ", SHA-256 of the previous manifest: ";

bool IsEarlier(const ManifestEntry& a, const ManifestEntry& b) {
  return a.name < b.name;
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

bool IsDigest(const std::string& text) {
  return text.size() == kDigits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// What sha256sum writes otherwise, and the letter behind the backslash.
struct Escape {
  char byte;
  char letter;
};
constexpr Escape kEscapes[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}};

std::string Escaped(const std::string& name) {
  std::string text;
  for (const char c : name) {
    const auto* const escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                            [c](const Escape& row) { return row.byte == c; });
    text += escape == std::end(kEscapes) ? std::string(1, c) : std::string{'\\', escape->letter};
  }
  return text;
}

std::optional<std::string> Unescaped(const std::string& text) {
  std::string name;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      name += text[at];
      continue;
    }
    const char letter = ++at < text.size() ? text[at] : '\0';
    const auto* const escape =
        std::find_if(std::begin(kEscapes), std::end(kEscapes),
                     [letter](const Escape& row) { return row.letter == letter; });
    if (escape == std::end(kEscapes)) return std::nullopt;
    name += escape->byte;
  }
  return name;
}

// Whether the name stays below the directory.
bool IsBelow(const std::string& name) {
  return StartsWith(name, kHere) && name.size() > sizeof kHere - 1 && name.back() != '/' &&
         (name + '/').find("/../") == std::string::npos && name.find('\0') == std::string::npos;
}

std::optional<ManifestEntry> ParseLine(const std::string& line) {
  const bool isEscaped = !line.empty() && line[0] == '\\';
  const std::string text = line.substr(isEscaped ? 1 : 0);
  if (text.size() < kDigits || text.compare(kDigits, 2, kSeparator) != 0) return std::nullopt;
  const std::string written = text.substr(kDigits + 2);
  const std::optional<std::string> name = isEscaped ? Unescaped(written) : written;
  if (!name || !IsBelow(*name) || !IsDigest(text.substr(0, kDigits))) return std::nullopt;
  return ManifestEntry{text.substr(0, kDigits), *name};
}

class Reader {
 public:
  explicit Reader(const std::string& path) : m_path(path), m_file(path, std::ios::binary) {
    if (!m_file) throw InputError(NameInLine(path), ErrorText(errno));
  }

  Manifest Read() {
    for (std::string line; !m_isComplete && std::getline(m_file, line);) {
      ++m_line;
      Take(line);
    }
    if (m_file.bad()) throw InputError(NameInLine(m_path), ErrorText(errno));
    if (!m_isComplete)
      throw InputError(NameInLine(m_path), "it is no complete manifest: its last line is missing");
    if (m_file.eof() || m_file.peek() != std::ifstream::traits_type::eof()) {
      Refuse("it must be the last, and end with a newline");
    }
    return m_manifest;
  }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw InputError(NameInLine(m_path),
                     "it is no manifest: line " + std::to_string(m_line) + ": " + reason);
  }

  void Take(const std::string& line) {
    if (StartsWith(line, kTrailerStart)) return TakeTrailer(line);
    std::optional<ManifestEntry> entry = ParseLine(line);
    if (!entry) Refuse("there is no digest and file name");
    std::vector<ManifestEntry>& entries = m_manifest.entries;
    if (!entries.empty() && !IsEarlier(entries.back(), *entry)) {
      Refuse("the name isn't behind the one before it");
    }
    entries.push_back(std::move(*entry));
  }

  // It must be exactly what would have been written behind these lines.
  void TakeTrailer(const std::string& line) {
    if (m_manifest.entries.empty()) Refuse("it lists no files");
    const std::string last = line.substr(line.rfind(' ') + 1);
    if (IsDigest(last)) m_manifest.previous = last;
    if (line + '\n' != ManifestTrailer(m_manifest.entries.size(), m_manifest.previous)) {
      Refuse("it doesn't fit the " + std::to_string(m_manifest.entries.size()) +
             " lines before it");
    }
    m_isComplete = true;
  }

  const std::string& m_path;
  std::ifstream m_file;
  unsigned long long m_line = 0;
  Manifest m_manifest;
  bool m_isComplete = false;
};

}  // namespace

bool Manifest::Lists(const std::string& name) const {
  return std::binary_search(entries.begin(), entries.end(), ManifestEntry{{}, name}, IsEarlier);
}

std::string ManifestLine(const ManifestEntry& entry) {
  const std::string name = Escaped(entry.name);
  return (name == entry.name ? "" : "\\") + entry.digest + kSeparator + name + '\n';
}

std::string ManifestTrailer(unsigned long long files, const std::string& previous) {
  return kTrailerStart + std::to_string(files) + kTrailerMiddle +
         (previous.empty() ? kNoManifest : previous) + '\n';
}

Manifest ReadManifest(const std::string& path) {
  return Reader(path).Read();
}

}  // namespace corvo
