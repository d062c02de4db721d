// One part of the server and how it is.
#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wrb {

enum class Health : uint8_t {
    Good,
    Warning,  // the server works, and somebody should look
    Down,     // a part that serves does not
};

// "ok", "warning", "down".
const char* NameOf(Health health) noexcept;

// Texts are UTF-8.
struct StatusItem {
    std::string name;  // "host", "pipe DbServerNamePipe", ...
    Health health = Health::Good;
    std::string text;     // for people, one line
    Json::Value details;  // an object: the numbers and texts behind the line; null when there are none
};

using StatusItems = std::vector<StatusItem>;

// "3 d 4 h", "2 h 5 min", "7 min 1 s", "12 s"; a negative time counts as 0.
std::string DurationText(int64_t seconds);

// {"health": the worst, "parts": [{"name", "health", "text", and the details}]}
Json::Value StatusJson(const StatusItems& items);

Health WorstOf(const StatusItems& items);

}  // namespace wrb
