// Any bytes as the record of a sealed recording: its property text, against one put together from
// the documented places of the items. And of a record that isn't sealed: none.

#include <algorithm>
#include <cstring>

#include "Target.h"
#include "engine/RecordingSeal.h"
#include "support/Bytes.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

constexpr std::size_t kPayload = 3090;
constexpr std::size_t kFlagAt = 238;
constexpr std::size_t kBuffer = 2048;

enum class Form { kText, kNumber, kAddress, kYes };

// In the order of the items; offsets in the record's payload.
struct Item {
  std::size_t at;
  std::size_t width;
  Form form = Form::kText;
};
// clang-format off
constexpr Item kItems[] = {
    {0, 28}, {28, 4}, {32, 32}, {64, 36}, {750, 32}, {100, 2}, {102, 32}, {134, 32},
    {166, 4, Form::kAddress}, {322, 32}, {354, 32}, {170, 32}, {202, 32},
    {234, 4, Form::kNumber}, {386, 4, Form::kNumber}, {390, 32}, {422, 32}, {454, 32},
    {486, 32}, {518, 32}, {550, 16}, {566, 128}, {694, 16}, {710, 32},
    {742, 4, Form::kNumber}, {746, 4, Form::kNumber}, {0, 0, Form::kYes}, {1042, 2048}};
// clang-format on

std::string TextOf(const Item& item, const std::string& field) {
  const auto byte = [&](std::size_t i) { return unsigned{static_cast<unsigned char>(field[i])}; };
  switch (item.form) {
    case Form::kText:
      return field.substr(0, field.find('\0'));
    case Form::kNumber:
      return std::to_string(byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24);
    case Form::kAddress:
      return std::to_string(byte(3)) + "." + std::to_string(byte(2)) + "." +
             std::to_string(byte(1)) + "." + std::to_string(byte(0));
    case Form::kYes:
      break;
  }
  return "Yes";
}

// Cut where the caller's buffer ends.
std::string Expected(const std::string& payload) {
  std::string text;
  for (const Item& item : kItems) text += ";" + TextOf(item, payload.substr(item.at, item.width));
  return text.substr(1, kBuffer - 1);
}

void Compare(const std::string& path, std::string expected) {
  std::string properties(kBuffer, 'x');
  Require(GetRecordingProperty(path.c_str(), properties.data()), "there is an answer");
  expected.resize(kBuffer);  // the rest of the buffer is cleared
  Require(properties == expected, "the property text");
  Require(GetRecordingProperty(path.c_str(), nullptr), "without a buffer, too");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = ScratchPath("properties.wav");
  Input input(data, size);
  const unsigned flag = input.Byte() % 3;
  const unsigned fillTo = input.UpTo(kPayload);  // texts that fill their fields
  std::string payload = input.RestWithRun().substr(0, kPayload);
  payload.resize(std::max<std::size_t>(payload.size(), fillTo), 'f');
  payload.resize(std::max(payload.size(), kFlagAt + 4));
  payload = With(payload, kFlagAt, Le32(flag));
  WriteFile(path, "RIFF" + Le32(0) + "WAVE" + "ALCH" + Le32(payload.size()) + payload);
  payload.resize(kPayload);
  Compare(path, flag == 1 ? Expected(payload) : "");
  return 0;
}
