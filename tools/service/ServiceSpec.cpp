#include "ServiceSpec.h"

#include <iterator>

#include "EventLog.h"

namespace wrb {
namespace {

constexpr const wchar_t* kHostFolders[] = {L"Log", L"Log\\Dumps", L"Temp", L"Upload"};
constexpr const wchar_t* kBackEndFolders[] = {L"Data", L"Log", L"Log\\Dumps", L"Temp"};

constexpr const char* kFaults[] = {
    "none",
    "a setting or option is wrong",
    "the program runs already",
    "another program serves its pipe",
    "the store cannot be opened",
    "the command library cannot be loaded",
    "the log folder cannot be written",
    "the system refused something",
};

}  // namespace

const ServiceSpec kHostService = {
    .program = "wrbhost",
    .name = L"WarrenbyHost",
    .displayName = L"Warrenby Command Host",
    .description = L"Answers the commands of agents. Without it agents get no settings and cannot upload their logs.",
    .dependsOn = L"WarrenbyBackEnd",
    .eventSource = kHandlerSource,
    .stopSeconds = 60,
    .folders = kHostFolders,
};

const ServiceSpec kBackEndService = {
    .program = "wrbback",
    .name = L"WarrenbyBackEnd",
    .displayName = L"Warrenby Back End",
    .description = L"Keeps the agents' settings and logs for the command host, and writes its debug log.",
    .dependsOn = nullptr,
    .eventSource = kBackEndSource,
    .stopSeconds = 120,
    .folders = kBackEndFolders,
};

const char* StartFaultText(StartFault fault) {
    const auto number = static_cast<std::size_t>(fault);
    return number < std::size(kFaults) ? kFaults[number] : "unknown";
}

}  // namespace wrb
