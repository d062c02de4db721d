#include "StatusItem.h"

#include <algorithm>

namespace wrb {

const char* NameOf(Health health) noexcept {
    constexpr const char* kNames[] = {"ok", "warning", "down"};
    return kNames[static_cast<std::size_t>(health)];
}

std::string DurationText(int64_t seconds) {
    constexpr struct {
        int64_t length;
        const char* name;
    } kUnits[] = {{86'400, " d"}, {3'600, " h"}, {60, " min"}, {1, " s"}};
    seconds = std::max<int64_t>(seconds, 0);
    for (std::size_t i = 0; i + 1 < std::size(kUnits); ++i) {
        if (seconds >= kUnits[i].length) {
            const auto& next = kUnits[i + 1];
            return std::to_string(seconds / kUnits[i].length) + kUnits[i].name + " " +
                   std::to_string(seconds % kUnits[i].length / next.length) + next.name;
        }
    }
    return std::to_string(seconds) + " s";
}

Health WorstOf(const StatusItems& items) {
    const auto worst = std::ranges::max_element(items, {}, &StatusItem::health);
    return worst == items.end() ? Health::Good : worst->health;
}

Json::Value StatusJson(const StatusItems& items) {
    Json::Value result;
    result["health"] = NameOf(WorstOf(items));
    Json::Value& parts = result["parts"] = Json::Value(Json::arrayValue);
    for (const StatusItem& item : items) {
        Json::Value part = item.details.isObject() ? item.details : Json::Value(Json::objectValue);
        part["name"] = item.name;
        part["health"] = NameOf(item.health);
        part["text"] = item.text;
        parts.append(std::move(part));
    }
    return result;
}

}  // namespace wrb
