// JSON as text: UTF-8, with characters beyond ASCII as they are, and six digits of fractions.
#pragma once

#include <json/value.h>

#include <string>

#include "Console.h"

namespace wrb {

// On one line, without its end.
std::string JsonLine(const Json::Value& value);

// Indented, with a line end.
std::string JsonText(const Json::Value& value);

// The indented form on the standard output.
inline void PrintJson(const Json::Value& value) {
    PrintOut(JsonText(value));
}

}  // namespace wrb
