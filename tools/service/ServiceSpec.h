// The two Windows services of the project: what the service manager and the event log know of them.
#pragma once

#include <cstdint>
#include <span>

namespace wrb {

struct ServiceSpec {
    const char* program;  // prefix of its texts
    const wchar_t* name;  // for the service manager
    const wchar_t* displayName;
    const wchar_t* description;
    const wchar_t* dependsOn;                 // name of a service, or null
    const wchar_t* eventSource;               // see EventLog.h
    uint32_t stopSeconds;                     // how long a stop takes at most
    std::span<const wchar_t* const> folders;  // of the home folder; the service writes there
};

extern const ServiceSpec kHostService;
extern const ServiceSpec kBackEndService;

// Why a service does not serve: the service-specific exit code. The numbers are fixed; docs/operating.md lists them.
enum class StartFault : uint32_t {
    None = 0,
    Settings = 1,
    AlreadyRunning = 2,
    PipeTaken = 3,
    Store = 4,
    Library = 5,
    LogFolder = 6,
    System = 7,
};

const char* StartFaultText(StartFault fault);

}  // namespace wrb
