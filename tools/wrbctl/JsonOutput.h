#pragma once

#include <json/value.h>

#include <string>

namespace wrb {

// The value as UTF-8 with non-ASCII characters as they are, and a line end; fractions have six digits. On one line:
std::string JsonLine(const Json::Value& value);

// Indented:
std::string JsonText(const Json::Value& value);
void PrintJson(const Json::Value& value);

}  // namespace wrb
