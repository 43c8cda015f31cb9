// Text-mode lines that take the place of what the file holds.

#include <cerrno>
#include <string>
#include <utility>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/InPlaceText.h"
#include "platform/HoldCancellation.h"

using namespace file_layer;

namespace {

constexpr char kReplace[] = "bool TFileHandler::ReplaceText(const TCHAR*)";

std::string WithLineEnds(const char* text) {
  std::string lines;
  for (; *text != '\0'; ++text) {
    if (*text == '\n') lines += '\r';
    lines += *text;
  }
  return lines;
}

}  // namespace

bool TFileHandler::ReplaceText(const char* text) {
  return AtBoundary(kReplace, __LINE__, false, [&] {
    if (!GetIsOpen()) return false;
    std::string lines = WithLineEnds(text);
    const HoldCancellation hold;
    EmptyCache();
    m_room = 0;
    return ReplaceInPlace(m_descriptor, std::move(lines)) ||
           FailData(kReplace, errno, "writing data to");
  });
}
