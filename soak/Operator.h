// Whoever starts, stops and ends the services, and keeps the books meanwhile: presence, ledger, counters.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "CommandTable.h"
#include "CounterSection.h"
#include "Ledger.h"
#include "Presence.h"
#include "Services.h"

namespace wrb::soak {

// One thread, but for what services and ledger allow.
class Operator {
  public:
    struct Files {
        std::wstring database;
        std::wstring logFolder;
        std::wstring clockLibrary;  // the command library that the host loads; empty: its own
    };

    Operator(const Files& files, Presence& presence, Ledger& ledger);

    // Throw std::runtime_error.
    void StartBackEnd();
    void StopBackEnd();
    void KillBackEnd();
    void StartHost();
    void StopHost();
    void KillHost();

    Service& Host() { return m_host; }
    Service& BackEnd() { return m_backEnd; }
    const Service& Host() const { return m_host; }
    const Service& BackEnd() const { return m_backEnd; }

    // While the host runs. Calls that a killed host had in progress do not count.
    int32_t CallsInProgress() const { return m_counters->CallsInProgress(); }

    // The calls that were counted of each command of the table, over all starts of the host.
    uint32_t Calls(uint32_t row) const { return m_calls[row]; }

    // Rows and events that the library could not hand over, and those that back ends accepted and could not store. To
    // be called when both programs are stopped.
    uint64_t CountedAsLost() const { return m_undelivered + m_backEnd.Total(" lost; log"); }

  private:
    static constexpr std::size_t kRows = static_cast<std::size_t>(CommandSlot::kCount);

    void ReadCounters();

    Presence& m_presence;
    Ledger& m_ledger;
    Service m_host;
    Service m_backEnd;
    std::unique_ptr<CounterReader> m_counters;
    std::array<uint32_t, kRows> m_calls{};
    uint64_t m_undelivered = 0;
};

}  // namespace wrb::soak
