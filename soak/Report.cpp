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

uint64_t Of(const Tally& tally, std::size_t kind, Verdict verdict) {
    return tally[kind][static_cast<std::size_t>(verdict)];
}

// Returns how many answers were wrong.
uint64_t PrintTally(const Tally& tally, const Result& result) {
    uint64_t commands = 0;
    uint64_t wrong = 0;
    PrintOut("kind                           right    empty  nobody there    wrong\n");
    for (std::size_t kind = 0; kind < tally.size(); ++kind) {
        for (const auto& count : tally[kind]) {
            commands += count;
        }
        wrong += Of(tally, kind, Verdict::Wrong);
        Line("%-26s %9llu %8llu %13llu %8llu\n", Kinds()[kind].name, Number(Of(tally, kind, Verdict::Right)),
             Number(Of(tally, kind, Verdict::Empty)), Number(Of(tally, kind, Verdict::NotDelivered)),
             Number(Of(tally, kind, Verdict::Wrong)));
    }
    Line("%llu commands from %u threads in %.0f seconds, %.0f a second\n\n", Number(commands), result.threads,
         result.seconds, static_cast<double>(commands) / result.seconds);
    return wrong;
}

void PrintLedger(const LedgerResult& ledger) {
    Line("firewall records   %llu in %llu uploads: %llu log-pool rows, %llu events\n", Number(ledger.records),
         Number(ledger.uploads), Number(ledger.rows), Number(ledger.events));
    Line("  cut by a stop    %llu in %llu uploads: %llu log-pool rows\n", Number(ledger.cutRecords),
         Number(ledger.cutUploads), Number(ledger.cutRows));
    Line("restore results    %llu: %llu rows\n", Number(ledger.restores), Number(ledger.restoreRows));
    Line("spyware material   %llu to %llu: %llu events\n\n", Number(ledger.spywareEvents),
         Number(ledger.spywareEvents + ledger.unsureSpyware), Number(ledger.spywareRows));
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

}  // namespace

bool PrintReport(Field& field, const Tally& tally, const Result& result) {
    const uint64_t wrong = PrintTally(tally, result);
    PrintLedger(result.ledger);
    bool good = wrong == 0;
    for (const Flatness& flat : result.flatness) {
        good = PrintFlatness(flat) && good;
    }
    Line("stops in between: wrbback %u, wrbhost %u\n", field.backEnd.Stops() - 1, field.host.Stops() - 1);
    const std::vector<std::string> notes = field.WrongNotes();
    for (const auto* faults : {&notes, &result.ledger.faults, &result.faults}) {
        good = good && faults->empty();
        for (std::size_t i = 0; i < std::min(faults->size(), kMostFaults); ++i) {
            PrintOut("FAULT: " + faults->at(i) + "\n");
        }
    }
    PrintOut(good ? "soak: passed\n" : "soak: FAILED\n");
    return good;
}

}  // namespace wrb::soak
