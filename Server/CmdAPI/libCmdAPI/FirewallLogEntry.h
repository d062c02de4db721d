// One record of an agent's firewall log on its way to the two services that take it.
#pragma once

#include <cstdint>

namespace wrb {

// The texts are zero-terminated and belong to the caller; a null one counts as empty. Numbers are the agent's own codes
// and are passed through.
struct FirewallLogEntry {
    const wchar_t* uid;
    const wchar_t* date;        // YYYYMMDD, the server's local time
    const wchar_t* time;        // HHMMSS
    const wchar_t* localHost;   // IPv4 or IPv6 address
    const wchar_t* remoteHost;  // the same
    uint16_t protocol;
    uint16_t type;
    uint16_t subType;
    uint16_t port;
    uint16_t direction;
    const wchar_t* processPath;  // empty where it is not to be shown
    const wchar_t* processInfo;
    uint16_t logType;  // 0
};

}  // namespace wrb
