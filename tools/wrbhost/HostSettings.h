// The host's settings: the command line's where it has them, else those of the server's INI files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CommandHost.h"

namespace wrb {

inline constexpr unsigned kMostWorkers = 254;
inline constexpr unsigned kMostConnections = 254;  // pipe instances; one more means unlimited
inline constexpr unsigned kMostQueued = 100'000;
inline constexpr unsigned kMostMemoryMiB = 1024;

// What the command line says.
struct HostOptions {
    std::optional<unsigned> workers;
    std::optional<unsigned> connections;
    std::optional<unsigned> queue;
    std::optional<unsigned> memoryMiB;
    std::vector<std::string> allowed;  // SIDs and names
};

// Numbers out of range are brought into it. Returns an empty text, or what is wrong, for people.
std::string ReadHostSettings(const HostOptions& options, CommandHostOptions& settings);

// Whether the server INI has the key without which agents with addresses get no web-threat settings.
bool HasProtectionKey();

}  // namespace wrb
