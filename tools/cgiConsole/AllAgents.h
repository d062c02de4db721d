// What all agents have now of one group of settings, counted by value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SettingCatalog.h"

namespace wrb {

struct ValueCount {
    std::wstring value;  // as in the scan INI
    uint64_t agents;
};

struct AllAgentsValues {
    bool isAnswered = false;  // else the database server does not answer
    uint64_t agents = 0;      // that have a configuration; the others are not changed

    struct Setting {
        const SettingInfo* setting;
        std::vector<ValueCount> counts;  // the most frequent value first
    };
    std::vector<Setting> settings;  // that can be set for agents, in the order of the section
};

// Some requests to the database server, whatever the number of agents.
AllAgentsValues ReadAllAgents(const ScanGroup& group);

// "on: 9,812, off: 188"; of many values the first three.
std::string CountsText(const AllAgentsValues::Setting& setting);

}  // namespace wrb
