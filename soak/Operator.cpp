#include "Operator.h"

#include <stdexcept>

#include "Text.h"

namespace wrb::soak {
namespace {

std::vector<std::wstring> HostArguments(const Operator::Files& files) {
    return files.clockLibrary.empty() ? std::vector<std::wstring>{}
                                      : std::vector<std::wstring>{L"--dll", files.clockLibrary};
}

}  // namespace

Operator::Operator(const Files& files, Presence& presence, Ledger& ledger)
    : m_presence(presence),
      m_ledger(ledger),
      m_host(L"wrbhost.exe", HostArguments(files), {L"--stop", L"--timeout", L"120"}, "wrbhost: serving"),
      m_backEnd(L"wrbback.exe",
                {L"serve", L"--db", files.database, L"--log-folder", files.logFolder, L"--log-level", L"W",
                 L"--max-rows", L"0"},
                {L"stop", L"--timeout", L"120"}, "wrbback: ready") {
    m_presence.store.IsBack();
}

void Operator::StartBackEnd() {
    m_backEnd.Start();
    m_presence.backEnd.IsBack();
}

void Operator::StopBackEnd() {
    m_ledger.Begin(Cut::Stop, m_presence.backEnd);
    m_backEnd.Stop();
}

void Operator::KillBackEnd() {
    m_ledger.Begin(Cut::BackEndKilled, m_presence.backEnd);
    m_backEnd.Kill();
}

// The counters start with the host. This program holds them, so they can be read after the host has ended.
void Operator::StartHost() {
    m_host.Start();
    m_counters = std::make_unique<CounterReader>();
    uint32_t error = 0;
    if (const CounterAttach attached = m_counters->Attach(error); attached != CounterAttach::Attached) {
        throw std::runtime_error("the counters: " + WideToUtf8(CounterAttachText(attached)));
    }
    m_presence.host.IsBack();
    m_presence.hostRuns.IsBack();
}

void Operator::StopHost() {
    m_presence.hostRuns.Leaves();
    m_presence.host.Leaves();
    m_host.Stop();
    ReadCounters();
}

void Operator::KillHost() {
    m_presence.hostRuns.Leaves();
    m_ledger.Begin(Cut::HostKilled, m_presence.host);
    m_host.Kill();
    ReadCounters();
}

void Operator::ReadCounters() {
    for (uint32_t row = 0; row < kRows; ++row) {
        m_calls[row] += m_counters->Slot(row).calls;
    }
    const Undelivered lost = m_counters->Undelivered();
    m_undelivered += uint64_t{lost.rows} + lost.events;
    m_counters.reset();
}

}  // namespace wrb::soak
