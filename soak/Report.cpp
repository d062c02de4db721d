#include "Report.h"

#include <algorithm>
#include <cstdio>

#include "Console.h"

namespace wrb::soak {
namespace {

constexpr std::size_t kMostFaults = 20;
constexpr uint32_t kSpareHandles = 8;  // one or two threads of the system itself

template <typename... Arguments>
void Line(const char* format, Arguments... arguments) {
    char line[200];
    std::snprintf(line, sizeof line, format, arguments...);
    PrintOut(line);
}

unsigned long long Number(uint64_t number) {
    return number;
}

uint64_t Of(const KindTally& kind, Verdict verdict) {
    return kind.verdicts[static_cast<std::size_t>(verdict)];
}

double Milliseconds(uint64_t microseconds) {
    return static_cast<double>(microseconds) / 1'000;
}

// Returns how many answers were wrong.
uint64_t PrintTally(const Tally& tally, const Result& result) {
    uint64_t commands = 0;
    uint64_t wrong = 0;
    PrintOut("kind                           right    empty  nobody there    wrong    p50 ms    p99 ms    max ms\n");
    for (std::size_t i = 0; i < tally.size(); ++i) {
        const KindTally& kind = tally[i];
        const Latencies& times = kind.latencies;
        commands += times.Count();
        wrong += Of(kind, Verdict::Wrong);
        Line("%-26s %9llu %8llu %13llu %8llu %9.1f %9.1f %9.1f\n", Kinds()[i].name, Number(Of(kind, Verdict::Right)),
             Number(Of(kind, Verdict::Empty)), Number(Of(kind, Verdict::NotDelivered)),
             Number(Of(kind, Verdict::Wrong)), Milliseconds(times.Percentile(0.5)),
             Milliseconds(times.Percentile(0.99)), Milliseconds(times.Slowest()));
    }
    Line("%llu commands from %u threads in %.0f seconds, %.0f a second; seed %u\n\n", Number(commands), result.threads,
         result.seconds, static_cast<double>(commands) / result.seconds, result.seed);
    return wrong;
}

void PrintChaos(const Result& result) {
    for (const auto& [name, times, whyNot] : result.chaos) {
        if (whyNot != nullptr) {
            Line("%-28s %s\n", name, whyNot);
        } else {
            Line("%-28s %u\n", name, times);
        }
    }
    PrintOut("\n");
}

void PrintLedger(const LedgerResult& ledger, uint64_t filesLeft) {
    Line("firewall records   %llu in %llu uploads: %llu log-pool rows, %llu events\n", Number(ledger.records),
         Number(ledger.uploads), Number(ledger.rows), Number(ledger.events));
    Line("restore results    %llu: %llu rows\n", Number(ledger.restores), Number(ledger.restoreRows));
    Line("spyware material   %llu: %llu events\n", Number(ledger.spyware), Number(ledger.spywareEvents));
    Line("disturbed          %llu rows and events: %llu stored, %llu counted as lost\n", Number(ledger.unsure),
         Number(ledger.unsureFound), Number(ledger.counted));
    Line("  killed programs  had at most %llu under way and %llu in memory; left %llu files\n\n",
         Number(ledger.interrupted), Number(ledger.inMemory), Number(filesLeft));
}

// Returns whether all stayed below their ceilings.
bool PrintWatch(const Watch& watch) {
    const Latencies& echoes = watch.Echoes();
    Line("echo     %llu, p50 %.1f ms, p99 %.1f ms, slowest %.1f ms (allowed: 2000 ms)\n", Number(echoes.Count()),
         Milliseconds(echoes.Percentile(0.5)), Milliseconds(echoes.Percentile(0.99)), Milliseconds(echoes.Slowest()));
    bool good = echoes.Count() != 0;
    for (const Peak& peak : watch.Peaks()) {
        const bool below = peak.looks != 0 && peak.bytes <= peak.ceiling;
        Line("%-8s at most %llu KiB of private memory (allowed: %llu), %u handles%s\n", peak.program,
             Number(peak.bytes / 1024), Number(peak.ceiling / 1024), peak.handles, below ? "" : ": TOO MUCH");
        good = good && below;
    }
    return good;
}

bool PrintFlatness(const Flatness& flat) {
    const bool good = flat.late.handles <= flat.early.handles + kSpareHandles &&
                      flat.late.committedBytes <= flat.early.committedBytes + flat.allowance;
    Line("%-8s handles %u -> %u, private memory %llu -> %llu KiB (allowed: %u, %llu KiB more)%s\n", flat.program,
         flat.early.handles, flat.late.handles, Number(flat.early.committedBytes / 1024),
         Number(flat.late.committedBytes / 1024), kSpareHandles, Number(flat.allowance / 1024),
         good ? "" : ": NOT FLAT");
    return good;
}

// The counts of those that were stopped; a killed program leaves none.
void PrintServices(const Operator& services) {
    const Service& host = services.Host();
    const Service& backEnd = services.BackEnd();
    Line("wrbhost  stopped %u times, killed %u times; refused %llu, threw %llu, dropped %llu, turned away %llu\n",
         host.Stops(), host.Kills(), Number(host.Total("refused ")), Number(host.Total("threw ")),
         Number(host.Total("dropped ")), Number(host.Total("turned away ")));
    Line("wrbback  stopped %u times, killed %u times; refused %llu requests, lost %llu rows\n", backEnd.Stops(),
         backEnd.Kills(), Number(backEnd.Total(" refused, ")), Number(backEnd.Total(" lost; log")));
}

bool PrintFaults(const std::vector<std::string>& faults) {
    for (std::size_t i = 0; i < std::min(faults.size(), kMostFaults); ++i) {
        PrintOut("FAULT: " + faults[i] + "\n");
    }
    return faults.empty();
}

}  // namespace

bool PrintReport(Field& field, const Tally& tally, const Operator& services, const Watch& watch, const Result& result) {
    bool good = PrintTally(tally, result) == 0;
    PrintChaos(result);
    PrintLedger(result.ledger, result.filesLeft);
    good = PrintWatch(watch) && good;
    for (const Flatness& flat : result.flatness) {
        good = PrintFlatness(flat) && good;
    }
    PrintServices(services);
    for (const auto& faults : {field.WrongNotes(), result.ledger.faults, result.faults}) {
        good = PrintFaults(faults) && good;
    }
    PrintOut(good ? "soak: passed\n" : "soak: FAILED\n");
    return good;
}

}  // namespace wrb::soak
