// The metadata of a sealed recording as one text: items by position, without quoting.

#include <algorithm>
#include <cstring>

#include "engine/CorvoVerifiedRecording.h"
#include "engine/Operation.h"

namespace {

constexpr std::size_t kBufferSize = 2048;  // of the caller's text, terminator included

template <class Character, std::size_t Width>
tstring Text(const Character (&field)[Width]) {
  const auto* const text = reinterpret_cast<const char*>(field);
  return tstring(text, static_cast<unsigned int>(strnlen(text, Width)));
}

tstring Number(DWORD value) {
  return tstring(value);
}

tstring Address(DWORD value) {
  return tstring::FromFormat("%u.%u.%u.%u", value >> 24, value >> 16 & 0xFF, value >> 8 & 0xFF,
                             value & 0xFF);
}

tstring PropertyText(const NA_INFO& record) {
  const tstring items[] = {
      Text(record.szMaker),    Text(record.szItem02),   Text(record.szItem03),
      Text(record.szItem04),   Text(record.szDuration), Text(record.szItem06),
      Text(record.szItem07),   Text(record.szItem08),   Address(record.dwIPAddress),
      Text(record.szItem10),   Text(record.szItem11),   Text(record.szItem12),
      Text(record.szItem13),   Number(record.dwItem14), Number(record.dwItem15),
      Text(record.szItem16),   Text(record.szItem17),   Text(record.szItem18),
      Text(record.szItem19),   Text(record.szItem20),   Text(record.szItem21),
      Text(record.szItem22),   Text(record.szItem23),   Text(record.szItem24),
      Number(record.dwItem25), Number(record.dwItem26), tstring("Yes"),  // it is sealed
      Text(record.szItem28),
  };
  static_assert(sizeof items / sizeof *items == 28);
  tstring text;
  for (const tstring& item : items) {
    if (&item != items) text += ';';
    text += item;
  }
  return text;
}

}  // namespace

bool VerifyRecording::GetRecordingProperty(const char* pszFileName, char* pszProperties) {
  bool result = true;
  ReportExceptions(kGetRecordingProperty, [&] {
    if (pszProperties != nullptr) std::memset(pszProperties, 0, kBufferSize);
    TFileHandler recording;
    if (!recording.Open(pszFileName, OFM_READ, NLM_BINARY, false, false)) return;
    if (!IsSignaturePresent(pszFileName)) return;

    NA_INFO record{};
    result = GetNAInfo(&record, recording, nullptr);
    const tstring text = PropertyText(record);
    if (pszProperties != nullptr) {
      std::memcpy(pszProperties, text.data(), std::min<std::size_t>(text.size(), kBufferSize - 1));
    }
  });
  return result;
}
