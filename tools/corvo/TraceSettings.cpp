// The trace commands.

#include "tools/corvo/TraceSettings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iostream>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/tstring.h"
#include "platform/HostServices.h"
#include "tools/corvo/Hex.h"
#include "tools/corvo/InputError.h"

namespace corvo {
namespace {

constexpr char kLevelKey[] = "Filter Level";
constexpr char kBitmapKey[] = "ID Bitmap";
constexpr char kModuleKey[] = "Module Name";
constexpr unsigned kIds = 128;

// What a server without a settings file traces.
constexpr char kDefaultLevel[] = "5, or 1 on an installed release, until one is set";
constexpr char kAllIds[] = "ffffffffffffffffffffffffffffffff";

struct KnownId {
  unsigned id;
  const char* name;
};

constexpr KnownId kKnownIds[] = {
    {0x02, "locks released by the wrong thread"},
    {0x03, "locks held too long"},
    {0x06, "configuration: start-up copies"},
    {0x0B, "configuration"},
    {0x0F, "strings"},
    {0x25, "exceptions"},
    {0x27, "sealing and verifying"},
    {0x28, "files"},
};

std::string Entry(const char* key, const char* byDefault) {
  bool found;
  const std::string value = GetData(key, found);
  return found ? value : byDefault;
}

// One bit for each ID, that of ID 0 lowest in the first byte.
class Bitmap {
 public:
  explicit Bitmap(const std::string& text) {
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
      const std::string pair = i * 2 < text.size() ? text.substr(i * 2, 2) : "ff";
      std::from_chars(pair.data(), pair.data() + pair.size(), m_bytes[i], 16);
    }
  }

  bool IsOn(unsigned id) const { return (m_bytes[id / 8] >> id % 8 & 1) != 0; }
  void Switch(unsigned id, bool on) {
    const unsigned bit = 1u << id % 8;
    m_bytes[id / 8] =
        static_cast<unsigned char>(on ? m_bytes[id / 8] | bit : m_bytes[id / 8] & ~bit);
  }

  std::string Text() const { return Hex(m_bytes.data(), m_bytes.size()); }

 private:
  std::array<unsigned char, kIds / 8> m_bytes{};
};

unsigned ParseId(const std::string& text) {
  unsigned id = kIds;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, id, 16);
  if (error != std::errc() || stop != end || id >= kIds) {
    throw InputError(text + ": is no trace ID (00 to 7f)");
  }
  return id;
}

constexpr char kAll[] = "all";

void SwitchAll(Bitmap& bitmap, const std::vector<std::string>& ids, bool on) {
  if (std::find(ids.begin(), ids.end(), kAll) == ids.end()) return;
  for (unsigned id = 0; id < kIds; ++id) bitmap.Switch(id, on);
}

void SwitchNamed(Bitmap& bitmap, const std::vector<std::string>& ids, bool on) {
  for (const std::string& text : ids) {
    if (text != kAll) bitmap.Switch(ParseId(text), on);
  }
}

std::string NameOf(unsigned id) {
  std::string own = Entry(tstring::FromFormat("ID %02x Name", id), "");
  if (!own.empty()) return own;
  for (const KnownId& known : kKnownIds) {
    if (known.id == id) return known.name;
  }
  return "";
}

void PrintId(unsigned id, const Bitmap& bitmap) {
  std::cout << tstring::FromFormat("%02x", id).c_str() << (bitmap.IsOn(id) ? "  on   " : "  off  ")
            << NameOf(id) << '\n';
}

Bitmap ReadBitmap() {
  return Bitmap(Entry(kBitmapKey, kAllIds));
}

bool HoldsLine(const std::string& path, const std::string& line) {
  std::ifstream file(path);
  for (std::string held; std::getline(file, held);) {
    if (held == line) return true;
  }
  return false;
}

// Writing gives no result: the file is asked what it holds now.
void Write(const char* key, const tstring& value) {
  const std::string path = std::string(CorvoSettingsDirectory()) + "/corvo_debug_settings.ini";
  tstring entry(key);
  tstring text(value);
  UpdateIniFileEntry(entry, text);
  WriteIniFile();
  if (!HoldsLine(path, std::string(key) + "=" + value.c_str())) {
    throw InputError(path, "can't be written");
  }
}

}  // namespace

Outcome ShowTraceSettings() {
  ReadIniFile();
  std::cout << "level " << Entry(kLevelKey, kDefaultLevel) << '\n';
  const std::string module = Entry(kModuleKey, "");
  if (!module.empty()) std::cout << "written by " << module << '\n';
  const Bitmap bitmap = ReadBitmap();
  for (unsigned id = 0; id < kIds; ++id) {
    if (!bitmap.IsOn(id)) PrintId(id, bitmap);
  }
  return Outcome::kFine;
}

Outcome SetTraceLevel(unsigned level) {
  ReadIniFile();
  Write(kLevelKey, level);
  return Outcome::kFine;
}

Outcome SwitchTraceIds(const std::vector<std::string>& on, const std::vector<std::string>& off) {
  ReadIniFile();
  Bitmap bitmap = ReadBitmap();
  SwitchAll(bitmap, on, true);
  SwitchAll(bitmap, off, false);
  SwitchNamed(bitmap, on, true);
  SwitchNamed(bitmap, off, false);
  if (!on.empty() || !off.empty()) Write(kBitmapKey, bitmap.Text().c_str());
  for (unsigned id = 0; id < kIds; ++id) {
    if (!NameOf(id).empty()) PrintId(id, bitmap);
  }
  return Outcome::kFine;
}

}  // namespace corvo
