#include <windows.h>

#include <cstdio>
#include <string>

#include "Commands.h"
#include "Console.h"
#include "CounterCatalog.h"
#include "CounterSection.h"
#include "ExitCode.h"
#include "JsonOutput.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

std::string TextLine(const char* format, const char* name, const HandlerCounterSlot& slot) {
    char line[160];
    const int length = std::snprintf(line, sizeof line, format, name, slot.calls, slot.failures, slot.average,
                                     slot.maximum, static_cast<unsigned long long>(slot.total));
    return std::string(line, static_cast<std::size_t>(length));
}

std::string TextTable(const CounterReader& reader, bool all) {
    std::string text = "command                                    calls    failed   avg ms   max ms     total ms\n";
    for (const CountedRow& counted : CountedRows()) {
        const HandlerCounterSlot slot = reader.Slot(counted.slot);
        if (all || slot.calls != 0) {
            text += TextLine("%-38s %9u %9u %8u %8u %12llu\n", counted.name.c_str(), slot);
        }
    }
    const Undelivered lost = reader.Undelivered();
    return text + "calls in progress: " + std::to_string(reader.CallsInProgress()) +
           "\nnot handed over: " + std::to_string(lost.rows) + " log rows, " + std::to_string(lost.events) +
           " events\n";
}

Json::Value JsonTable(const CounterReader& reader, bool all) {
    Json::Value result;
    result["callsInProgress"] = reader.CallsInProgress();
    const Undelivered lost = reader.Undelivered();
    result["undeliveredRows"] = lost.rows;
    result["undeliveredEvents"] = lost.events;
    Json::Value& commands = result["commands"] = Json::Value(Json::arrayValue);
    for (const CountedRow& counted : CountedRows()) {
        const HandlerCounterSlot slot = reader.Slot(counted.slot);
        if (all || slot.calls != 0) {
            Json::Value row;
            row["name"] = counted.name;
            row["calls"] = slot.calls;
            row["failures"] = slot.failures;
            row["averageMs"] = slot.average;
            row["maximumMs"] = slot.maximum;
            row["totalMs"] = static_cast<Json::UInt64>(slot.total);
            commands.append(row);
        }
    }
    return result;
}

int ReportAttach(CounterAttach result, uint32_t error) {
    PrintErr("wrbctl: " + WideToUtf8(CounterAttachText(result)) +
             (error != 0 ? ": " + SystemText(error) : std::string()) + "\n");
    return result == CounterAttach::Missing ? kExitServiceNotRunning : kExitFailed;
}

}  // namespace

int RunCounters(const CountersOptions& options) {
    CounterReader reader;
    uint32_t error = 0;
    if (const CounterAttach result = reader.Attach(error); result != CounterAttach::Attached) {
        return ReportAttach(result, error);
    }
    for (unsigned look = 1;; ++look) {
        if (options.json) {
            PrintJson(JsonTable(reader, options.all));
        } else {
            PrintOut(TextTable(reader, options.all));
        }
        if (options.interval <= 0 || look == options.times) {
            return kExitOk;
        }
        Sleep(static_cast<DWORD>(options.interval * 1000));
    }
}

}  // namespace wrb
