#pragma once

#include <json/value.h>

#include <string>

namespace wrb {

// The value on one line, as UTF-8 with non-ASCII characters as they are; fractions have six digits.
std::string JsonLine(const Json::Value& value);

// Prints the value, indented, as UTF-8 with non-ASCII characters as they are, and ends the line.
void PrintJson(const Json::Value& value);

}  // namespace wrb
