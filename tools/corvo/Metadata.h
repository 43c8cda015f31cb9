#ifndef TOOLS_CORVO_METADATA_H
#define TOOLS_CORVO_METADATA_H

#include <string>
#include <vector>

#include "engine/NaInfo.h"

namespace corvo {

// One item of a recording's metadata, as text.
struct Item {
  std::string name;
  std::string value;
};

// What SetItem knows, a line each, in the order of the property text.
std::string DescribeItems();

// Sets a call-detail field. Texts may fill their field to the last byte; numbers are decimal,
// addresses dotted. Throws InputError, naming the item: an unknown name, a value that doesn't fit.
void SetItem(NA_INFO& record, const Item& item);

// Reads items from a JSON object: texts and addresses as strings, numbers as numbers. Throws
// InputError.
std::vector<Item> ReadItems(const std::string& jsonFile);

// The 28 items of a sealed record, in the order of the property text. Each value is exactly what
// the property text holds, also where it contains a ";".
std::vector<Item> SealedItems(const NA_INFO& record);

}  // namespace corvo

#endif
