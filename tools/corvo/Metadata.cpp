// The metadata record's fields by name.

#include "tools/corvo/Metadata.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tools/corvo/InputError.h"

namespace corvo {
namespace {

constexpr std::size_t kDescriptionColumn = 15;

enum class Kind { kText, kNumber, kAddress, kSeal };

// The maker and the duration are written by the library, the others by whoever records the call.
enum class Origin { kLibrary, kCall };

struct Field {
  const char* name;
  Kind kind;
  Origin origin;
  std::size_t offset;  // in the record
  std::size_t width;   // in bytes
};

#define FIELD(kind, origin, name) \
  { #name, Kind::kind, Origin::origin, offsetof(NA_INFO, name), sizeof(NA_INFO::name) }

// In the order of the property text.
constexpr Field kFields[] = {
    FIELD(kText, kLibrary, szMaker),     FIELD(kText, kCall, szItem02),
    FIELD(kText, kCall, szItem03),       FIELD(kText, kCall, szItem04),
    FIELD(kText, kLibrary, szDuration),  FIELD(kText, kCall, szItem06),
    FIELD(kText, kCall, szItem07),       FIELD(kText, kCall, szItem08),
    FIELD(kAddress, kCall, dwIPAddress), FIELD(kText, kCall, szItem10),
    FIELD(kText, kCall, szItem11),       FIELD(kText, kCall, szItem12),
    FIELD(kText, kCall, szItem13),       FIELD(kNumber, kCall, dwItem14),
    FIELD(kNumber, kCall, dwItem15),     FIELD(kText, kCall, szItem16),
    FIELD(kText, kCall, szItem17),       FIELD(kText, kCall, szItem18),
    FIELD(kText, kCall, szItem19),       FIELD(kText, kCall, szItem20),
    FIELD(kText, kCall, szItem21),       FIELD(kText, kCall, szItem22),
    FIELD(kText, kCall, szItem23),       FIELD(kText, kCall, szItem24),
    FIELD(kNumber, kCall, dwItem25),     FIELD(kNumber, kCall, dwItem26),
    FIELD(kSeal, kLibrary, dwSigned),    FIELD(kText, kCall, szItem28),
};
#undef FIELD

std::string Describe(const Field& field) {
  if (field.kind == Kind::kAddress) return "an address such as 192.0.2.1";
  if (field.kind == Kind::kNumber) return "a number up to 4294967295";
  return "a text of at most " + std::to_string(field.width) + " bytes";
}

[[noreturn]] void Refuse(const std::string& name, const std::string& reason) {
  throw InputError(name + " " + reason);
}

const Field& Settable(const std::string& name) {
  const auto found = std::find_if(
      std::begin(kFields), std::end(kFields),
      [&name](const Field& field) { return field.origin == Origin::kCall && field.name == name; });
  if (found == std::end(kFields)) Refuse(name, "is no metadata item");
  return *found;
}

[[noreturn]] void RefuseValue(const Field& field) {
  Refuse(field.name, "must be " + Describe(field));
}

DWORD ParseNumber(const Item& item, const Field& field) {
  DWORD number = 0;
  const char* const end = item.value.data() + item.value.size();
  const auto [stop, error] = std::from_chars(item.value.data(), end, number);
  if (error != std::errc() || stop != end) RefuseValue(field);
  return number;
}

DWORD ParseAddress(const Item& item, const Field& field) {
  in_addr address{};
  if (inet_pton(AF_INET, item.value.c_str(), &address) != 1) RefuseValue(field);
  return ntohl(address.s_addr);
}

std::string Address(DWORD address) {
  const in_addr networkOrder{htonl(address)};
  char text[INET_ADDRSTRLEN];
  return inet_ntop(AF_INET, &networkOrder, text, sizeof text);
}

std::string Value(const NA_INFO& record, const Field& field) {
  const char* const bytes = reinterpret_cast<const char*>(&record) + field.offset;
  if (field.kind == Kind::kText) return {bytes, ::strnlen(bytes, field.width)};
  if (field.kind == Kind::kSeal) return "Yes";
  DWORD number = 0;
  std::memcpy(&number, bytes, sizeof number);
  return field.kind == Kind::kAddress ? Address(number) : std::to_string(number);
}

Item ItemFromJson(const std::string& name, const nlohmann::json& value) {
  const Field& field = Settable(name);
  const bool isNumber = field.kind == Kind::kNumber;
  if (isNumber ? !value.is_number_unsigned() : !value.is_string()) RefuseValue(field);
  return {name, isNumber ? value.dump() : value.get<std::string>()};
}

}  // namespace

std::string DescribeItems() {
  std::string lines;
  for (const Field& field : kFields) {
    if (field.origin != Origin::kCall) continue;
    std::string line = std::string("  ") + field.name;
    line.resize(kDescriptionColumn, ' ');
    lines += line + Describe(field) + '\n';
  }
  return lines;
}

void SetItem(NA_INFO& record, const Item& item) {
  const Field& field = Settable(item.name);
  if (item.value.find('\0') != std::string::npos) Refuse(item.name, "must not hold a zero byte");
  char* const bytes = reinterpret_cast<char*>(&record) + field.offset;
  if (field.kind == Kind::kText) {
    if (item.value.size() > field.width) RefuseValue(field);
    const std::size_t copied = item.value.copy(bytes, field.width);
    std::memset(bytes + copied, 0, field.width - copied);
    return;
  }
  const DWORD number =
      field.kind == Kind::kAddress ? ParseAddress(item, field) : ParseNumber(item, field);
  std::memcpy(bytes, &number, sizeof number);
}

std::vector<Item> ReadItems(const std::string& jsonFile) {
  std::ifstream file(jsonFile);
  if (!file) throw InputError(jsonFile, std::strerror(errno));
  const nlohmann::json object = nlohmann::json::parse(file, nullptr, false);
  if (!object.is_object()) throw InputError(jsonFile, "holds no JSON object");
  std::vector<Item> items;
  for (const auto& [name, value] : object.items()) items.push_back(ItemFromJson(name, value));
  return items;
}

std::vector<Item> SealedItems(const NA_INFO& record) {
  std::vector<Item> items;
  for (const Field& field : kFields) items.push_back({field.name, Value(record, field)});
  return items;
}

}  // namespace corvo
