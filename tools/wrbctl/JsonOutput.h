#pragma once

#include <json/value.h>

namespace wrb {

// Prints the value, indented, as UTF-8 with non-ASCII characters as they are, and ends the line.
void PrintJson(const Json::Value& value);

}  // namespace wrb
