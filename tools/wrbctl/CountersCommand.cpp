#include <windows.h>

#include <optional>
#include <string>

#include "Commands.h"
#include "Console.h"
#include "CounterLook.h"
#include "ExitCode.h"
#include "SystemText.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

int ReportAttach(CounterAttach result, uint32_t error) {
    PrintErr("wrbctl: " + WideToUtf8(CounterAttachText(result)) +
             (error != 0 ? ": " + SystemText(error) : std::string()) + "\n");
    return result == CounterAttach::Missing ? kExitServiceNotRunning : kExitFailed;
}

std::string InFormat(CounterFormat format, const CounterLook& look, const CounterLook* earlier) {
    switch (format) {
        case CounterFormat::Json:
            return CounterJson(look, earlier);
        case CounterFormat::Prometheus:
            return CounterMetrics(look);
        case CounterFormat::Table:
            break;
    }
    return WrapText(CounterTable(look, earlier), TerminalColumns());
}

}  // namespace

int RunCounters(const CountersOptions& options) {
    CounterReader reader;
    uint32_t error = 0;
    if (const CounterAttach result = reader.Attach(error); result != CounterAttach::Attached) {
        return ReportAttach(result, error);
    }
    std::optional<CounterLook> earlier;
    for (unsigned times = 1;; ++times) {
        CounterLook look = LookAtCounters(reader, options.all);
        PrintOut(InFormat(options.format, look, earlier ? &*earlier : nullptr));
        if (options.interval <= 0 || times == options.times) {
            return kExitOk;
        }
        earlier = std::move(look);
        Sleep(static_cast<DWORD>(options.interval * 1000));
    }
}

}  // namespace wrb
